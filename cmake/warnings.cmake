# The presets make warnings errors, by CMAKE_COMPILE_WARNING_AS_ERROR.
add_compile_options(-Wall -Wextra)
