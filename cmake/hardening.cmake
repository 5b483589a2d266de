# Installed files contain no paths of the build machine. Debug builds keep them for the debugger.
add_compile_options(
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=.>)

# Mitigations of memory errors. Sanitizers replace them.
if(NOT FOKRAZO_HARDENING OR FOKRAZO_SANITIZE)
  return()
endif()
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX)
add_compile_options(-fstack-protector-strong)
add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
check_cxx_compiler_flag(-fcf-protection FOKRAZO_HAS_CF_PROTECTION)
if(FOKRAZO_HAS_CF_PROTECTION)
  add_compile_options(-fcf-protection)
endif()

# Checked calls of the C library, in optimized code only. Level 3 also knows the sizes of allocations; if it
# is not available, the C library falls back to level 2 with a warning.
set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
check_cxx_source_compiles("#include <stdlib.h>
static_assert(__USE_FORTIFY_LEVEL == 3, \"\");
int main() {}" FOKRAZO_HAS_FORTIFY_3)
unset(CMAKE_REQUIRED_FLAGS)
set(level $<IF:$<BOOL:${FOKRAZO_HAS_FORTIFY_3}>,3,2>)
set(is_optimized $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
add_compile_options($<${is_optimized}:-U_FORTIFY_SOURCE> $<${is_optimized}:-D_FORTIFY_SOURCE=${level}>)
