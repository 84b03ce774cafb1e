#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Checks on the shipped object: exact exported symbols, no C++ runtime, and a
# plain C program that links against the library alone; then the hardening
# of every object we build and ship (scripts/check-hardening.sh): the test
# builds, the pkg-* objects and the library inside each runtime package
# (run after scripts/package.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
fail=0
expected=$(cat abi/symbols/*.txt | grep -E '^[A-Za-z_][A-Za-z_0-9]*$' | sort -u)
for preset in host armhf; do
  so=build/$preset/lib/libqvs_utils.so
  nm_tool=nm; readelf_tool=readelf
  [ "$preset" = armhf ] && { nm_tool=arm-linux-gnueabihf-nm; readelf_tool=arm-linux-gnueabihf-readelf; }
  actual=$($nm_tool -D --defined-only "$so" | awk '{print $3}' | sed 's/@.*//' | sort -u)
  if [ "$actual" != "$expected" ]; then
    echo "check-shipped: $preset: exported symbols differ from abi/symbols (< exported, > expected):"
    diff <(echo "$actual") <(echo "$expected") || true
    fail=1
  fi
  if $readelf_tool -d "$so" | grep -E 'NEEDED.*(libstdc\+\+|libgcc_s)'; then
    echo "check-shipped: $preset: needs a C++ runtime"; fail=1
  fi
  soname=$($readelf_tool -d "$so" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
  [ "$soname" = libqvs_utils.so.1 ] || { echo "check-shipped: $preset: soname is '$soname'"; fail=1; }
done
echo "check-shipped: symbols, runtime and soname: $([ $fail = 0 ] && echo ok || echo FAILED)"

hard=0
unpacked=build/check-shipped
rm -rf "$unpacked"
for arch in amd64 armhf; do
  deb=$(ls build/packages/libqvs-utils1_*_"$arch".deb 2>/dev/null || true)
  [ -n "$deb" ] || { echo "check-shipped: no $arch runtime package (make package)"; hard=1; continue; }
  mkdir -p "$unpacked/$arch"
  dpkg-deb -x "$deb" "$unpacked/$arch"
done
so=libqvs_utils.so.1.0.0
bash scripts/check-hardening.sh amd64 "pkg-amd64=build/pkg-amd64/lib/$so" \
  "libqvs-utils1 amd64=$unpacked/amd64/usr/lib/x86_64-linux-gnu/$so" \
  --tree host=build/host/lib/$so host-clang=build/host-clang/lib/$so || hard=1
bash scripts/check-hardening.sh armhf "pkg-armhf=build/pkg-armhf/lib/$so" \
  "libqvs-utils1 armhf=$unpacked/armhf/usr/lib/arm-linux-gnueabihf/$so" \
  --tree armhf=build/armhf/lib/$so || hard=1
echo "check-shipped: hardening: $([ $hard = 0 ] && echo ok || echo FAILED)"
[ $hard = 0 ] || fail=1
exit $fail
