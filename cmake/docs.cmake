# The reference by Doxygen, where it is installed: target docs.
find_program(DOXYGEN_PROGRAM doxygen)
if(NOT DOXYGEN_PROGRAM)
  return()
endif()
set(FOKRAZO_DOCUMENTED ${FOKRAZO_PUBLIC_HEADERS} docs/README.md docs/architecture.md docs/module-authors.md
                       docs/outcomes.md docs/protocol.md docs/memory-log.md)
list(TRANSFORM FOKRAZO_DOCUMENTED PREPEND ${PROJECT_SOURCE_DIR}/)
list(JOIN FOKRAZO_DOCUMENTED " " FOKRAZO_DOCUMENTED)
configure_file(docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_target(docs COMMAND ${DOXYGEN_PROGRAM} ${PROJECT_BINARY_DIR}/Doxyfile)
