# What `cmake --install` puts into a prefix for programs built outside this tree: the libraries (DLLs and
# import libraries on Windows), the language modules, the public headers and the CMake package
# korguibase (imported targets korguibase::korcompat, ::korbase, ::korutil, ::korarchiver, ::korguibase);
# on Linux also a pkg-config file.
include(CMakePackageConfigHelpers)

set(KOR_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/korguibase)

# Public headers: what a consumer includes. Report helpers, dialog-procedure plumbing, the shell item
# list and the test seams stay inside the tree.
set(internal_headers
    interfaces/korbase_testing.h
    guibase/foundation/UQReport.h
    guibase/toolkit/UQToolkitReport.h
    guibase/toolkit/UQDialogProcedure.h
    guibase/settings/ShellIdList.h)
# Without windows only the platform-free core is built; its dialog headers would not link.
if(NOT KOR_TARGET STREQUAL "windows")
  list(APPEND internal_headers
       guibase/settings/UQFileOpenDialog.h
       guibase/settings/UQGuiBrowseDialog.h
       guibase/wizard/UQGuiTimer.h
       guibase/wizard/UQProgressBarDialog.h
       guibase/wizard/UQProgressDialog.h
       guibase/wizard/UQWizard.h)
endif()
foreach(dir interfaces compat guibase)
  set(dir_excludes)
  foreach(header ${internal_headers})
    if(header MATCHES "^${dir}/(.*)$")
      list(APPEND dir_excludes REGEX "/${CMAKE_MATCH_1}$" EXCLUDE)
    endif()
  endforeach()
  if(NOT KOR_TARGET STREQUAL "windows" AND dir STREQUAL "guibase")
    list(APPEND dir_excludes REGEX "/guibase/(toolkit|panels)$" EXCLUDE)
  endif()
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${dir} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
          FILES_MATCHING PATTERN "*.h" ${dir_excludes})
endforeach()

if(KOR_TARGET STREQUAL "windows")
  # The language modules are looked for beside korbase.dll, and the libraries need the C++ runtime that
  # built them.
  install(TARGETS korlang_en korlang_de LIBRARY DESTINATION ${CMAKE_INSTALL_BINDIR} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  foreach(dll libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    install(FILES ${CMAKE_BINARY_DIR}/bin/${dll} DESTINATION ${CMAKE_INSTALL_BINDIR})
  endforeach()
endif()

install(EXPORT korguibaseTargets NAMESPACE korguibase:: DESTINATION ${KOR_PACKAGE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/package/korguibaseConfig.cmake.in
                              ${CMAKE_BINARY_DIR}/package/korguibaseConfig.cmake
                              INSTALL_DESTINATION ${KOR_PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/korguibaseConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/package/korguibaseConfig.cmake
              ${CMAKE_BINARY_DIR}/package/korguibaseConfigVersion.cmake
        DESTINATION ${KOR_PACKAGE_DIR})

if(NOT KOR_TARGET STREQUAL "windows")
  configure_file(${CMAKE_CURRENT_LIST_DIR}/package/korguibase.pc.in ${CMAKE_BINARY_DIR}/package/korguibase.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/package/korguibase.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
