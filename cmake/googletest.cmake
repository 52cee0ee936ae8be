# Targets GTest::gtest, GTest::gtest_main, GTest::gmock: the machine's libraries, or, in a cross
# build, libraries made from Debian's sources (package googletest).
if(CMAKE_CROSSCOMPILING)
  set(TAVMIR_GOOGLETEST_SOURCE_DIR /usr/src/googletest CACHE PATH "Sources of GoogleTest")
  set(INSTALL_GTEST OFF)
  add_subdirectory(${TAVMIR_GOOGLETEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  foreach(library gtest gtest_main gmock gmock_main)
    if(NOT TARGET GTest::${library})
      add_library(GTest::${library} ALIAS ${library})
    endif()
  endforeach()
else()
  find_package(GTest REQUIRED)
endif()
