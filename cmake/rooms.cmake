# tavmir_add_room(NAME SOURCES... [LIBS ...]): the static library tavmir_NAME, whose headers are
# included as "NAME/header.h".
function(tavmir_add_room name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_library(tavmir_${name} STATIC ${ARG_SOURCES})
  target_include_directories(tavmir_${name} PUBLIC ${PROJECT_SOURCE_DIR}/tools)
  target_link_libraries(tavmir_${name} PUBLIC ${ARG_LIBS} PRIVATE tavmir_warnings)
  set_target_properties(tavmir_${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endfunction()
