# SPDX-License-Identifier: MIT
# Cross build for 32-bit ARM glibc gateways with Debian's cross toolchain.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
# Debian's multiarch folder names: find_package looks in
# lib/arm-linux-gnueabihf/cmake, GNUInstallDirs installs there under /usr.
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
# A staging tree or firmware sysroot given with -DCMAKE_FIND_ROOT_PATH=<dir>
# is searched as well.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabihf /usr/lib/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Test programs run under qemu-user; the armhf runtime libraries come from
# Debian's multiarch packages, so no -L sysroot is needed.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)
