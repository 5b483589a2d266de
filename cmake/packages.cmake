# Debian packages of the three components: `cpack -G DEB` in a build folder, or its target `package`.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME fokrazo)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # set per package
set(CPACK_PACKAGE_VENDOR "The fokrazo maintainers")
set(CPACK_PACKAGE_CONTACT "The fokrazo maintainers <maintainers@fokrazo.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/compress_man_pages.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Dependencies are detected from the binaries, and the maintainer scripts run ldconfig. The need of packed
# relocations for glibc 2.36 is not detected, so it is added below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME fokrazo0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "client library of the brondalt directory daemon
Login modules, name-service modules and tools of hosts that are joined to an
Active Directory domain reach the daemon through this library.")
if(FOKRAZO_PACKS_RELOCATIONS)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.36)")
endif()

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME fokrazo-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "fokrazo0 (= ${PROJECT_VERSION}), libboost-dev, libldap-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "client library of the brondalt directory daemon, development files
Headers, pkg-config file, CMake package, guides and examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME fokrazo-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "fokrazo0 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
    "tools around the brondalt directory daemon
fokrazo asks the daemon for users, groups and other objects, and finds out what
is wrong with a host. brondalt-standin serves a sample directory in the daemon's
place, for development, demonstrations and tests.")

include(CPack)
