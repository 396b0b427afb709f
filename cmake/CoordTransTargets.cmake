# The functions by which the folders name their sources and tests.

include(CheckCXXCompilerFlag)
include(CheckIPOSupported)

# Warnings are errors, for the targets of this project only: an imported target is neither exported nor seen by a project
# that embeds this one.
add_library(coordtrans_developer INTERFACE IMPORTED)
if(COORDTRANS_DEVELOPER)
  if(MSVC)
    target_compile_options(coordtrans_developer INTERFACE /W4 /WX)
  else()
    target_compile_options(coordtrans_developer INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
  endif()
endif()

# The path of a point runs through five sources; inlining across them spares a third of what the library adds to
# PROJ. A static library stays as it is, for users with other compilers.
check_ipo_supported(RESULT coordtrans_ipo_supported OUTPUT ignored LANGUAGES CXX)
if(COORDTRANS_INTERPROCEDURAL AND coordtrans_ipo_supported AND BUILD_SHARED_LIBS)
  set(coordtrans_optimises_across_sources ON)
  # Objects that can be linked either way: optimising the library again for each of forty programs takes minutes.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND (COORDTRANS_BUILD_TESTS OR COORDTRANS_BUILD_FUZZERS))
    set(coordtrans_objects_link_either_way ON)
  endif()
endif()
function(coordtrans_optimise_across_sources target)
  if(coordtrans_optimises_across_sources)
    set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ON
                                               INTERPROCEDURAL_OPTIMIZATION_RELWITHDEBINFO ON)
  endif()
endfunction()

# coordtrans_link_objects(TARGET): for what links the library's objects beside the library itself.
function(coordtrans_link_objects target)
  if(coordtrans_objects_link_either_way)
    target_link_options(${target} PRIVATE -fno-lto)
  else()
    coordtrans_optimise_across_sources(${target})
  endif()
endfunction()

# Hidden visibility does not reach what the headers of the standard library and of Boost instantiate; only the linker
# can keep that inside. Linkers that know no version scripts, on systems other than ELF, export what the sources say.
include(CheckLinkerFlag)
set(coordtrans_exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
check_linker_flag(CXX "LINKER:--version-script,${coordtrans_exports}" COORDTRANS_LINKER_LIMITS_EXPORTS)
# Some linkers refuse a script that names what an optimiser has removed.
check_linker_flag(CXX "LINKER:--undefined-version" COORDTRANS_LINKER_MINDS_MISSING_EXPORTS)
function(coordtrans_limit_exports target)
  get_target_property(type ${target} TYPE)
  if(COORDTRANS_LINKER_LIMITS_EXPORTS AND type STREQUAL "SHARED_LIBRARY")
    target_link_options(
      ${target} PRIVATE "LINKER:--version-script,${coordtrans_exports}"
      $<$<BOOL:${COORDTRANS_LINKER_MINDS_MISSING_EXPORTS}>:LINKER:--undefined-version>)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${coordtrans_exports})
  endif()
endfunction()

