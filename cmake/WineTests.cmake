# Every windows test runs under Wine through CMake's cross-compiling emulator, in a Wine prefix inside the
# build tree served by one persistent wineserver for the whole run.
set(KOR_WINEPREFIX ${CMAKE_BINARY_DIR}/wineprefix)
configure_file(${CMAKE_CURRENT_LIST_DIR}/wine-run.sh.in ${CMAKE_BINARY_DIR}/wine-run.sh
               FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
                                WORLD_EXECUTE @ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_BINARY_DIR}/wine-run.sh)

# The mingw runtime DLLs beside the executables, so that one C++ runtime serves every module.
foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll} OUTPUT_VARIABLE dll_path
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT EXISTS "${dll_path}")
    file(GLOB dll_path /usr/x86_64-w64-mingw32/lib/${dll} /usr/lib/gcc/x86_64-w64-mingw32/*-posix/${dll})
    list(GET dll_path 0 dll_path)
  endif()
  file(COPY ${dll_path} DESTINATION ${CMAKE_BINARY_DIR}/bin)
endforeach()

# kor_wine_fixture_tests(): the two tests that boot the prefix before the first windows test and stop
# the server after the last one. kor_wine_fixtures(TEST...) makes tests depend on them.
function(kor_wine_fixture_tests)
  add_test(NAME wine_boot COMMAND ${CMAKE_BINARY_DIR}/wine-run.sh --boot)
  set_tests_properties(wine_boot PROPERTIES FIXTURES_SETUP wine TIMEOUT 120)
  add_test(NAME wine_shutdown COMMAND ${CMAKE_BINARY_DIR}/wine-run.sh --shutdown)
  set_tests_properties(wine_shutdown PROPERTIES FIXTURES_CLEANUP wine TIMEOUT 60)
endfunction()

function(kor_wine_fixtures)
  set_tests_properties(${ARGN} PROPERTIES FIXTURES_REQUIRED wine)
endfunction()
