include(GNUInstallDirs)
include(${CMAKE_CURRENT_LIST_DIR}/KorVersion.cmake)

# kor_library(NAME EXPORT_DEFINE sources...): a shared library with its export macro defined while it builds,
# installed into the korguibase package as korguibase::NAME.
function(kor_library name define)
  add_library(${name} SHARED ${ARGN})
  add_library(korguibase::${name} ALIAS ${name})
  target_compile_definitions(${name} PRIVATE ${define})
  # Inside the tree every header is reachable; an installed consumer sees only the public ones.
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                            $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  if(KOR_TARGET STREQUAL "windows")
    set_target_properties(${name} PROPERTIES PREFIX "")
  else()
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                                             INSTALL_RPATH "$ORIGIN")
  endif()
  kor_version_resource(${name})
  install(TARGETS ${name} EXPORT korguibaseTargets
          RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endfunction()
