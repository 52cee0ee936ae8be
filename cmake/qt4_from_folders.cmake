# tavmir_qt4_from_folders(INCLUDE_DIR LIBRARY_DIR): the imported target Qt4::QtCore from a plain
# pair of folders, for an SDK whose qmake does not run on this machine. Stops with a message when
# the folders hold no Qt 4.8.
function(tavmir_qt4_from_folders include_dir library_dir)
  set(version_header ${include_dir}/QtCore/qglobal.h)
  if(NOT EXISTS ${version_header})
    message(FATAL_ERROR "TAVMIR_QT4_INCLUDE_DIR: no QtCore/qglobal.h in \"${include_dir}\"")
  endif()
  file(STRINGS ${version_header} version_line REGEX "define QT_VERSION_STR")
  if(NOT version_line MATCHES "\"4\\.8\\.")
    message(FATAL_ERROR "TAVMIR_QT4_INCLUDE_DIR: not Qt 4.8: ${version_line}")
  endif()
  set(library ${library_dir}/libQtCore.so)
  if(NOT EXISTS ${library})
    message(FATAL_ERROR "TAVMIR_QT4_LIBRARY_DIR: no libQtCore.so in \"${library_dir}\"")
  endif()
  add_library(Qt4::QtCore SHARED IMPORTED GLOBAL)
  set_target_properties(Qt4::QtCore PROPERTIES
    IMPORTED_LOCATION ${library}
    INTERFACE_INCLUDE_DIRECTORIES "${include_dir};${include_dir}/QtCore"
    INTERFACE_COMPILE_DEFINITIONS "QT_CORE_LIB;$<$<NOT:$<CONFIG:Debug>>:QT_NO_DEBUG>")
  message(STATUS "Qt 4.8 from ${library}")
endfunction()
