# cpack's own ZIP keeps the times of last access and change, owners and the folder's order: it would be another file each
# time. Packs the same files again in the order of their names, without these.
if(NOT CPACK_GENERATOR STREQUAL "ZIP")
  return()
endif()

find_program(zip zip REQUIRED)
get_filename_component(parent "${CPACK_TEMPORARY_DIRECTORY}" DIRECTORY)
get_filename_component(name "${CPACK_TEMPORARY_DIRECTORY}" NAME)
file(GLOB_RECURSE files LIST_DIRECTORIES ON RELATIVE "${parent}" "${CPACK_TEMPORARY_DIRECTORY}/*")
list(APPEND files "${name}")
list(SORT files)
list(JOIN files "\n" list)
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  file(REMOVE "${package}")
  file(WRITE "${package}.files" "${list}\n")
  execute_process(COMMAND "${zip}" --quiet -9 -X -@ "${package}"
    INPUT_FILE "${package}.files" WORKING_DIRECTORY "${parent}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
