# What a user of the library gets, in three components:
#   runtime      the library
#   development  its development link, the headers under include/fokrazo (the one include path), a pkg-config file, a
#                CMake package, the manual page fokrazo(3), the guides and the examples
#   tools        fokrazo and the stand-in daemon with its sample directory, their manual pages and completion
# All of it finds itself wherever the tree is put.
include(public_headers)
include(CMakePackageConfigHelpers)

set(FOKRAZO_CMAKE_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/fokrazo)

foreach(header IN LISTS FOKRAZO_PUBLIC_HEADERS)
  install(FILES include/fokrazo/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/fokrazo COMPONENT development)
endforeach()
install(FILES include/fokrazo.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# include/fokrazo/qtr_ber.h names functions of liblber in the user's own code; whoever calls none does not link it.
set(FOKRAZO_LINK_LBER_IF_USED -Wl,--push-state,--as-needed,-llber,--pop-state)
target_include_directories(fokrazo INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(fokrazo INTERFACE "$<INSTALL_INTERFACE:${FOKRAZO_LINK_LBER_IF_USED}>")
install(TARGETS fokrazo EXPORT fokrazoTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(EXPORT fokrazoTargets NAMESPACE fokrazo:: FILE fokrazoTargets.cmake
        DESTINATION ${FOKRAZO_CMAKE_INSTALL_DIR} COMPONENT development)

configure_package_config_file(cmake/fokrazoConfig.cmake.in ${PROJECT_BINARY_DIR}/fokrazoConfig.cmake
                              INSTALL_DESTINATION ${FOKRAZO_CMAKE_INSTALL_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/fokrazoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/fokrazoConfig.cmake ${PROJECT_BINARY_DIR}/fokrazoConfigVersion.cmake
        DESTINATION ${FOKRAZO_CMAKE_INSTALL_DIR} COMPONENT development)

file(RELATIVE_PATH FOKRAZO_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/fokrazo.pc.in ${PROJECT_BINARY_DIR}/fokrazo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/fokrazo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(FILES man/fokrazo.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development USE_SOURCE_PERMISSIONS
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.sh")
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development OPTIONAL)

file(RELATIVE_PATH FOKRAZO_LIB_FROM_BIN "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
set_target_properties(fokrazo_tool brondalt-standin PROPERTIES INSTALL_RPATH "$ORIGIN/${FOKRAZO_LIB_FROM_BIN}")
install(TARGETS fokrazo_tool brondalt-standin RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(DIRECTORY standin/sample DESTINATION ${CMAKE_INSTALL_DATADIR}/fokrazo COMPONENT tools)
install(FILES man/fokrazo.1 man/brondalt-standin.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
install(FILES man/velmora.conf.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT tools)
install(FILES completion/fokrazo DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)

include(packages)
