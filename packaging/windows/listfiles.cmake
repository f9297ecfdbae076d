# Before cpack makes the installer: its commands for each file, by name and in order, so that the uninstaller takes away
# those and no others, and that the installer is the same file each time. NSIS.template.in includes both lists.
if(NOT CPACK_GENERATOR STREQUAL "NSIS")
  return()
endif()

set(root "${CPACK_TEMPORARY_DIRECTORY}")
set(install "")
set(uninstall "")
set(remove_folders "")

# list_folder(below): of the files of a folder of the package, and of its folders.
function(list_folder below)
  string(REPLACE "/" "\\" folder "$INSTDIR${below}")
  string(APPEND install "SetOutPath \"${folder}\"\n")
  file(GLOB entries RELATIVE "${root}${below}" "${root}${below}/*") # in order
  set(folders "")
  foreach(entry IN LISTS entries)
    if(IS_DIRECTORY "${root}${below}/${entry}")
      list(APPEND folders "${entry}")
    else()
      string(APPEND install "File \"${root}${below}/${entry}\"\n")
      string(APPEND uninstall "Delete \"${folder}\\${entry}\"\n")
    endif()
  endforeach()
  foreach(entry IN LISTS folders)
    list_folder("${below}/${entry}")
    string(APPEND remove_folders "RMDir \"${folder}\\${entry}\"\n")
  endforeach()
  set(install "${install}" PARENT_SCOPE)
  set(uninstall "${uninstall}" PARENT_SCOPE)
  set(remove_folders "${remove_folders}" PARENT_SCOPE)
endfunction()

list_folder("")
file(WRITE "${CPACK_TOPLEVEL_DIRECTORY}/install.nsh" "${install}")
file(WRITE "${CPACK_TOPLEVEL_DIRECTORY}/uninstall.nsh" "${uninstall}${remove_folders}")
