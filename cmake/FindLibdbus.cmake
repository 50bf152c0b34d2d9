# The bus library below Qt's, as the target Libdbus::Libdbus. Needs no pkg-config, so that a cross build finds it in its
# own root.
find_library(LIBDBUS_LIBRARY dbus-1)
find_path(LIBDBUS_INCLUDE_DIR dbus/dbus.h PATH_SUFFIXES dbus-1.0)
# What depends on the processor stands beside the library.
cmake_path(GET LIBDBUS_LIBRARY PARENT_PATH libdbus_directory)
find_path(LIBDBUS_PROCESSOR_INCLUDE_DIR dbus/dbus-arch-deps.h HINTS ${libdbus_directory}/dbus-1.0/include)
mark_as_advanced(LIBDBUS_LIBRARY LIBDBUS_INCLUDE_DIR LIBDBUS_PROCESSOR_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Libdbus
  REQUIRED_VARS LIBDBUS_LIBRARY LIBDBUS_INCLUDE_DIR LIBDBUS_PROCESSOR_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "install the headers of libdbus, on Debian the package libdbus-1-dev")
if(Libdbus_FOUND AND NOT TARGET Libdbus::Libdbus)
  add_library(Libdbus::Libdbus UNKNOWN IMPORTED)
  set_target_properties(Libdbus::Libdbus PROPERTIES
    IMPORTED_LOCATION ${LIBDBUS_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES "${LIBDBUS_INCLUDE_DIR};${LIBDBUS_PROCESSOR_INCLUDE_DIR}")
endif()
