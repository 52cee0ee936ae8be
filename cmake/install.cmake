# What an installation holds, in five components: runtime (the library), development (header,
# CMake package, pkg-config file, pages of the entry points, what a host's author and a panel's
# engineer read, an example of a host), checked (the library that watches its host), tools (programs,
# their pages, the project file's format and an example), wireshark (the dissector, where Debian's
# Wireshark looks for it).
include(CMakePackageConfigHelpers)

set(cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tavmir_kx_tcp)
add_library(tavmir::kx_tcp ALIAS tavmir_kx_tcp)
set_target_properties(tavmir_kx_tcp PROPERTIES EXPORT_NAME kx_tcp)

install(TARGETS tavmir_kx_tcp EXPORT tavmir_kx_tcp
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# Where no loader looks by itself.
install(TARGETS tavmir_kx_tcp_checked
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/tavmir/checked COMPONENT checked NAMELINK_SKIP)
install(DIRECTORY include/tavmir_kx_tcp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development FILES_MATCHING PATTERN "*.h")

install(EXPORT tavmir_kx_tcp NAMESPACE tavmir:: FILE tavmir_kx_tcp-targets.cmake
  DESTINATION ${cmake_folder} COMPONENT development)
configure_package_config_file(cmake/tavmir_kx_tcp-config.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/tavmir_kx_tcp-config.cmake INSTALL_DESTINATION ${cmake_folder})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tavmir_kx_tcp-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tavmir_kx_tcp-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/tavmir_kx_tcp-config-version.cmake
  DESTINATION ${cmake_folder} COMPONENT development)

if(TAVMIR_QT STREQUAL "5")
  set(pkg_config_qt "Qt5Core >= 5.15")
else()
  set(pkg_config_qt "QtCore >= 4.8")
endif()
# From the pkg-config file's own folder back to the prefix, so that a copied tree works.
string(REGEX REPLACE "[^/]+" ".." pkg_config_up "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
configure_file(cmake/tavmir_kx_tcp.pc.in ${CMAKE_CURRENT_BINARY_DIR}/tavmir_kx_tcp.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tavmir_kx_tcp.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc)
install(FILES docs/panel.md docs/binary-interface.md docs/host-duties.md docs/integration.md
  docs/protocol.md
  DESTINATION ${documents}/libtavmir-kx-tcp-dev COMPONENT development)
install(DIRECTORY examples/minimal-host
  DESTINATION ${documents}/libtavmir-kx-tcp-dev/examples COMPONENT development)
install(FILES docs/host-duties.md
  DESTINATION ${documents}/libtavmir-kx-tcp1-checked COMPONENT checked)
if(TAVMIR_BUILD_TOOLS)
  install(FILES docs/project-file.md docs/check-host.md docs/protocol.md docs/page.md
    docs/page.png docs/page-why.png docs/recording.md
    DESTINATION ${documents}/tavmir-tools COMPONENT tools)
  install(FILES examples/plant.json DESTINATION ${documents}/tavmir-tools/examples COMPONENT tools)
  install(FILES examples/check-host/standard.script
    DESTINATION ${documents}/tavmir-tools/examples/check-host COMPONENT tools)
  install(FILES wireshark/tavmir.lua
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/wireshark/plugins COMPONENT wireshark)
  install(FILES docs/wireshark.md docs/protocol.md
    DESTINATION ${documents}/tavmir-wireshark COMPONENT wireshark)
endif()
