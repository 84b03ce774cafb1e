#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# test-target.sh [subset|all]: the armhf suites on a booted ARM system.
# Builds (or reuses) the target image (tests/target/build-image.sh), makes
# our armhf runtime package and the consumer example against the unpacked
# armhf packages, boots the image once under qemu-system-arm with the tree
# and a results folder shared over 9p, and reads the results back.
#  subset: the cases of tests/target/subset.tests (ipset sets, VLAN and
#          bridge, in-kernel IPsec, the system facts) and the consumer example;
#  all:    every armhf suite and the consumer example.
# Fails when anything failed or the machine did not finish. Needs the armhf
# and pkg-armhf builds.
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD
scope=${1:-subset}
case $scope in
  # The cases of tests/target/subset.tests, as one ctest name pattern.
  subset)
    selection="^($(grep -v '^#' tests/target/subset.tests | grep -v '^$' | sed 's/[.]/[.]/g' | paste -sd'|'))\$"
    limit=900 ;;
  all) selection=all limit=10800 ;;
  *) echo "test-target: unknown scope '$scope' (subset or all)" >&2; exit 2 ;;
esac
work=$top/build/target
img=$work/image
results=$work/results
say() { echo "test-target: $*"; }

bash tests/target/build-image.sh "$img"

# Our runtime package (and the development one, for the consumer build).
rm -rf "$work/packages" "$work/consumer"
(cd build/pkg-armhf && cpack -G DEB -B "$work/packages" >/dev/null)
find "$work/packages" -mindepth 1 -maxdepth 1 ! -name '*.deb' -exec rm -rf {} +

# The consumer example, built with pkg-config against the unpacked armhf
# packages; the maker's platform libraries in a folder of their own.
pkgroot=$work/consumer/root
mkdir -p "$pkgroot" "$work/consumer/platform"
for deb in "$work"/packages/libqvs-utils1_*_armhf.deb "$work"/packages/libqvs-utils-dev_*_armhf.deb; do
  dpkg -x "$deb" "$pkgroot"
done
cp -P build/pkg-armhf/lib/libqv.so* build/pkg-armhf/lib/liblog.so* "$work/consumer/platform/"
libdir=$pkgroot/usr/lib/arm-linux-gnueabihf
PKG_CONFIG_SYSROOT_DIR="$pkgroot" PKG_CONFIG_LIBDIR="$libdir/pkgconfig" PKG_CONFIG_PATH= \
  make -s -C examples/consumer O="$work/consumer" CC=arm-linux-gnueabihf-gcc \
  LDFLAGS="-Wl,-rpath-link,$work/consumer/platform"

# Test lists discovered here (qemu-user), so the target only runs them.
ctest --preset armhf -N > /dev/null

rm -rf "$results"
mkdir -p "$results"
echo "$selection" > "$results/selection"
echo "$limit" > "$results/limit"
# Checks of the build itself, run by the build machine's cross compiler and
# nm, and of the header's documentation, read by the build machine's
# Python, stay on the build machine.
echo '^(abi[.](header_.*|exports)|docs[.]thread_safety)$' > "$results/exclude"

# The machine: virt board, Cortex-A15, the image's disk in snapshot mode
# (the cached image stays as built), the tree read-only and the results
# writable over 9p, no network. A hang inside is cut by the suites' limit
# there; this limit covers the machine itself.
say "booting ($scope)"
start=$(date +%s)
status=0
timeout --kill-after=10 $((limit + 300)) qemu-system-arm -M virt -cpu cortex-a15 -smp 2 -m 1024 \
  -nographic -no-reboot -nic none \
  -kernel "$img/vmlinuz" -initrd "$img/initrd" \
  -append "console=ttyAMA0 panic=-1 quiet qvs.tree=$top" \
  -drive "file=$img/rootfs.ext4,format=raw,if=none,id=root,snapshot=on" -device virtio-blk-device,drive=root \
  -fsdev "local,id=tree,path=$top,security_model=none,readonly=on" -device virtio-9p-device,fsdev=tree,mount_tag=tree \
  -fsdev "local,id=results,path=$results,security_model=none" -device virtio-9p-device,fsdev=results,mount_tag=results \
  > "$work/console.log" 2>&1 || status=$?
wall=$(( $(date +%s) - start ))
[ $status -eq 0 ] || say "qemu-system-arm ended with status $status"

[ -f "$results/times" ] && sed 's/^/test-target: /' "$results/times"
say "machine wall time $wall s"
[ -f "$results/ctest.log" ] && cat "$results/ctest.log"
fail=0
check() { # <step> <status file>
  if [ "$(cat "$results/$2" 2>/dev/null)" = 0 ]; then say "$1: ok"; else say "$1: FAILED"; fail=1; fi
}
if [ ! -f "$results/finished" ]; then
  say "the machine did not finish; its console:"
  tail -50 "$work/console.log"
  [ -f "$results/console.log" ] && tail -50 "$results/console.log"
  fail=1
fi
check "dpkg -i libqvs-utils1 (on $(cat "$results/kernel" 2>/dev/null))" dpkg.status
[ "$(cat "$results/dpkg.status" 2>/dev/null)" = 0 ] || cat "$results/dpkg.log" 2>/dev/null
check "suites ($scope)" ctest.status
check "consumer example against the installed package" consumer.status
[ "$(cat "$results/consumer.status" 2>/dev/null)" = 0 ] || cat "$results/consumer.log" 2>/dev/null
[ $fail -eq 0 ] && say "passed" || say "FAILED"
exit $fail
