# TAVMIR_SANITIZE=address,undefined,leak | thread | undefined: every target is built with these
# sanitizers, and the first finding ends the program.
set(TAVMIR_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize names them")
if(TAVMIR_SANITIZE)
  # What a sanitizer adds to the code makes an optimiser slow: with less of it the same tests are
  # built in half the time. Lines are all that its reports need.
  set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1 -DNDEBUG")
  add_compile_options(-fsanitize=${TAVMIR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TAVMIR_SANITIZE})
  if(CMAKE_CROSSCOMPILING)
    # The sysroot has no shared run-time of the sanitizer.
    add_link_options(-static-libubsan)
  endif()
endif()
