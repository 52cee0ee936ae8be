# TAVMIR_SANITIZE=address,undefined,leak | thread | undefined: every target is built with these
# sanitizers, and the first finding ends the program.
set(TAVMIR_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize names them")
if(TAVMIR_SANITIZE)
  add_compile_options(-fsanitize=${TAVMIR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TAVMIR_SANITIZE})
  if(CMAKE_CROSSCOMPILING)
    # The sysroot has no shared run-time of the sanitizer.
    add_link_options(-static-libubsan)
  endif()
endif()
