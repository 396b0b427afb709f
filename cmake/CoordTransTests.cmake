# coordtrans_add_test_program(
#   NAME [INTERNAL|STATIC] [WHOLE] SOURCES... [APART SOURCES...] [LEAKS FILE] [NOT_UNDER SANITIZER...])
#
# One GoogleTest program, each of its tests a ctest test in a process of its own; with COORDTRANS_TESTS_BY_PROGRAM the
# program is one ctest test, which spares thousands of starts. INTERNAL programs reach internal headers; STATIC programs
# link the objects as a static library; the others use the built library.
#
# WHOLE programs are always one ctest test: their tests share what takes long to make.
#
# APART names sources whose private names clash with those of others. They are compiled by themselves where the others
# are compiled together, which takes half the time.
#
# LEAKS names LeakSanitizer's file of suppressions, in place of tests/support/leaks.supp.
#
# NOT_UNDER names the sanitizers (address, thread) in whose builds the program is neither built nor run.

if(COORDTRANS_BUILD_TESTS)
  enable_testing()
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()

set(coordtrans_test_environment
  "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/leaks.supp:print_suppressions=0")

# A test runs once, so optimising it takes far longer than it saves. UndefinedBehaviorSanitizer and line numbers in the
# reports of sanitizers are for the library only: in the sources of tests each takes a third of the compilation time.
function(coordtrans_configure_test_source target)
  target_compile_features(${target} PRIVATE cxx_std_17)
  target_compile_options(${target} PRIVATE $<${coordtrans_is_gnu_like}:-O0>)
  if(COORDTRANS_SANITIZERS)
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined -g0)
  endif()
  target_link_libraries(${target} PRIVATE coordtrans_developer GTest::gmock)
endfunction()

# The headers of all tests are compiled once, which halves the time of compiling a test. REUSE_FROM needs the same
# flags.
function(coordtrans_precompile_test_headers target)
  if(NOT TARGET coordtrans_test_headers)
    file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/test_headers.cpp CONTENT "")
    add_library(coordtrans_test_headers OBJECT ${PROJECT_BINARY_DIR}/test_headers.cpp)
    coordtrans_configure_test_source(coordtrans_test_headers)
    target_precompile_headers(coordtrans_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
  endif()
  target_precompile_headers(${target} REUSE_FROM coordtrans_test_headers)
endfunction()

function(coordtrans_register_tests)
  foreach(source IN LISTS ARGN)
    file(REAL_PATH ${source} path BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    set_property(GLOBAL APPEND PROPERTY COORDTRANS_TEST_SOURCES ${path})
  endforeach()
endfunction()

function(coordtrans_add_test_program name)
  if(NOT COORDTRANS_BUILD_TESTS)
    return()
  endif()
  cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNAL;STATIC;WHOLE" "LEAKS" "APART;NOT_UNDER")
  set(sources ${arg_UNPARSED_ARGUMENTS} ${arg_APART})
  coordtrans_register_tests(${sources})
  set_source_files_properties(${arg_APART} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  add_executable(${name} ${sources})
  coordtrans_configure_test_source(${name})
  coordtrans_precompile_test_headers(${name})
  target_compile_definitions(${name} PRIVATE COORDTRANS_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  # For tests/support.
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE GTest::gtest_main)
  if(arg_INTERNAL)
    target_link_libraries(${name} PRIVATE coordtrans_objects coordtrans_classic coordtrans_text)
  elseif(arg_STATIC)
    target_link_libraries(${name} PRIVATE coordtrans_static)
  else()
    target_link_libraries(${name} PRIVATE CoordinateTransformation)
  endif()

  foreach(sanitizer IN LISTS arg_NOT_UNDER)
    if(sanitizer IN_LIST COORDTRANS_SANITIZERS)
      set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
      return()
    endif()
  endforeach()
  set(environment ${coordtrans_test_environment})
  if(arg_LEAKS)
    file(REAL_PATH ${arg_LEAKS} leaks BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    set(environment "LSAN_OPTIONS=suppressions=${leaks}:print_suppressions=0")
  endif()
  if(COORDTRANS_TESTS_BY_PROGRAM OR arg_WHOLE)
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 ENVIRONMENT "${environment}")
  else()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120 ENVIRONMENT "${environment}")
  endif()
endfunction()

# Every test runs: a *_test.cpp that no program names stops the configuration.
function(coordtrans_require_registered_tests)
  get_property(registered GLOBAL PROPERTY COORDTRANS_TEST_SOURCES)
  set(folders platform errors text names crs proj creation config examples benchmarks fuzz tests)
  if(COORDTRANS_BUILD_TOOLS)
    list(APPEND folders tools)
  endif()
  foreach(folder IN LISTS folders)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*_test.cpp)
    foreach(path IN LISTS found)
      if(NOT path IN_LIST registered)
        message(FATAL_ERROR "${path} is not registered with coordtrans_add_test_program")
      endif()
    endforeach()
  endforeach()
endfunction()
