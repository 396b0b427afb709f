# `cpack` makes one Debian package of each install component. Packages install to CMAKE_INSTALL_PREFIX, where the
# programs look for the PROJ directory; configure with -DCMAKE_INSTALL_PREFIX=/usr for packages of a distribution.

set(
  COORDTRANS_PACKAGE_MAINTAINER "CoordinateTransformation developers <developers@coordinatetransformation.invalid>"
  CACHE STRING "Maintainer that the packages name")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME coordinatetransformation)
set(CPACK_PACKAGE_VENDOR CoordinateTransformation)
set(CPACK_PACKAGE_CONTACT "${COORDTRANS_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "CRS names and coordinate transformation for web feature servers")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_files.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_triggers.cmake)

set(CPACK_COMPONENTS_ALL data development documentation)
# A static library is a part of the programs that link it.
set(library_at_run_time)
if(BUILD_SHARED_LIBS)
  set(library_at_run_time runtime)
  list(APPEND CPACK_COMPONENTS_ALL runtime)
endif()
if(COORDTRANS_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
# Lower than any revision of Debian's own packages.
set(CPACK_DEBIAN_PACKAGE_RELEASE 0upstream1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# A dependency between components names the exact version; dpkg-shlibdeps finds the others.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS ${library_at_run_time} data)
set(CPACK_COMPONENT_TOOLS_DEPENDS ${library_at_run_time} data)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# coordtrans_describe_package(COMPONENT PACKAGE SECTION TEXT...): each text is a line of the description.
macro(coordtrans_describe_package component package section)
  set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${component}_PACKAGE_SECTION ${section})
  list(JOIN package_subject "\n" CPACK_DEBIAN_${component}_DESCRIPTION)
  foreach(line . ${ARGN})
    string(APPEND CPACK_DEBIAN_${component}_DESCRIPTION "\n${line}")
  endforeach()
endmacro()

set(
  package_subject
  "CoordinateTransformation reads the CRS names of OGC web service requests,"
  "transforms coordinates between CRS through PROJ, and writes CRS names for"
  "responses.")
coordtrans_describe_package(
  RUNTIME libcoordinatetransformation${PROJECT_VERSION_MAJOR} libs "This package has the shared library.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS coordinatetransformation-data)
coordtrans_describe_package(
  DATA coordinatetransformation-data misc
  "This package has a PROJ directory for the library: definitions, axis orders"
  "and descriptions of CRS of the EPSG registry.")
set(CPACK_DEBIAN_DATA_PACKAGE_ARCHITECTURE all)
coordtrans_describe_package(
  DEVELOPMENT libcoordinatetransformation-dev libdevel
  "This package has the headers, the CMake package and the pkg-config file.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libboost-dev (>= ${coordtrans_oldest_boost})")
if(NOT BUILD_SHARED_LIBS)
  string(
    APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    ", libboost-filesystem-dev (>= ${coordtrans_oldest_boost}), libproj-dev (>= ${coordtrans_oldest_proj})")
endif()
coordtrans_describe_package(
  TOOLS coordinatetransformation-tools science
  "This package has crsctl, which resolves CRS names, transforms points and"
  "checks configurations, and crs-projdir, which makes a PROJ directory.")
coordtrans_describe_package(
  DOCUMENTATION coordinatetransformation-doc doc
  "This package has the guides, the README and the terms of use of the data.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

# The entry's date is that of the configuration, or SOURCE_DATE_EPOCH.
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian-changelog.in debian-changelog @ONLY)

# Debian expects the terms and changes of a package in a folder of the package's name.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} component_name)
  set(package_documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${component_name}_PACKAGE_NAME})
  set(options COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/debian-copyright DESTINATION ${package_documents} RENAME copyright ${options})
  install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${package_documents} RENAME changelog ${options})
  install(
    FILES ${PROJECT_BINARY_DIR}/debian-changelog
    DESTINATION ${package_documents}
    RENAME changelog.Debian
    ${options})
endforeach()

# The programs contain code of libraries whose terms must accompany it.
foreach(package libcli11-dev libeigen3-dev nlohmann-json3-dev)
  install(
    FILES /usr/share/doc/${package}/copyright
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_TOOLS_PACKAGE_NAME}
    RENAME copyright.${package}
    COMPONENT tools
    EXCLUDE_FROM_ALL
    OPTIONAL)
endforeach()

include(CPack)
