# What a user of the library gets: the library with its development link, the headers under include/fokrazo (the
# one include path), a pkg-config file and a CMake package. Both find themselves wherever the tree is put.
include(public_headers)
include(CMakePackageConfigHelpers)

set(FOKRAZO_INCLUDE_INSTALL_DIR ${CMAKE_INSTALL_INCLUDEDIR}/fokrazo)

foreach(header IN LISTS FOKRAZO_PUBLIC_HEADERS)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${header} DESTINATION ${FOKRAZO_INCLUDE_INSTALL_DIR}/${folder} COMPONENT development)
endforeach()

target_include_directories(fokrazo INTERFACE $<INSTALL_INTERFACE:${FOKRAZO_INCLUDE_INSTALL_DIR}>)
install(TARGETS fokrazo EXPORT fokrazoTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(EXPORT fokrazoTargets NAMESPACE fokrazo:: FILE fokrazoTargets.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/fokrazo COMPONENT development)

configure_package_config_file(cmake/fokrazoConfig.cmake.in ${PROJECT_BINARY_DIR}/fokrazoConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/fokrazo)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/fokrazoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/fokrazoConfig.cmake ${PROJECT_BINARY_DIR}/fokrazoConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/fokrazo COMPONENT development)

file(RELATIVE_PATH FOKRAZO_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/fokrazo.pc.in ${PROJECT_BINARY_DIR}/fokrazo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/fokrazo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
