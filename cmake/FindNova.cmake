# Finds libnova (Debian ships no pkg-config file for it) and defines Nova::Nova.
find_path(NOVA_INCLUDE_DIR libnova/libnova.h)
find_library(NOVA_LIBRARY NAMES nova)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Nova REQUIRED_VARS NOVA_LIBRARY NOVA_INCLUDE_DIR)

if(Nova_FOUND AND NOT TARGET Nova::Nova)
  add_library(Nova::Nova UNKNOWN IMPORTED)
  set_target_properties(Nova::Nova PROPERTIES
    IMPORTED_LOCATION "${NOVA_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${NOVA_INCLUDE_DIR}")
endif()
mark_as_advanced(NOVA_INCLUDE_DIR NOVA_LIBRARY)
