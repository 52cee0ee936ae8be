# Run by cpack on the packages it has made: takes out the maintainer scripts that cpack adds to
# call ldconfig. The package's trigger does that, once for all packages of an upgrade, and
# nothing of ours runs on a panel while packages are unpacked.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(NOT package MATCHES "/libtavmir-kx-tcp1_[^/]*\\.deb$")
    continue()
  endif()
  set(unpacked "${package}.unpacked")
  file(REMOVE_RECURSE "${unpacked}")
  execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${unpacked}" COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE "${unpacked}/DEBIAN/postinst" "${unpacked}/DEBIAN/postrm")
  execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build "${unpacked}" "${package}"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE "${unpacked}")
endforeach()
