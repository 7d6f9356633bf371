# .deb files, split as the distribution splits them, from the build of the preset "package":
#
#   cmake --preset package && cmake --build --preset package && cpack --preset package
#
# The packages are libmp4judge1, libmp4judge-dev, mp4judge and python3-mp4judge.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR mp4judge)
set(CPACK_PACKAGE_CONTACT "mp4judge maintainers <maintainers@mp4judge.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development tool python)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(soversion ${PROJECT_VERSION_MAJOR})
set(debian_version "${PROJECT_VERSION}-1")

# mp4judge_deb(COMPONENT PACKAGE SECTION SUMMARY TEXT)
macro(mp4judge_deb component package section summary text)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${text}")
  # What the distribution asks of every package: whose it is, and what changed.
  set(about ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright DESTINATION ${about}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_BINARY_DIR}/changelog.Debian.gz DESTINATION ${about}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
  # These packages are not for the distribution's own archive, where there would be a bug to close.
  set(override ${PROJECT_BINARY_DIR}/overrides/${package})
  file(WRITE ${override} "# Not for the distribution's archive, so there is no bug to close.\n"
    "${package}: initial-upload-closes-no-bugs *\n")
  install(FILES ${override} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endmacro()

# Packed without a date, so that the same sources give the same bytes.
find_program(MP4JUDGE_GZIP gzip)
execute_process(COMMAND ${MP4JUDGE_GZIP} -9nc ${PROJECT_SOURCE_DIR}/cmake/debian/changelog
  OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.Debian.gz COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS cmake/debian/changelog)

set(what "Says whether an MP4, MOV, M4A, 3GP, CMAF or HEIF file is protected,\nby which scheme, and where in the file that is said. It decrypts nothing.\n\n")
mp4judge_deb(library libmp4judge${soversion} libs
  "judges whether MP4 files are protected - shared library" "${what}This is the shared library.")
mp4judge_deb(development libmp4judge-dev libdevel
  "judges whether MP4 files are protected - development files"
  "${what}These are the headers, the CMake package and the pkg-config file.")
mp4judge_deb(tool mp4judge utils
  "judges whether MP4 files are protected - command" "${what}This is the command.")
mp4judge_deb(python python3-mp4judge python
  "judges whether MP4 files are protected - Python module" "${what}This is the module for Python 3.")

# What other packages need of the library, and that the loader has to learn of it.
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs
  "libmp4judge ${soversion} libmp4judge${soversion} (>= ${PROJECT_VERSION})\n")
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "libmp4judge${soversion} (>= ${PROJECT_VERSION})")
# pkg-config asks for zlib, which the library needs, whether or not it is linked.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "libmp4judge${soversion} (= ${debian_version}), zlib1g-dev")
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "python3 (>= 3.9), libmp4judge${soversion} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "mp4judge")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS
  "python3-numpy, python3-pandas, python3-distributed, python3-fsspec")
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
# Byte code is made when the package comes, and goes with it.
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/python/postinst
  ${PROJECT_SOURCE_DIR}/cmake/debian/python/prerm)

# The module, as the distribution's Python finds it.
install(DIRECTORY bindings/python/mp4judge DESTINATION lib/python3/dist-packages
  COMPONENT python EXCLUDE_FROM_ALL
  FILES_MATCHING PATTERN "*.py" PATTERN "py.typed" PATTERN __pycache__ EXCLUDE)

set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/CompressManuals.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/RepackLibrary.cmake)
include(CPack)
