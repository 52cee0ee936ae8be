# TAVMIR_BUILD_FUZZERS: fuzz targets, and with them every library with coverage counters and the
# address and undefined-behaviour sanitizers. Needs clang. Goes before sanitizers.cmake.
option(TAVMIR_BUILD_FUZZERS "Build the fuzz targets (clang only)" OFF)
if(TAVMIR_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "The fuzz targets need clang: -DCMAKE_CXX_COMPILER=clang++")
  endif()
  set(TAVMIR_SANITIZE "address,undefined" CACHE STRING "Sanitizers, as -fsanitize names them")
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