function(coordtrans_configure_objects)
  coordtrans_optimise_across_sources(coordtrans_objects)
  if(coordtrans_objects_link_either_way)
    target_compile_options(coordtrans_objects PRIVATE $<$<CONFIG:Release,RelWithDebInfo>:-ffat-lto-objects>)
  endif()
  set_target_properties(
    coordtrans_objects
    PROPERTIES POSITION_INDEPENDENT_CODE ON
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               CXX_EXTENSIONS OFF)
  target_compile_features(coordtrans_objects PUBLIC cxx_std_17)
  target_include_directories(
    coordtrans_objects
    PUBLIC ${PROJECT_SOURCE_DIR}/include
    PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_definitions(
    coordtrans_objects
    PUBLIC $<$<NOT:$<BOOL:${BUILD_SHARED_LIBS}>>:COORDTRANS_STATIC>
    PRIVATE COORDTRANS_BUILDING $<$<BOOL:${COORDTRANS_RELEASE_URN_ORIGINAL}>:COORDTRANS_RELEASE_URN_ORIGINAL>)
  # Calls inside the library need not go through the symbol table that a host could interpose.
  check_cxx_compiler_flag(-fno-semantic-interposition COORDTRANS_HAS_NO_SEMANTIC_INTERPOSITION)
  if(COORDTRANS_HAS_NO_SEMANTIC_INTERPOSITION)
    target_compile_options(coordtrans_objects PRIVATE -fno-semantic-interposition)
  endif()
  target_compile_options(coordtrans_objects PRIVATE $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
  coordtrans_harden(coordtrans_objects)
  target_link_libraries(
    coordtrans_objects
    PUBLIC Boost::headers
    PRIVATE coordtrans_developer PROJ::proj Boost::filesystem Threads::Threads)
endfunction()

# Adds sources of the current folder to the library.
function(coordtrans_sources)
  target_sources(coordtrans_objects PRIVATE ${ARGN})
endfunction()

# What the objects read of the host's catalogue.
function(coordtrans_use_host_catalogue)
  if(NOT COORDTRANS_MESSAGE_CATALOGUE_HEADER OR NOT COORDTRANS_MESSAGE_CATALOGUE_TARGET)
    message(FATAL_ERROR "a host's catalogue needs COORDTRANS_MESSAGE_CATALOGUE_HEADER and _TARGET")
  endif()
  if(COORDTRANS_BUILD_TESTS)
    message(FATAL_ERROR "the tests need the builtin message catalogue")
  endif()
  target_compile_definitions(
    coordtrans_objects PRIVATE COORDTRANS_MESSAGE_CATALOGUE_HEADER="${COORDTRANS_MESSAGE_CATALOGUE_HEADER}")
  target_link_libraries(coordtrans_objects PRIVATE ${COORDTRANS_MESSAGE_CATALOGUE_TARGET})
endfunction()

# An installed library does not name the host's catalogue: a shared one has it among its needs, a program on a static one
# links it. So the library is linked with the file; a target would have to be installed with it.
function(coordtrans_link_host_catalogue)
  set(catalogue ${COORDTRANS_MESSAGE_CATALOGUE_TARGET})
  if(TARGET ${catalogue})
    add_dependencies(CoordinateTransformation ${catalogue})
    set(catalogue $<TARGET_LINKER_FILE:${catalogue}>)
  endif()
  target_link_libraries(CoordinateTransformation PRIVATE $<BUILD_INTERFACE:${catalogue}>)
endfunction()

function(coordtrans_add_library)
  add_library(CoordinateTransformation $<TARGET_OBJECTS:coordtrans_objects>)
  add_library(CoordinateTransformation::CoordinateTransformation ALIAS CoordinateTransformation)
  set_target_properties(CoordinateTransformation PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION
                                                                                       ${PROJECT_VERSION_MAJOR})
  coordtrans_optimise_across_sources(CoordinateTransformation)
  coordtrans_limit_exports(CoordinateTransformation)
  coordtrans_harden(CoordinateTransformation)
  target_compile_features(CoordinateTransformation PUBLIC cxx_std_17)
  target_include_directories(
    CoordinateTransformation PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_definitions(CoordinateTransformation
                             PUBLIC $<$<NOT:$<BOOL:${BUILD_SHARED_LIBS}>>:COORDTRANS_STATIC>)
  target_link_libraries(
    CoordinateTransformation
    PUBLIC Boost::headers
    PRIVATE PROJ::proj Boost::filesystem Threads::Threads)
  if(COORDTRANS_MESSAGE_CATALOGUE STREQUAL "host")
    coordtrans_link_host_catalogue()
  endif()
endfunction()

# What every test reads is compiled once: it takes half the time of compiling a test. REUSE_FROM wants the same flags.
function(coordtrans_configure_test_source target)
  find_package(GTest REQUIRED)
  target_link_libraries(${target} PRIVATE coordtrans_developer GTest::gmock)
  target_compile_options(${target} PRIVATE $<$<NOT:$<BOOL:${MSVC}>>:-O0>)
  # UndefinedBehaviorSanitizer is for the library; in the sources of tests it takes a third of the time of compiling.
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=[a-z,]*undefined")
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
  target_compile_features(${target} PRIVATE cxx_std_17)
endfunction()

function(coordtrans_precompile_test_headers)
  file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/test_headers.cpp CONTENT "")
  add_library(coordtrans_test_headers OBJECT ${PROJECT_BINARY_DIR}/test_headers.cpp)
  coordtrans_configure_test_source(coordtrans_test_headers)
  target_precompile_headers(coordtrans_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
endfunction()

# coordtrans_add_test_program(NAME [INTERNAL|STATIC] SOURCES... [LEAKS FILE] [NOT_UNDER SANITIZER...]): one GoogleTest
# program, each of its tests a ctest test in a process of its own; with COORDTRANS_TESTS_BY_PROGRAM the program is one
# ctest test, which spares the sanitizers thousands of starts. INTERNAL programs reach internal headers; STATIC programs
# link the objects as a static library; the others use the built library. A test runs once: optimising it takes far
# longer than it saves.
#
# LEAKS names LeakSanitizer's file of suppressions, in place of tests/support/leaks.supp.
#
# NOT_UNDER names the sanitizers (address, thread) in whose builds the program is built and not run.
function(coordtrans_add_test_program name)
  if(NOT COORDTRANS_BUILD_TESTS)
    return()
  endif()
  cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL;STATIC" "LEAKS" "NOT_UNDER")
  foreach(source IN LISTS arg_UNPARSED_ARGUMENTS)
    file(REAL_PATH ${source} path BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    set_property(GLOBAL APPEND PROPERTY COORDTRANS_TEST_SOURCES ${path})
  endforeach()
  if(NOT TARGET coordtrans_test_headers)
    coordtrans_precompile_test_headers()
  endif()
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  coordtrans_configure_test_source(${name})
  target_precompile_headers(${name} REUSE_FROM coordtrans_test_headers)
  target_link_libraries(${name} PRIVATE GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE COORDTRANS_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  # For tests/support.
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  if(arg_INTERNAL)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/include)
    target_link_libraries(${name} PRIVATE $<TARGET_OBJECTS:coordtrans_objects> Boost::headers Boost::filesystem
                                          PROJ::proj Threads::Threads)
    coordtrans_link_objects(${name})
    target_compile_definitions(
      ${name} PRIVATE COORDTRANS_BUILDING $<$<NOT:$<BOOL:${BUILD_SHARED_LIBS}>>:COORDTRANS_STATIC>
                      $<$<BOOL:${COORDTRANS_RELEASE_URN_ORIGINAL}>:COORDTRANS_RELEASE_URN_ORIGINAL>)
  elseif(arg_STATIC)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/include)
    target_compile_definitions(${name} PRIVATE $<$<NOT:$<BOOL:${BUILD_SHARED_LIBS}>>:COORDTRANS_STATIC>)
    coordtrans_link_objects(${name})
    target_link_libraries(${name} PRIVATE coordtrans_static)
  else()
    target_link_libraries(${name} PRIVATE CoordinateTransformation)
  endif()
  set(leaks ${PROJECT_SOURCE_DIR}/tests/support/leaks.supp)
  if(arg_LEAKS)
    file(REAL_PATH ${arg_LEAKS} leaks BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
  endif()
  set(environment "LSAN_OPTIONS=suppressions=${leaks}:print_suppressions=0")
  foreach(sanitizer IN LISTS arg_NOT_UNDER)
    if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=${sanitizer}")
      return()
    endif()
  endforeach()
  if(COORDTRANS_TESTS_BY_PROGRAM)
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 ENVIRONMENT "${environment}")
  else()
    include(GoogleTest)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120 ENVIRONMENT "${environment}")
  endif()
endfunction()

# No test can be silently off: a *_test.cpp that no program names stops the configuration.
function(coordtrans_require_registered_tests)
  get_property(registered GLOBAL PROPERTY COORDTRANS_TEST_SOURCES)
  foreach(
    folder
    platform
    errors
    text
    names
    crs
    proj
    creation
    config
    tools
    examples
    benchmarks
    fuzz
    tests)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*_test.cpp)
    foreach(path IN LISTS found)
      if(NOT path IN_LIST registered)
        message(FATAL_ERROR "${path} is not registered with coordtrans_add_test_program")
      endif()
    endforeach()
  endforeach()
endfunction()
