# Runs PROGRAM (through EMULATOR when cross-built) with ARGS (blank-separated, none by default) and
# compares what it prints with EXPECTED; line ends are compared without their carriage returns, as Windows
# writes CRLF to a pipe.
#
# REGISTRY (optional) is a registry of the run's own, passed as --registry=REGISTRY after ARGS and absent
# before and after the run: a database file, removed with its -wal, -shm and -journal files; or, when
# cross-built, a key under HKEY_CURRENT_USER of the emulator's registry, deleted with its reg command.
separate_arguments(args UNIX_COMMAND "${ARGS}")
if(REGISTRY)
  # Appended after the split, which would take the backslashes of a key for escapes.
  list(APPEND args "--registry=${REGISTRY}")
endif()
if(EMULATOR)
  set(command ${EMULATOR} ${PROGRAM} ${args})
else()
  set(command ${PROGRAM} ${args})
endif()

function(remove_registry)
  if(NOT REGISTRY)
    return()
  endif()
  if(EMULATOR)
    execute_process(COMMAND ${EMULATOR} reg delete "HKCU\\${REGISTRY}" /f RESULT_VARIABLE ignored
                    OUTPUT_QUIET ERROR_QUIET INPUT_FILE /dev/null)
  else()
    foreach(suffix "" -wal -shm -journal)
      file(REMOVE "${REGISTRY}${suffix}")
    endforeach()
  endif()
endfunction()

remove_registry()
execute_process(COMMAND ${command} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE errors
                INPUT_FILE /dev/null)
remove_registry()
file(READ ${EXPECTED} expected)
string(REPLACE "\r\n" "\n" output "${output}")
if(NOT code EQUAL 0)
  message(FATAL_ERROR "exit code ${code}, expected 0; standard error:\n${errors}")
endif()
# COUNT_LINE (optional): the closing count line that standard error holds alone, without its line end.
string(REPLACE "\r\n" "\n" errors "${errors}")
if(COUNT_LINE)
  set(expected_errors "${COUNT_LINE}\n")
else()
  set(expected_errors "")
endif()
if(NOT errors STREQUAL expected_errors)
  message(FATAL_ERROR "unexpected standard error:\n${errors}--- expected\n${expected_errors}")
endif()
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "output differs.\n--- expected\n${expected}--- printed\n${output}")
endif()
