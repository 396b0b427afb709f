# Runs PROGRAM with ARGUMENT and requires that it succeeds and prints what the file EXPECTED holds, to the letter.

cmake_minimum_required(VERSION 3.22)

file(READ ${EXPECTED} expected)
execute_process(COMMAND ${PROGRAM} ${ARGUMENT} OUTPUT_VARIABLE printed RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${result} after printing\n${printed}")
endif()
if(NOT "${printed}" STREQUAL "${expected}")
  message(FATAL_ERROR "${PROGRAM} printed\n${printed}\ninstead of\n${expected}")
endif()
