# The parser of command lines, headers only, as the target CLI11::CLI11.
#
# A cross build takes the building machine's: its folder alone, for beside it are that machine's other headers.

if(NOT CMAKE_CROSSCOMPILING)
  find_package(CLI11 ${CLI11_FIND_VERSION} CONFIG QUIET)
  set(CLI11_INCLUDE_DIR "${CLI11_DIR}")
else()
  find_path(CLI11_HOST_INCLUDE_DIR NAMES CLI/CLI.hpp PATHS /usr/include /usr/local/include
    NO_CMAKE_FIND_ROOT_PATH)
  if(CLI11_HOST_INCLUDE_DIR)
    set(CLI11_INCLUDE_DIR "${CMAKE_BINARY_DIR}/host-include")
    file(MAKE_DIRECTORY "${CLI11_INCLUDE_DIR}")
    file(CREATE_LINK "${CLI11_HOST_INCLUDE_DIR}/CLI" "${CLI11_INCLUDE_DIR}/CLI" SYMBOLIC COPY_ON_ERROR)
  endif()
  mark_as_advanced(CLI11_HOST_INCLUDE_DIR)
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(CLI11 REQUIRED_VARS CLI11_INCLUDE_DIR)

if(CLI11_FOUND AND NOT TARGET CLI11::CLI11)
  add_library(CLI11::CLI11 INTERFACE IMPORTED)
  set_target_properties(CLI11::CLI11 PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${CLI11_INCLUDE_DIR}")
endif()
