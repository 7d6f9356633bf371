# Headers, both libraries and a package that find_package(mp4judge) finds.
include(CMakePackageConfigHelpers)
foreach(floor io codecs platform boxes/base boxes/tables boxes/description boxes/userdata boxes/track
    boxes/movie boxes/fragments demux)
  file(GLOB headers CONFIGURE_DEPENDS ${floor}/*.h)
  install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mp4judge/${floor})
endforeach()
install(FILES include/mp4judge/mp4judge.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mp4judge)
install(TARGETS mp4judge_library EXPORT mp4judge)
install(EXPORT mp4judge NAMESPACE mp4judge:: FILE mp4judge-targets.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/mp4judge)
configure_package_config_file(cmake/mp4judge-config.cmake.in mp4judge-config.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/mp4judge)
write_basic_package_version_file(mp4judge-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/mp4judge-config.cmake
  ${PROJECT_BINARY_DIR}/mp4judge-config-version.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/mp4judge)
