# `cpack` runs this on the finished packages. It has given a package with a library scripts that call ldconfig; Debian
# wants a trigger instead.

foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(contents ${package}.contents)
  execute_process(COMMAND dpkg-deb --raw-extract ${package} ${contents} COMMAND_ERROR_IS_FATAL ANY)
  if(EXISTS ${contents}/DEBIAN/shlibs)
    file(REMOVE ${contents}/DEBIAN/postinst ${contents}/DEBIAN/postrm)
    file(WRITE ${contents}/DEBIAN/triggers "activate-noawait ldconfig\n")
    execute_process(
      COMMAND dpkg-deb --root-owner-group --build ${contents} ${package}
      OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE ${contents})
endforeach()
