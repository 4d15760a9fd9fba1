# Runs PROGRAM's history search with its standard output going where writing fails, and checks the exit
# code and standard error. CASE is one of:
#   full    standard output is /dev/full: code 5 and "korfiles: cannot write to standard output: No space
#           left on device";
#   closed  standard output is a pipe into `head -c 1`, which ends after the first byte: code 6 and nothing
#           on standard error. The store (STORE, written here) makes an output far larger than a pipe
#           holds, so the program is still writing when head ends.
if(CASE STREQUAL "full")
  execute_process(COMMAND ${PROGRAM} search RESULT_VARIABLE code ERROR_VARIABLE errors
                  OUTPUT_FILE /dev/full INPUT_FILE /dev/null)
  set(expected_code 5)
  set(expected_errors "korfiles: cannot write to standard output: No space left on device\n")
elseif(CASE STREQUAL "closed")
  set(lines "")
  foreach(i RANGE 1 4000)
    string(APPEND lines "\\\\FILESRV01\\Projects\\closed-pipe\\a-long-directory-name\\file-${i}.txt\t=\t1\t"
                        "2024-03-07 14:05:09\t10\tS\t-\t1:${i}\n")
  endforeach()
  file(WRITE ${STORE} "${lines}")
  execute_process(COMMAND ${PROGRAM} search --store=${STORE} COMMAND head -c 1
                  RESULTS_VARIABLE codes ERROR_VARIABLE errors OUTPUT_VARIABLE ignored INPUT_FILE /dev/null)
  file(REMOVE ${STORE})
  list(GET codes 0 code)
  set(expected_code 6)
  set(expected_errors "")
else()
  message(FATAL_ERROR "CASE must be full or closed, not '${CASE}'")
endif()
if(NOT code STREQUAL expected_code)
  message(FATAL_ERROR "exit code ${code}, expected ${expected_code}; standard error:\n${errors}")
endif()
if(NOT errors STREQUAL expected_errors)
  message(FATAL_ERROR "standard error:\n${errors}--- expected\n${expected_errors}")
endif()
