# cmake -P: installs BUILD_DIR into PREFIX and uses the package from there the way another program does.
# Fails with a message naming what is wrong.
function(run_checked what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${what} failed (${result}):\n${out}\n${err}")
  endif()
  string(REPLACE "\r\n" "\n" out "${out}")
  set(run_output "${out}" PARENT_SCOPE)
endfunction()

function(expect_output what actual)
  file(READ ${EXPECTED} expected)
  if(NOT actual STREQUAL expected)
    message(FATAL_ERROR "${what} printed\n${actual}\ninstead of\n${expected}")
  endif()
endfunction()

file(REMOVE_RECURSE ${PREFIX} ${WORK})
run_checked("cmake --install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX})

# What a consumer needs is there; what is the library's own business is not.
set(present include/interfaces/korbase.h include/compat/afx.h include/guibase/search/UQSearchList.h
            lib/cmake/korguibase/korguibaseConfig.cmake lib/cmake/korguibase/korguibaseConfigVersion.cmake
            lib/cmake/korguibase/korguibaseTargets.cmake)
set(absent include/kor include/resources include/interfaces/korbase_testing.h
           include/guibase/foundation/UQReport.h include/guibase/toolkit/UQDialogProcedure.h)
if(KOR_TARGET STREQUAL "windows")
  list(APPEND present include/guibase/toolkit/UQMessageBox.h bin/korcompat.dll bin/korbase.dll bin/korutil.dll
       bin/korarchiver.dll bin/korguibase.dll bin/korlang_en.dll bin/korlang_de.dll bin/libstdc++-6.dll
       lib/libkorguibase.dll.a lib/libkorbase.dll.a)
else()
  list(APPEND present lib/libkorguibase.so lib/libkorbase.so lib/pkgconfig/korguibase.pc)
  list(APPEND absent include/guibase/toolkit include/guibase/wizard/UQWizard.h)
endif()
foreach(f ${present})
  if(NOT EXISTS ${PREFIX}/${f})
    message(FATAL_ERROR "the installed package lacks ${f}")
  endif()
endforeach()
foreach(f ${absent})
  if(EXISTS ${PREFIX}/${f})
    message(FATAL_ERROR "the installed package holds the internal ${f}")
  endif()
endforeach()

# Every public header compiles with nothing but the prefix on the include path.
file(GLOB_RECURSE headers RELATIVE ${PREFIX}/include ${PREFIX}/include/*.h)
list(SORT headers)
set(all "")
foreach(h ${headers})
  string(APPEND all "#include \"${h}\"\n")
endforeach()
file(WRITE ${WORK}/all_headers.cpp "${all}")
run_checked("compiling every installed header" ${CXX} -std=c++17 -fsyntax-only -Wall -Wextra -Werror
            -I${PREFIX}/include ${WORK}/all_headers.cpp)

set(configure ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${PREFIX}
              -DCMAKE_BUILD_TYPE=Debug)
if(TOOLCHAIN)
  list(APPEND configure -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
endif()
if(SANITIZE_FLAGS)
  # A program that loads sanitized libraries carries the sanitizer runtime itself.
  list(APPEND configure "-DCMAKE_CXX_FLAGS=${SANITIZE_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${SANITIZE_FLAGS}")
endif()
run_checked("configuring the consumer" ${configure})
run_checked("building the consumer" ${CMAKE_COMMAND} --build ${WORK}/build)

if(KOR_TARGET STREQUAL "windows")
  # The DLLs and the language module are found in the prefix's bin, as through PATH on Windows.
  string(REPLACE "/" "\\" bin "Z:${PREFIX}/bin")
  run_checked("running the consumer" ${CMAKE_COMMAND} -E env "WINEPATH=${bin}"
              ${EMULATOR} ${WORK}/build/consumer.exe --close-after 200)
  expect_output("the consumer" "${run_output}")
else()
  run_checked("running the consumer" ${WORK}/build/consumer)
  expect_output("the consumer" "${run_output}")

  # The same program with the flags pkg-config gives, without CMake.
  set(ENV{PKG_CONFIG_PATH} ${PREFIX}/lib/pkgconfig)
  run_checked("pkg-config" pkg-config --cflags --libs korguibase)
  separate_arguments(pc_flags UNIX_COMMAND "${run_output}")
  separate_arguments(san UNIX_COMMAND "${SANITIZE_FLAGS}")
  run_checked("building the consumer with pkg-config" ${CXX} -std=c++17 ${san} ${SOURCE}/consumer_native.cpp
              -o ${WORK}/consumer-pc ${pc_flags} -Wl,-rpath,${PREFIX}/lib)
  run_checked("running the consumer built with pkg-config" ${WORK}/consumer-pc)
  expect_output("the consumer built with pkg-config" "${run_output}")
endif()
