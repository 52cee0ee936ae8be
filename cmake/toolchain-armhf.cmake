# Cross compiler, sysroot and emulator of the 32-bit ARM build. The sysroot is made by
# scripts/make-armhf-sysroot; its folder comes from TAVMIR_ARMHF_SYSROOT, as a CMake variable or
# from the environment, else it is the script's own default.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

if(NOT TAVMIR_ARMHF_SYSROOT)
  if(DEFINED ENV{TAVMIR_ARMHF_SYSROOT})
    set(TAVMIR_ARMHF_SYSROOT $ENV{TAVMIR_ARMHF_SYSROOT})
  elseif(DEFINED ENV{XDG_CACHE_HOME})
    set(TAVMIR_ARMHF_SYSROOT $ENV{XDG_CACHE_HOME}/tavmir/armhf-sysroot)
  else()
    set(TAVMIR_ARMHF_SYSROOT $ENV{HOME}/.cache/tavmir/armhf-sysroot)
  endif()
endif()
if(NOT EXISTS ${TAVMIR_ARMHF_SYSROOT}/usr/include)
  message(FATAL_ERROR "No sysroot in \"${TAVMIR_ARMHF_SYSROOT}\": run scripts/make-armhf-sysroot")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TAVMIR_ARMHF_SYSROOT)

set(CMAKE_SYSROOT ${TAVMIR_ARMHF_SYSROOT})
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # a note about compilers before GCC 7, not about this code
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L ${TAVMIR_ARMHF_SYSROOT})

# Qt's programs in the sysroot are the panel's; moc and its like must run here.
set(QT_HOST_PATH /usr)
