# Takes the C++ blocks out of a page: "```cpp" is a program, whose output is the "```text" block after it;
# "```cpp fragment" goes into a function with the names that fragment.cpp.in declares, and is compiled.

# Splits `text` at the first `separator`; without one `before` is all of it and `found` is false.
function(docs_split text separator before after found)
  string(FIND "${text}" "${separator}" at)
  if(at EQUAL -1)
    set(${before} "${text}" PARENT_SCOPE)
    set(${after} "" PARENT_SCOPE)
    set(${found} FALSE PARENT_SCOPE)
    return()
  endif()
  string(SUBSTRING "${text}" 0 ${at} head)
  string(LENGTH "${separator}" length)
  math(EXPR at "${at} + ${length}")
  string(SUBSTRING "${text}" ${at} -1 tail)
  set(${before} "${head}" PARENT_SCOPE)
  set(${after} "${tail}" PARENT_SCOPE)
  set(${found} TRUE PARENT_SCOPE)
endfunction()

function(docs_add_program name code output)
  file(CONFIGURE OUTPUT ${name}.cpp CONTENT "${code}" @ONLY)
  file(CONFIGURE OUTPUT ${name}.txt CONTENT "${output}" @ONLY)
  add_executable(${name} ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  target_link_libraries(${name} PRIVATE coordtrans_developer CoordinateTransformation Threads::Threads)
  add_test(
    NAME DocsProgramPrintsWhatItSays.${name}
    COMMAND
      ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${name}> -DARGUMENT=${PROJECT_SOURCE_DIR}/data/proj
      -DOUTPUT=${CMAKE_CURRENT_BINARY_DIR}/${name}.txt -P ${CMAKE_CURRENT_SOURCE_DIR}/compare.cmake)
  set_tests_properties(
    DocsProgramPrintsWhatItSays.${name}
    PROPERTIES
      TIMEOUT 120
      ENVIRONMENT "${coordtrans_test_environment}")
endfunction()

function(docs_add_fragment name code)
  set(fragment_name ${name})
  set(fragment_code "${code}")
  configure_file(fragment.cpp.in ${name}.cpp @ONLY)
  add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  target_link_libraries(${name} PRIVATE coordtrans_developer CoordinateTransformation)
endfunction()

# Adds what `page` holds to docs_cpp_blocks.
function(docs_check_cpp_blocks page)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/${page})
  file(READ ${PROJECT_SOURCE_DIR}/docs/${page} rest)
  string(MAKE_C_IDENTIFIER "docs_${page}" stem)
  string(REGEX REPLACE "_md$" "" stem ${stem})
  set(number 0)
  while(TRUE)
    docs_split("${rest}" "\n```cpp" ignored rest found)
    if(NOT found)
      break()
    endif()
    math(EXPR number "${number} + 1")
    docs_split("${rest}" "\n" info rest found)
    docs_split("${rest}" "\n```\n" code rest found)
    if(info STREQUAL " fragment")
      docs_add_fragment(${stem}_${number} "${code}")
      continue()
    endif()
    docs_split("${rest}" "\n```text\n" between after found)
    if(NOT found OR between MATCHES "```")
      message(FATAL_ERROR "docs/${page}: the C++ program number ${number} has no output")
    endif()
    docs_split("${after}" "\n```\n" output ignored found)
    docs_add_program(${stem}_${number} "${code}\n" "${output}\n")
  endwhile()
  math(EXPR sum "${docs_cpp_blocks} + ${number}")
  set(docs_cpp_blocks ${sum} PARENT_SCOPE)
endfunction()
