# What Windows reads in a program without starting it.

# camera_windows_resources(program "what it is"): version, icon and manifest of a Windows program; elsewhere
# nothing.
function(camera_windows_resources program description)
  if(NOT WIN32)
    return()
  endif()
  set(folder "${PROJECT_SOURCE_DIR}/packaging/windows")
  set(manifest "${folder}/program.manifest")
  set(icon_line "IDI_ICON1 ICON \"${folder}/shelf-camera-tool.ico\"")
  set(manifest_line "1 24 \"${manifest}\"")
  if(NOT EXISTS "${folder}/shelf-camera-tool.ico")
    set(icon_line "")
  endif()
  if(MSVC) # its linker has a manifest of its own and merges this one into it
    set(manifest_line "")
    target_sources(${program} PRIVATE "${manifest}")
  endif()
  string(REPLACE "." "," version_numbers "${PROJECT_VERSION},0")
  set(resources "${CMAKE_CURRENT_BINARY_DIR}/${program}.rc")
  configure_file("${folder}/program.rc.in" "${resources}" @ONLY)
  set_source_files_properties("${resources}" PROPERTIES OBJECT_DEPENDS "${manifest}")
  target_sources(${program} PRIVATE "${resources}")
endfunction()
