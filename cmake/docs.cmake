# The documentation as a site, where Doxygen, mandoc and Python are installed: target docs, into docs/html of the build.
include(public_headers)
find_program(DOXYGEN_PROGRAM doxygen)
find_program(MANDOC_PROGRAM mandoc)
find_program(PYTHON_PROGRAM python3)
if(NOT DOXYGEN_PROGRAM OR NOT MANDOC_PROGRAM OR NOT PYTHON_PROGRAM)
  return()
endif()
file(GLOB FOKRAZO_GUIDES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
set(FOKRAZO_DOCUMENTED ${FOKRAZO_PUBLIC_HEADERS})
list(TRANSFORM FOKRAZO_DOCUMENTED PREPEND ${PROJECT_SOURCE_DIR}/include/fokrazo/)
list(APPEND FOKRAZO_DOCUMENTED ${FOKRAZO_GUIDES} ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md
     ${PROJECT_BINARY_DIR}/docs/manual)
# Quoted, because the path to this folder may have blanks.
list(TRANSFORM FOKRAZO_DOCUMENTED REPLACE "(.+)" "\"\\1\"")
list(JOIN FOKRAZO_DOCUMENTED " " FOKRAZO_DOCUMENTED)
configure_file(docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_target(docs COMMAND ${PROJECT_SOURCE_DIR}/scripts/docs/make-site ${PROJECT_BINARY_DIR} VERBATIM)
