# What `cpack` makes: one Debian package for each install component. They install to CMAKE_INSTALL_PREFIX, where the
# programs look for the PROJ directory; configure with -DCMAKE_INSTALL_PREFIX=/usr for packages of a distribution.

set(
  COORDTRANS_PACKAGE_MAINTAINER "CoordinateTransformation developers <developers@coordinatetransformation.invalid>"
  CACHE STRING "Maintainer that the packages name")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME coordinatetransformation)
set(CPACK_PACKAGE_VENDOR CoordinateTransformation)
set(CPACK_PACKAGE_CONTACT "${COORDTRANS_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL runtime development documentation)
if(COORDTRANS_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# What another component provides is named exactly, by version; the rest dpkg-shlibdeps finds out.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libcoordinatetransformation${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The library and a PROJ directory for it.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libcoordinatetransformation-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, CMake package and pkg-config file.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libboost-dev (>= ${coordtrans_oldest_boost})")
if(NOT BUILD_SHARED_LIBS)
  string(
    APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    ", libboost-filesystem-dev (>= ${coordtrans_oldest_boost}), libproj-dev (>= ${coordtrans_oldest_proj})")
endif()

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME coordinatetransformation-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Command-line programs, with their manual pages.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME coordinatetransformation-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_COMPONENT_DOCUMENTATION_DESCRIPTION "The guides, the README and the terms of use of the data.")

# Debian looks for the terms of a package under the name of the package.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} component_name)
  install(
    FILES ${CMAKE_CURRENT_LIST_DIR}/debian-copyright
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${component_name}_PACKAGE_NAME}
    RENAME copyright
    COMPONENT ${component}
    EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
