# On Debian, linker, pkg-config and CMake search the architecture's folder below every prefix.
if(PROJECT_IS_TOP_LEVEL AND NOT DEFINED CMAKE_INSTALL_LIBDIR AND EXISTS /etc/debian_version
   AND CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Libraries, below the prefix")
endif()
include(GNUInstallDirs)
