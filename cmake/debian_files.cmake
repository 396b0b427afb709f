# `cpack` runs this on the files of all packages before it makes the packages: Debian compresses manual pages and
# changelogs, and its programs find libraries without a path of their own.

file(GLOB manual_pages ${CPACK_TEMPORARY_DIRECTORY}/*${CPACK_PACKAGING_INSTALL_PREFIX}/share/man/man*/*.[1-9])
file(GLOB changelogs ${CPACK_TEMPORARY_DIRECTORY}/*${CPACK_PACKAGING_INSTALL_PREFIX}/share/doc/*/changelog*)
foreach(file IN LISTS manual_pages changelogs)
  execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

# The loader searches the system's folders anyway.
if(CPACK_PACKAGING_INSTALL_PREFIX STREQUAL /usr)
  file(GLOB programs ${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/*)
  foreach(program IN LISTS programs)
    file(RPATH_REMOVE FILE ${program})
  endforeach()
endif()
