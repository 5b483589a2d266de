# Installs three components:
#   runtime      the library
#   development  its development links, the headers under include/fokrazo (the one include path), a pkg-config file, a
#                CMake package, the manual page fokrazo(3), the guides and the examples
#   tools        fokrazo and the stand-in daemon with its sample directory, their manual pages and completion
# The installed tree is relocatable, unless an install directory is absolute.
include(public_headers)
include(CMakePackageConfigHelpers)

set(FOKRAZO_CMAKE_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/fokrazo)

foreach(header IN LISTS FOKRAZO_PUBLIC_HEADERS)
  install(FILES include/fokrazo/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/fokrazo COMPONENT development)
endforeach()
install(FILES include/fokrazo.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# fokrazo/qtr_ber.h calls liblber from the program's own code; other programs do not link with it.
set(FOKRAZO_LINK_LBER_IF_USED -Wl,--push-state,--as-needed,-llber,--pop-state)
target_link_libraries(fokrazo INTERFACE "$<INSTALL_INTERFACE:${FOKRAZO_LINK_LBER_IF_USED}>")
install(TARGETS fokrazo EXPORT fokrazoTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(EXPORT fokrazoTargets NAMESPACE fokrazo:: FILE fokrazoTargets.cmake
        DESTINATION ${FOKRAZO_CMAKE_INSTALL_DIR} COMPONENT development)

# The names that -lfokrazo and ldconfig look for.
file(CREATE_LINK fokrazo.so.0 ${PROJECT_BINARY_DIR}/libfokrazo.so.0 SYMBOLIC)
file(CREATE_LINK fokrazo.so ${PROJECT_BINARY_DIR}/libfokrazo.so SYMBOLIC)
install(FILES ${PROJECT_BINARY_DIR}/libfokrazo.so.0 DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
install(FILES ${PROJECT_BINARY_DIR}/libfokrazo.so DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)

configure_package_config_file(cmake/fokrazoConfig.cmake.in ${PROJECT_BINARY_DIR}/fokrazoConfig.cmake
                              INSTALL_DESTINATION ${FOKRAZO_CMAKE_INSTALL_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/fokrazoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/fokrazoConfig.cmake ${PROJECT_BINARY_DIR}/fokrazoConfigVersion.cmake
        DESTINATION ${FOKRAZO_CMAKE_INSTALL_DIR} COMPONENT development)

set(FOKRAZO_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  set(FOKRAZO_PC_PREFIX "\${pcfiledir}/${to_prefix}")
endif()
foreach(dir LIBDIR INCLUDEDIR)
  set(FOKRAZO_PC_${dir} ${CMAKE_INSTALL_${dir}})
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(FOKRAZO_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
configure_file(cmake/fokrazo.pc.in ${PROJECT_BINARY_DIR}/fokrazo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/fokrazo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(FILES man/fokrazo.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development USE_SOURCE_PERMISSIONS
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.sh")
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)

if(FOKRAZO_TOOLS)
  set(FOKRAZO_RPATH ${CMAKE_INSTALL_FULL_LIBDIR})
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_BINDIR}" AND NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    file(RELATIVE_PATH to_lib "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set(FOKRAZO_RPATH "$ORIGIN/${to_lib}")
  endif()
  set_target_properties(fokrazo_tool fokrazo_standin PROPERTIES INSTALL_RPATH "${FOKRAZO_RPATH}")
  install(TARGETS fokrazo_tool fokrazo_standin RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  install(DIRECTORY standin/sample DESTINATION ${CMAKE_INSTALL_DATADIR}/fokrazo COMPONENT tools)
  install(FILES man/fokrazo.1 man/brondalt-standin.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES man/velmora.conf.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5 COMPONENT tools)
  # Bash looks for a file named after the program.
  foreach(program fokrazo brondalt-standin)
    install(FILES completion/fokrazo DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${program}
            COMPONENT tools)
  endforeach()
endif()

if(PROJECT_IS_TOP_LEVEL)
  include(packages)
endif()
