# What `cmake --install` puts in place, in five components:
#   runtime        the library
#   data           the PROJ directory
#   development    headers, link to the library or static library, CMake package, pkg-config file
#   tools          programs and their manual pages, named in tools/
#   documentation  the pages, in the same folders as here, so that their links hold

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/CoordinateTransformation)
set(proj_dir ${CMAKE_INSTALL_DATADIR}/CoordinateTransformation/proj)

install(
  TARGETS CoordinateTransformation
  EXPORT CoordinateTransformationTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
if(NOT COORDTRANS_GENERATE_PROJ_DIRECTORY)
  install(DIRECTORY data/proj DESTINATION ${CMAKE_INSTALL_DATADIR}/CoordinateTransformation COMPONENT data)
endif()

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(
  EXPORT CoordinateTransformationTargets
  NAMESPACE CoordinateTransformation::
  DESTINATION ${package_dir}
  COMPONENT development)
configure_package_config_file(
  cmake/CoordinateTransformationConfig.cmake.in CoordinateTransformationConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  PATH_VARS proj_dir)
write_basic_package_version_file(CoordinateTransformationConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES
    ${PROJECT_BINARY_DIR}/CoordinateTransformationConfig.cmake
    ${PROJECT_BINARY_DIR}/CoordinateTransformationConfigVersion.cmake
  DESTINATION ${package_dir}
  COMPONENT development)

# A program on a static library links its dependencies too. The shared library hides them, so PROJ's development files
# need not be installed. PROJ is named by its library instead of its pkg-config file: with `--static` that file would
# request the dependencies of a static PROJ, and PROJ is a shared library nearly everywhere.
if(BUILD_SHARED_LIBS)
  set(pc_cflags "")
  set(pc_private_libs "")
else()
  set(pc_cflags "-DCOORDTRANS_STATIC")
  set(pc_private_libs "-lproj -lboost_filesystem -pthread -lstdc++")
  if("c++" IN_LIST CMAKE_CXX_IMPLICIT_LINK_LIBRARIES)
    string(REPLACE -lstdc++ -lc++ pc_private_libs "${pc_private_libs}")
  endif()
endif()
# Relative to the file, so that an installation can be moved. An absolute directory stays absolute.
file(RELATIVE_PATH pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
cmake_path(APPEND pc_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pc_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
cmake_path(APPEND pc_projdir "\${prefix}" ${proj_dir})
configure_file(cmake/CoordinateTransformation.pc.in CoordinateTransformation.pc @ONLY)
install(
  FILES ${PROJECT_BINARY_DIR}/CoordinateTransformation.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation FILES_MATCHING PATTERN "*.md")
install(
  FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT documentation)
install(FILES data/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/data COMPONENT documentation)

# Only the project itself makes packages; a project that embeds the library makes its own.
if(PROJECT_IS_TOP_LEVEL)
  include(cmake/CoordTransPackages.cmake)
endif()
