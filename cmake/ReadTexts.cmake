# Reading of the one text source (resources/texts/english.txt): NUMBER<TAB>TEXT per line, '#' comments,
# C escapes such as \r\n kept. Shared by the generators of korbase's message catalogue and of the language
# module's string table, so both see the same entries and refuse the same mistakes.

# kor_read_texts(FILE NUMBERS_VAR TEXTS_VAR): the entries in file order. A semicolon in a text comes back
# as @SEMICOLON@ (it is CMake's list separator); the caller puts it back when it writes the text.
function(kor_read_texts file numbers_var texts_var)
  file(READ "${file}" content)
  string(REPLACE "\r" "" content "${content}")
  string(REPLACE ";" "@SEMICOLON@" content "${content}")
  string(REPLACE "\n" ";" lines "${content}")
  set(numbers "")
  set(texts "")
  foreach(line IN LISTS lines)
    if(line MATCHES "^[ \t]*#" OR line MATCHES "^[ \t]*$")
      continue()
    endif()
    if(NOT line MATCHES "^([0-9]+)\t(.*)$")
      message(FATAL_ERROR "${file}: malformed line: ${line}")
    endif()
    if(CMAKE_MATCH_1 IN_LIST numbers)
      message(FATAL_ERROR "${file}: number ${CMAKE_MATCH_1} appears twice")
    endif()
    list(APPEND numbers "${CMAKE_MATCH_1}")
    list(APPEND texts "${CMAKE_MATCH_2}")
  endforeach()
  set(${numbers_var} "${numbers}" PARENT_SCOPE)
  set(${texts_var} "${texts}" PARENT_SCOPE)
endfunction()
