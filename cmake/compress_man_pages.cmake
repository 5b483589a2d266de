# Run by cpack: compresses the manual pages in packages, as Debian policy requires.
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.[1-9])
list(FILTER pages INCLUDE REGEX "/man/man[1-9]/[^/]*$")
if(pages)
  execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
endif()
