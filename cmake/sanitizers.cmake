if(FOKRAZO_SANITIZE)
  add_compile_options(-fsanitize=${FOKRAZO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${FOKRAZO_SANITIZE})
endif()
