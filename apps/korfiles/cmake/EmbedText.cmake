# Writes the bytes of INPUT as a C++ header OUTPUT that defines NAME (the bytes and a terminating zero) and
# NAME_SIZE, so that the program carries the file in itself and needs nothing beside it. The bytes are
# written as numbers: the text holds tabs, backslashes and UTF-8 that a string literal would have to escape.
#   cmake -DINPUT=history.txt -DOUTPUT=SampleHistoryText.h -DNAME=SAMPLE_HISTORY -P EmbedText.cmake
foreach(var INPUT OUTPUT NAME)
  if(NOT ${var})
    message(FATAL_ERROR "EmbedText.cmake needs -D${var}=...")
  endif()
endforeach()
file(READ "${INPUT}" hex HEX)
string(LENGTH "${hex}" digits)
math(EXPR size "${digits} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
# Sixteen bytes a line (CMake's expressions have no repetition count).
string(REPEAT "0x[0-9a-f][0-9a-f]," 16 line)
string(REGEX REPLACE "(${line})" "\\1\n    " bytes "${bytes}")
get_filename_component(source "${INPUT}" NAME)
file(WRITE "${OUTPUT}.tmp"
     "// Made by EmbedText.cmake from ${source}; edit that file, not this one.\n"
     "#pragma once\n\n"
     "#include <cstddef>\n\n"
     "static const unsigned char ${NAME}[] = {\n    ${bytes}0x00};\n"
     "static const std::size_t ${NAME}_SIZE = ${size};\n")
# Only a changed text touches the header, so that an unchanged sample rebuilds nothing.
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.tmp")
