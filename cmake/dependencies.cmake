find_package(ZLIB REQUIRED)
find_package(Boost REQUIRED)
find_package(Threads REQUIRED)

# liblber has no CMake package.
find_path(LBER_INCLUDE_DIR lber.h REQUIRED)
find_library(LBER_LIBRARY lber REQUIRED)
add_library(fokrazo::lber UNKNOWN IMPORTED)
set_target_properties(fokrazo::lber PROPERTIES IMPORTED_LOCATION ${LBER_LIBRARY}
                      INTERFACE_INCLUDE_DIRECTORIES ${LBER_INCLUDE_DIR})

if(FOKRAZO_TOOLS)
  # For readpassphrase, which the tool uses.
  find_library(BSD_LIBRARY bsd REQUIRED)

  # libldap reads LDIF for the stand-in; the library itself never links it.
  find_library(LDAP_LIBRARY ldap REQUIRED)
  add_library(fokrazo::ldap UNKNOWN IMPORTED)
  set_target_properties(fokrazo::ldap PROPERTIES IMPORTED_LOCATION ${LDAP_LIBRARY})
endif()
