# The target `reference` makes a web site of the public headers, reference/index.html of the build folder. It is not
# part of the default build, and without Doxygen it does not exist.

find_package(Doxygen 1.9.4 QUIET)

if(TARGET Doxygen::doxygen)
  configure_file(cmake/Doxyfile.in Doxyfile @ONLY)
  add_custom_target(
    reference
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${PROJECT_BINARY_DIR}/reference
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/reference
    COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "Writing the reference of the public headers"
    VERBATIM)
endif()
