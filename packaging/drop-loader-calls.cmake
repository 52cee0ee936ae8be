# Run by cpack on the packages it has made: takes out the maintainer scripts that cpack adds to
# call ldconfig. The package's trigger does that, once for all packages of an upgrade, and
# nothing of ours runs on a panel while packages are unpacked. And out of the checked library's
# package what would name it as the one to depend on: it bears the library's name, and no loader
# looks where it is.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES "/libtavmir-kx-tcp1(-checked)?_[^/]*\\.deb$")
    continue()
  endif()
  set(unpacked "${package}.unpacked")
  file(REMOVE_RECURSE "${unpacked}")
  execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${unpacked}" COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE "${unpacked}/DEBIAN/postinst" "${unpacked}/DEBIAN/postrm")
  if(CMAKE_MATCH_1)
    file(REMOVE "${unpacked}/DEBIAN/shlibs")
  endif()
  execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build "${unpacked}" "${package}"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE "${unpacked}")
endforeach()
