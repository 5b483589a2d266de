# The presets turn warnings into errors, with CMAKE_COMPILE_WARNING_AS_ERROR.
add_compile_options(-Wall -Wextra)
