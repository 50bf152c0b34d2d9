# Builds for a device with an ARMv7 processor, as Debian's armhf knows it, on a Debian machine of another kind. The root of
# the device's libraries and headers is QWIXTD_SYSROOT, a variable of CMake or of the environment; tools/armhf.sh makes one.
set(triplet arm-linux-gnueabihf)
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})
set(QWIXTD_DEBIAN_ARCHITECTURE armhf)
# GCC notes wherever its version 7 has changed how values are passed.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

set(sysroot "$ENV{QWIXTD_SYSROOT}")
if(NOT sysroot)
  set(sysroot build/armhf/root)
endif()
cmake_path(ABSOLUTE_PATH sysroot BASE_DIRECTORY "${CMAKE_CURRENT_LIST_DIR}/.." NORMALIZE)
set(QWIXTD_SYSROOT "${sysroot}" CACHE PATH "Root directory of the device's libraries and headers")
# What the build directory has found in one root stays: it cannot change to another.
file(REAL_PATH "${sysroot}" asked)
file(REAL_PATH "${QWIXTD_SYSROOT}" kept)
if(NOT "$ENV{QWIXTD_SYSROOT}" STREQUAL "" AND NOT asked STREQUAL kept)
  message(FATAL_ERROR "${CMAKE_BINARY_DIR} is configured for the root of a device in ${QWIXTD_SYSROOT}, and QWIXTD_SYSROOT in "
    "the environment names ${sysroot}: take another build directory (cmake -B), or delete this one first.")
endif()
if(NOT IS_DIRECTORY "${QWIXTD_SYSROOT}/usr/include")
  set(missing "${QWIXTD_SYSROOT}")
  unset(QWIXTD_SYSROOT CACHE)
  message(FATAL_ERROR "There is no root of a device in ${missing}: tools/armhf.sh makes one, "
    "or name another in QWIXTD_SYSROOT.")
endif()
# The compiler is tried in a project of its own, which has to know the root as well.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QWIXTD_SYSROOT)
set(CMAKE_SYSROOT "${QWIXTD_SYSROOT}")

# Libraries and headers come from the device's root alone, programs from this machine alone.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR} "${CMAKE_SYSROOT}/usr/lib/${triplet}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# The generators of Qt have to run here. Qt 6 asks where this machine's are; Qt 5 takes what is there already.
if(NOT QT_HOST_PATH)
  set(QT_HOST_PATH /usr)
  set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake)
endif()
foreach(generator moc rcc)
  if(NOT TARGET Qt5::${generator} AND EXISTS /usr/lib/qt5/bin/${generator})
    add_executable(Qt5::${generator} IMPORTED GLOBAL)
    set_target_properties(Qt5::${generator} PROPERTIES IMPORTED_LOCATION /usr/lib/qt5/bin/${generator})
  endif()
endforeach()

# Where the emulator is, the device's programs run here, as the tests do.
find_program(QWIXTD_EMULATOR qemu-arm-static DOC "Runs the device's programs on this machine")
mark_as_advanced(QWIXTD_EMULATOR)
if(QWIXTD_EMULATOR)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${QWIXTD_EMULATOR} -L ${QWIXTD_SYSROOT})
endif()
