# tavmir_version and tavmir_package_release: what the first line of packaging/changelog says, the one
# place where the version stands: "tavmir-kx-tcp (VERSION-RELEASE) …".
set(changelog ${CMAKE_CURRENT_LIST_DIR}/../packaging/changelog)
file(STRINGS ${changelog} first_line LIMIT_COUNT 1)
if(NOT first_line MATCHES "^tavmir-kx-tcp \\(([0-9]+\\.[0-9]+\\.[0-9]+)-([0-9]+)\\) ")
  message(FATAL_ERROR "packaging/changelog: no version in \"${first_line}\"")
endif()
set(tavmir_version ${CMAKE_MATCH_1})
set(tavmir_package_release ${CMAKE_MATCH_2})
