# What `cmake --install` puts in place: library, headers, CMake package and pkg-config file.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/CoordinateTransformation)

install(
  TARGETS CoordinateTransformation
  EXPORT CoordinateTransformationTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(NOT COORDTRANS_GENERATE_PROJ_DIRECTORY)
  install(DIRECTORY data/proj DESTINATION ${CMAKE_INSTALL_DATADIR}/CoordinateTransformation)
endif()
install(
  EXPORT CoordinateTransformationTargets
  NAMESPACE CoordinateTransformation::
  DESTINATION ${package_dir})

configure_package_config_file(cmake/CoordinateTransformationConfig.cmake.in CoordinateTransformationConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(CoordinateTransformationConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/CoordinateTransformationConfig.cmake
              ${PROJECT_BINARY_DIR}/CoordinateTransformationConfigVersion.cmake DESTINATION ${package_dir})

# A static library brings its dependencies along; the shared one hides them.
if(BUILD_SHARED_LIBS)
  set(pc_cflags "")
  set(pc_public_requires "")
  set(pc_public_libs "")
else()
  set(pc_cflags "-DCOORDTRANS_STATIC")
  set(pc_public_requires "proj")
  set(pc_public_libs "-lboost_filesystem -lboost_system -pthread -lstdc++")
endif()
configure_file(cmake/CoordinateTransformation.pc.in CoordinateTransformation.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/CoordinateTransformation.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
