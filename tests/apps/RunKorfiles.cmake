# Runs PROGRAM (through EMULATOR when cross-built) with ARGS (blank-separated, none by default) and
# compares what it prints with EXPECTED; line ends are compared without their carriage returns, as Windows
# writes CRLF to a pipe.
separate_arguments(args UNIX_COMMAND "${ARGS}")
if(EMULATOR)
  set(command ${EMULATOR} ${PROGRAM} ${args})
else()
  set(command ${PROGRAM} ${args})
endif()
execute_process(COMMAND ${command} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE errors
                INPUT_FILE /dev/null)
file(READ ${EXPECTED} expected)
string(REPLACE "\r\n" "\n" output "${output}")
if(NOT code EQUAL 0)
  message(FATAL_ERROR "exit code ${code}, expected 0; standard error:\n${errors}")
endif()
if(NOT errors STREQUAL "")
  message(FATAL_ERROR "unexpected standard error:\n${errors}")
endif()
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "output differs.\n--- expected\n${expected}--- printed\n${output}")
endif()
