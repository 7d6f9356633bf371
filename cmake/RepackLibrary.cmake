# Run by cpack when the packages are made. It gives the library's scripts that call ldconfig, which the
# distribution wants left to the trigger that the package has as well.
foreach(package ${CPACK_PACKAGE_FILES})
  if(NOT package MATCHES "/libmp4judge[0-9]+_[^/]*\\.deb$")
    continue()
  endif()
  set(work ${CPACK_TEMPORARY_DIRECTORY}/repacked)
  file(REMOVE_RECURSE ${work})
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${work} COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${work}/DEBIAN/postinst ${work}/DEBIAN/postrm)
  execute_process(COMMAND dpkg-deb --root-owner-group --build ${work} ${package}
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
