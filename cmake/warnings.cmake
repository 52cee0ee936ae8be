# Warnings of all our own targets, and the coverage switches.
add_library(tavmir_warnings INTERFACE)
target_compile_options(tavmir_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${TAVMIR_WERROR}>:-Werror>)
if(TAVMIR_COVERAGE)
  target_compile_options(tavmir_warnings INTERFACE --coverage -O0 -fno-inline)
  target_link_options(tavmir_warnings INTERFACE --coverage)
endif()
