# The serial-port library as the target serial::serial.
#
# Two layouts are known: an upstream install (serial/serial.h, libserial) and the distribution's package
# (serial.h, libcxx-serial). The latter includes serial/v8stdint.h, which it does not ship; cmake/compat
# holds that header and a forwarding serial/serial.h, so that the sources name one header everywhere.

find_path(serial_UPSTREAM_INCLUDE_DIR NAMES serial/serial.h)
find_library(serial_UPSTREAM_LIBRARY NAMES serial)
find_path(serial_PACKAGE_INCLUDE_DIR NAMES serial.h)
find_library(serial_PACKAGE_LIBRARY NAMES cxx-serial)

if(serial_UPSTREAM_INCLUDE_DIR AND serial_UPSTREAM_LIBRARY)
  set(serial_INCLUDE_DIRS "${serial_UPSTREAM_INCLUDE_DIR}")
  set(serial_LIBRARY "${serial_UPSTREAM_LIBRARY}")
elseif(serial_PACKAGE_INCLUDE_DIR AND serial_PACKAGE_LIBRARY)
  set(serial_INCLUDE_DIRS "${CMAKE_CURRENT_LIST_DIR}/compat" "${serial_PACKAGE_INCLUDE_DIR}")
  set(serial_LIBRARY "${serial_PACKAGE_LIBRARY}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(serial REQUIRED_VARS serial_LIBRARY serial_INCLUDE_DIRS)

if(serial_FOUND AND NOT TARGET serial::headers)
  # The headers alone: what the recording stand-in of the library implements.
  add_library(serial::headers INTERFACE IMPORTED)
  set_target_properties(serial::headers PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${serial_INCLUDE_DIRS}"
    INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${serial_INCLUDE_DIRS}")
endif()

if(serial_FOUND AND NOT TARGET serial::serial)
  add_library(serial::serial UNKNOWN IMPORTED)
  set_target_properties(serial::serial PROPERTIES IMPORTED_LOCATION "${serial_LIBRARY}")
  target_link_libraries(serial::serial INTERFACE serial::headers)
  if(WIN32)
    target_link_libraries(serial::serial INTERFACE setupapi)
  endif()
endif()

mark_as_advanced(serial_UPSTREAM_INCLUDE_DIR serial_UPSTREAM_LIBRARY
                 serial_PACKAGE_INCLUDE_DIR serial_PACKAGE_LIBRARY)
