# Plays PROGRAM's scenario SCENARIO, which must end with 1 and print what PATTERN matches.
execute_process(COMMAND ${PROGRAM} demo --script ${SCENARIO} --fast RESULT_VARIABLE result OUTPUT_VARIABLE output
                ERROR_VARIABLE output)
if(NOT result EQUAL 1)
  message(FATAL_ERROR "ended with ${result} and not with 1:\n${output}")
endif()
string(REPLACE ";" "," output "${output}")
if(NOT output MATCHES "${PATTERN}")
  message(FATAL_ERROR "nothing in the output matches ${PATTERN}:\n${output}")
endif()
