#!/usr/bin/env bash
# Checks on the shipped object: exact exported symbols, no C++ runtime, and a
# plain C program that links against the library alone.
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
exit $fail
