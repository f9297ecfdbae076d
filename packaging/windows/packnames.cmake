# Read by cpack for each generator.
if(CPACK_GENERATOR STREQUAL "NSIS")
  string(APPEND CPACK_PACKAGE_FILE_NAME "-setup")
endif()
