# Runs PROGRAM with ARGUMENT: it must succeed, write the content of the file OUTPUT and nothing to standard error.
execute_process(
  COMMAND ${PROGRAM} ${ARGUMENT}
  RESULT_VARIABLE result
  OUTPUT_VARIABLE written
  ERROR_VARIABLE complaint)
file(READ ${OUTPUT} expected)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "ended with ${result}\n${complaint}")
endif()
if(NOT complaint STREQUAL "")
  message(FATAL_ERROR "wrote to standard error:\n${complaint}")
endif()
if(NOT written STREQUAL expected)
  message(FATAL_ERROR "wrote\n${written}\nwhere the page says\n${expected}")
endif()
