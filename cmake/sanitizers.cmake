if(FOKRAZO_SANITIZE)
  add_compile_options(-fsanitize=${FOKRAZO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
                      -g1)
  add_link_options(-fsanitize=${FOKRAZO_SANITIZE})
endif()
if(FOKRAZO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
