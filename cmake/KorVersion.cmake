# Version resources of the shipped files. The numbers come from project(... VERSION) alone; the names below
# are the product's.
set(KOR_COMPANY_NAME "Corvex")
set(KOR_PRODUCT_NAME "Stormex HSM Client")
set(KOR_DESCRIPTION_korcompat "MFC subset and formatting engine")
set(KOR_DESCRIPTION_korbase "Base library: errors, log, registry, paths, threads")
set(KOR_DESCRIPTION_korutil "Utility library: accounts, file and progress events")
set(KOR_DESCRIPTION_korarchiver "Archiver library: query data, history, management classes, listings")
set(KOR_DESCRIPTION_korguibase "Graphical base library")
set(KOR_DESCRIPTION_korlang_en "English language module")
set(KOR_DESCRIPTION_korlang_de "German language module")
set(KOR_DESCRIPTION_korfiles "File list and history search tool")

# kor_version_resource(TARGET): links a VERSIONINFO resource into a DLL or program of the windows build
# and records its file name for the test that reads the resources back.
function(kor_version_resource target)
  if(NOT KOR_TARGET STREQUAL "windows")
    return()
  endif()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(file_type VFT_APP)
  else()
    set(file_type VFT_DLL)
  endif()
  set(description "${KOR_DESCRIPTION_${target}}")
  if(description STREQUAL "")
    set(description "${target}")
  endif()
  set(tweak 0)
  if(NOT PROJECT_VERSION_TWEAK STREQUAL "")
    set(tweak ${PROJECT_VERSION_TWEAK})
  endif()
  set(numbers "${PROJECT_VERSION_MAJOR},${PROJECT_VERSION_MINOR},${PROJECT_VERSION_PATCH},${tweak}")
  set(text "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}.${PROJECT_VERSION_PATCH}.${tweak}")
  set(rc ${CMAKE_BINARY_DIR}/version/${target}_version.rc)
  file(GENERATE OUTPUT ${rc} CONTENT "#include <winver.h>

VS_VERSION_INFO VERSIONINFO
FILEVERSION ${numbers}
PRODUCTVERSION ${numbers}
FILEFLAGSMASK VS_FFI_FILEFLAGSMASK
FILEFLAGS $<IF:$<CONFIG:Debug>,VS_FF_DEBUG,0>
FILEOS VOS_NT_WINDOWS32
FILETYPE ${file_type}
FILESUBTYPE VFT2_UNKNOWN
BEGIN
  BLOCK \"StringFileInfo\"
  BEGIN
    BLOCK \"040904B0\"
    BEGIN
      VALUE \"CompanyName\", \"${KOR_COMPANY_NAME}\"
      VALUE \"FileDescription\", \"${description}\"
      VALUE \"FileVersion\", \"${text}\"
      VALUE \"InternalName\", \"${target}\"
      VALUE \"OriginalFilename\", \"$<TARGET_FILE_NAME:${target}>\"
      VALUE \"ProductName\", \"${KOR_PRODUCT_NAME}\"
      VALUE \"ProductVersion\", \"${text}\"
    END
  END
  BLOCK \"VarFileInfo\"
  BEGIN
    VALUE \"Translation\", 0x0409, 1200
  END
END
")
  target_sources(${target} PRIVATE ${rc})
  set_property(GLOBAL APPEND PROPERTY KOR_VERSIONED_FILES "$<TARGET_FILE_NAME:${target}>")
endfunction()

# kor_version_programs(DIR): a version resource on every program defined in DIR and below.
function(kor_version_programs dir)
  get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target ${targets})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      kor_version_resource(${target})
    endif()
  endforeach()
  get_property(subdirs DIRECTORY ${dir} PROPERTY SUBDIRECTORIES)
  foreach(subdir ${subdirs})
    kor_version_programs(${subdir})
  endforeach()
endfunction()
