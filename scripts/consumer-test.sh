#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# An integrator's first hour: the consumer example (examples/consumer) built
# against the installed library and run.
#  - host and armhf staging trees (cmake --install --prefix <tree>, runtime
#    and development components), each with CMake find_package and with the
#    Makefile using pkg-config;
#  - the amd64 runtime and development packages unpacked into a throwaway
#    root (dpkg -x), again both ways.
# The installed object must carry no RUNPATH and no build path. Programs run
# in the test sandbox (armhf under qemu-arm). The maker's libqv and liblog,
# part of a real firmware sysroot, come from the build's simulated platform.
# Needs the pkg-amd64 and pkg-armhf builds and the packages (make package).
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD
work=$top/build/consumer
rm -rf "$work"
mkdir -p "$work"
fail=0

say() { echo "consumer: $*"; }

# check_object <installed .so>: no RUNPATH/RPATH, no path of this tree.
check_object() {
  local so=$1 readelf=$2
  if "$readelf" -d "$so" | grep -Eq '\((RUNPATH|RPATH)\)'; then
    say "$so carries a run path:"; "$readelf" -d "$so" | grep -E 'RUNPATH|RPATH'; fail=1
  fi
  if grep -aq "$top" "$so"; then
    say "$so holds the build path $top"; fail=1
  fi
}

# run_consumer <label> <program> <library path> [emulator]
run_consumer() {
  local label=$1 prog=$2 libpath=$3
  shift 3
  if tests/sandbox/qvs-sandbox env LD_LIBRARY_PATH="$libpath" "$@" "$prog" > "$work/$label.out" 2>&1; then
    say "$label: ok"
  else
    say "$label: FAILED"; cat "$work/$label.out"; fail=1
  fi
}

# build_both <label> <arch> <platform libs> <tree> <prefix in the tree> <pkg-config env...>
build_both() {
  local label=$1 arch=$2 platform=$3 tree=$4 prefix=$5
  shift 5
  local cmake_args=() make_args=() emu=()
  # Host: the tree's prefix on CMAKE_PREFIX_PATH. armhf: the tree as a
  # find root (as a firmware sysroot is given), prefixes inside it.
  cmake_args=(-DCMAKE_PREFIX_PATH="${tree}${prefix%/}")
  if [ "$arch" = armhf ]; then
    cmake_args=(-DCMAKE_TOOLCHAIN_FILE="$top/cmake/toolchain-armhf.cmake" -DCMAKE_FIND_ROOT_PATH="$tree"
                -DCMAKE_PREFIX_PATH="$prefix")
    make_args=(CC=arm-linux-gnueabihf-gcc)
    emu=(qemu-arm)
  fi
  # CMake, find_package(qvs_utils CONFIG).
  cmake -S examples/consumer -B "$work/$label-cmake" -G Ninja "${cmake_args[@]}" \
    -DCMAKE_EXE_LINKER_FLAGS="-Wl,-rpath-link,$platform" > "$work/$label-cmake.log" 2>&1 &&
    cmake --build "$work/$label-cmake" >> "$work/$label-cmake.log" 2>&1 ||
    { say "$label-cmake: build FAILED"; cat "$work/$label-cmake.log"; fail=1; }
  # Makefile, pkg-config.
  mkdir -p "$work/$label-make"
  env "$@" make -s -C examples/consumer O="$work/$label-make" "${make_args[@]}" \
    LDFLAGS="-Wl,-rpath-link,$platform" > "$work/$label-make.log" 2>&1 ||
    { say "$label-make: build FAILED"; cat "$work/$label-make.log"; fail=1; }
}

for arch in amd64 armhf; do
  build=$top/build/pkg-$arch
  triplet=x86_64-linux-gnu readelf=readelf
  [ "$arch" = armhf ] && { triplet=arm-linux-gnueabihf; readelf=arm-linux-gnueabihf-readelf; }
  emu=()
  [ "$arch" = armhf ] && emu=(qemu-arm)
  stage=$work/stage-$arch
  for comp in runtime development; do
    cmake --install "$build" --prefix "$stage" --component "$comp" > /dev/null
  done
  libdir=$stage/lib/$triplet
  check_object "$libdir/libqvs_utils.so.1.0.0" "$readelf"
  build_both "stage-$arch" "$arch" "$build/lib" "$stage" / PKG_CONFIG_LIBDIR="$libdir/pkgconfig" PKG_CONFIG_PATH=
  for how in cmake make; do
    run_consumer "stage-$arch-$how" "$work/stage-$arch-$how/consumer" "$libdir:$build/lib" "${emu[@]}"
  done
done

# The amd64 packages unpacked into a throwaway root.
root=$work/pkgroot-amd64
mkdir -p "$root"
for deb in build/packages/libqvs-utils1_*_amd64.deb build/packages/libqvs-utils-dev_*_amd64.deb; do
  [ -f "$deb" ] || { say "no $deb (make package)"; exit 1; }
  dpkg -x "$deb" "$root"
done
libdir=$root/usr/lib/x86_64-linux-gnu
check_object "$libdir/libqvs_utils.so.1.0.0" readelf
build_both "package-amd64" amd64 "$top/build/pkg-amd64/lib" "$root" /usr \
  PKG_CONFIG_SYSROOT_DIR="$root" PKG_CONFIG_LIBDIR="$libdir/pkgconfig" PKG_CONFIG_PATH=
for how in cmake make; do
  run_consumer "package-amd64-$how" "$work/package-amd64-$how/consumer" "$libdir:$top/build/pkg-amd64/lib"
done

[ $fail -eq 0 ] && say "all builds and runs ok" || say "FAILED"
exit $fail
