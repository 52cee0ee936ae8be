# Debian packages, made by cpack: libtavmir-kx-tcp1 (the library), libtavmir-kx-tcp-dev,
# libtavmir-kx-tcp1-checked (the library that watches its host), tavmir-tools and tavmir-wireshark,
# with the debug symbols of each in a package of its own. scripts/make-packages configures and runs
# it.
set(TAVMIR_PACKAGE_MAINTAINER "tavmir maintainers <maintainers@tavmir.invalid>"
    CACHE STRING "Maintainer named in the packages, as \"name <address>\"")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavmir-kx-tcp)
set(CPACK_PACKAGE_CONTACT "${TAVMIR_PACKAGE_MAINTAINER}")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development checked tools wireshark)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${tavmir_package_release})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_STRIP_FILES OFF) # the debug packages are made from the unstripped files
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/drop-loader-calls.cmake")
if(CMAKE_LIBRARY_ARCHITECTURE STREQUAL "arm-linux-gnueabihf")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
endif()

set(full_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(same_library "libtavmir-kx-tcp1 (= ${full_version})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtavmir-kx-tcp1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/triggers")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "controller driver for operator panels
The library that an operator panel's runtime loads to exchange process
data with programmable controllers over TCP.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtavmir-kx-tcp-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${same_library}, qtbase5-dev (>= 5.15)")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "controller driver for operator panels - development files
The host interface header, the files for CMake and pkg-config, and a
manual page for each entry point.")

set(CPACK_DEBIAN_CHECKED_PACKAGE_NAME libtavmir-kx-tcp1-checked)
set(CPACK_DEBIAN_CHECKED_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_CHECKED_DESCRIPTION "controller driver for operator panels - checks its host
The same library once more, in a folder of its own: it tells which of its
duties a host breaks, and what the driver alone would do then.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tavmir-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "controller driver for operator panels - programs
A simulated controller, a reference host runtime, and a probe that shows
whether the driver loads, fits and reaches a controller.")

set(CPACK_DEBIAN_WIRESHARK_PACKAGE_NAME tavmir-wireshark)
set(CPACK_DEBIAN_WIRESHARK_PACKAGE_SECTION net)
set(CPACK_DEBIAN_WIRESHARK_PACKAGE_DEPENDS "wireshark | tshark")
set(CPACK_DEBIAN_WIRESHARK_PACKAGE_SUGGESTS "tavmir-tools")
set(CPACK_DEBIAN_WIRESHARK_DESCRIPTION "controller driver for operator panels - Wireshark dissector
Shows the frames between panel and controller in Wireshark and tshark,
with the names of a project, replies beside their requests, and a mark
for each thing that is wrong.")

# What the packages need: asked of the linked files, or, where this machine has no package
# database of the panel's processor, the same list written down. scripts/test-package compares it
# with the libraries, and the versions of the C library, that the files name.
if(CMAKE_CROSSCOMPILING)
  set(base "libgcc-s1 (>= 3.5), libqt5core5a (>= 5.15.1), libstdc++6 (>= 11)")
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.4), ${base}")
  set(CPACK_DEBIAN_CHECKED_PACKAGE_DEPENDS "libc6 (>= 2.34), ${base}")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libc6 (>= 2.34), ${base}, libqt5network5 (>= 5.0.2)")
  string(APPEND CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
    ", libncursesw6 (>= 6), libtinfo6 (>= 6), libpcap0.8 (>= 1.5.1), libsqlite3-0 (>= 3.12.0), libtins4.0, ${same_library}")
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_WIRESHARK_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${same_library}")
endif()

# Every package says what is known about its licence, and what changed; the tools', whose page has a
# chart built in, that of the chart.
set(copyright packaging/copyright)
set(tools_copyright ${copyright})
if(TAVMIR_PAGE)
  set(tools_copyright ${CMAKE_CURRENT_BINARY_DIR}/tools/copyright)
  file(READ ${copyright} own_copyright)
  file(READ tools/page/web/node_modules/uplot/LICENSE chart_licence)
  file(WRITE ${tools_copyright} "${own_copyright}\n\
The page of tavmir-host has uPlot built in, which is under this licence:\n\n${chart_licence}\n")
endif()
set(change_log ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian)
configure_file(packaging/changelog ${change_log} COPYONLY)
execute_process(COMMAND gzip -9nf ${change_log} RESULT_VARIABLE packed)
if(NOT packed EQUAL 0)
  message(FATAL_ERROR "gzip cannot pack ${change_log}")
endif()
foreach(pair runtime:libtavmir-kx-tcp1 development:libtavmir-kx-tcp-dev
    checked:libtavmir-kx-tcp1-checked tools:tavmir-tools wireshark:tavmir-wireshark)
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 component)
  list(GET pair 1 package)
  if(component STREQUAL "tools")
    set(copyright ${tools_copyright})
  else()
    set(copyright packaging/copyright)
  endif()
  install(FILES ${copyright} ${change_log}.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component})
endforeach()

include(CPack)
