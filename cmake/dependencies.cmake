find_package(ZLIB REQUIRED)
find_package(Boost REQUIRED)
find_package(Threads REQUIRED)

# liblber comes without a package file.
find_path(LBER_INCLUDE_DIR lber.h REQUIRED)
find_library(LBER_LIBRARY lber REQUIRED)
add_library(lber UNKNOWN IMPORTED GLOBAL)
set_target_properties(lber PROPERTIES IMPORTED_LOCATION ${LBER_LIBRARY}
                      INTERFACE_INCLUDE_DIRECTORIES ${LBER_INCLUDE_DIR})

# Asks for passwords at the terminal; for the tool alone.
find_library(BSD_LIBRARY bsd REQUIRED)

# Its sibling reads LDIF for the stand-in; the library itself never links it.
find_library(LDAP_LIBRARY ldap REQUIRED)
add_library(ldap UNKNOWN IMPORTED GLOBAL)
set_target_properties(ldap PROPERTIES IMPORTED_LOCATION ${LDAP_LIBRARY})
