# Target tavmir_qtcore: the QtCore that the driver is built against, and TAVMIR_QT_TARGET, the
# imported target behind it. TAVMIR_QT chooses Qt 5 (the default) or Qt 4.8, the panel's.
#
# A Qt 4.8 SDK is found by its qmake (-DQT_QMAKE_EXECUTABLE=…/bin/qmake), or, when it brings no
# qmake that runs here, by its folders:
#   -DTAVMIR_QT4_INCLUDE_DIR=…/include   the folder that holds QtCore/
#   -DTAVMIR_QT4_LIBRARY_DIR=…/lib       the folder that holds libQtCore.so
set_property(CACHE TAVMIR_QT PROPERTY STRINGS 5 4)

if(TAVMIR_QT STREQUAL "5")
  find_package(Qt5Core 5.15 REQUIRED)
  set(TAVMIR_QT_TARGET Qt5::Core)
elseif(TAVMIR_QT STREQUAL "4")
  set(TAVMIR_QT4_INCLUDE_DIR "" CACHE PATH "Qt 4.8 headers, for an SDK without qmake")
  set(TAVMIR_QT4_LIBRARY_DIR "" CACHE PATH "Qt 4.8 libraries, for an SDK without qmake")
  set(TAVMIR_QT_TARGET Qt4::QtCore)
  if(TAVMIR_QT4_INCLUDE_DIR OR TAVMIR_QT4_LIBRARY_DIR)
    include(${CMAKE_CURRENT_LIST_DIR}/qt4_from_folders.cmake)
    tavmir_qt4_from_folders("${TAVMIR_QT4_INCLUDE_DIR}" "${TAVMIR_QT4_LIBRARY_DIR}")
  else()
    find_package(Qt4 4.8 REQUIRED COMPONENTS QtCore)
  endif()
else()
  message(FATAL_ERROR "TAVMIR_QT is ${TAVMIR_QT}; it must be 5 or 4")
endif()

add_library(tavmir_qtcore INTERFACE)
target_link_libraries(tavmir_qtcore INTERFACE ${TAVMIR_QT_TARGET})
