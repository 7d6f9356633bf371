# What `cmake --install` brings: everything here is built by building the tool, or the library
# alone. The components are library, development and tool.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/mp4judge)
get_target_property(form mp4judge_library TYPE)

install(DIRECTORY include/mp4judge ${PROJECT_BINARY_DIR}/include/mp4judge
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
# What is told as JSON, by their schemas.
install(FILES docs/report.schema.json docs/tree.schema.json docs/info.schema.json
  docs/layout.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/mp4judge COMPONENT development)
install(TARGETS mp4judge_library EXPORT mp4judge
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development)

# The C++ runtime, which a linker of C programs does not bring by itself.
set(runtime ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(FILTER runtime INCLUDE REGEX "^(std)?c\\+\\+$")

# find_package(mp4judge)
install(EXPORT mp4judge NAMESPACE mp4judge:: FILE mp4judge-targets.cmake
  DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/mp4judge-config.cmake.in mp4judge-config.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/mp4judge-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mp4judge-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/mp4judge-config-version.cmake
  DESTINATION ${package_dir} COMPONENT development)

# pkg-config. A shared library brings what it needs; of a static one the caller links that too,
# without having to say --static.
list(TRANSFORM runtime PREPEND "-l" OUTPUT_VARIABLE runtime_flags)
list(JOIN runtime_flags " " runtime_flags)
if(form STREQUAL "SHARED_LIBRARY")
  set(private .private)
  set(own_libs)
  set(private_libs ${runtime_flags})
else()
  set(private)
  set(own_libs " ${runtime_flags}")
  set(private_libs)
endif()
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
  OUTPUT_VARIABLE prefix_from_here)
foreach(kind INCLUDE LIB)
  set(pc_${kind} "\${prefix}")
  cmake_path(APPEND pc_${kind} ${CMAKE_INSTALL_${kind}DIR})
endforeach()
configure_file(cmake/mp4judge.pc.in mp4judge.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/mp4judge.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
