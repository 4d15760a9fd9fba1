# kor_library(NAME EXPORT_DEFINE sources...): a shared library with its export macro defined while it builds.
function(kor_library name define)
  add_library(${name} SHARED ${ARGN})
  target_compile_definitions(${name} PRIVATE ${define})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  if(KOR_TARGET STREQUAL "windows")
    set_target_properties(${name} PROPERTIES PREFIX "")
  endif()
endfunction()
