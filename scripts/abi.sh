#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The library's binary interface against its recorded baseline.
#
#   scripts/abi.sh check      abidiff of the shipped objects (pkg-amd64,
#                             pkg-armhf builds) against abi/*.abi; any change
#                             fails: a function's type, a table's size, a
#                             struct's layout, a symbol added or removed.
#   scripts/abi.sh baseline   rewrites abi/*.abi from the same objects (a
#                             deliberate change: commit the new files).
#
# The objects carry debug information (the pkg-* presets build with -g and
# relative source paths); the baseline leaves out source locations, build
# paths and undefined symbols so that it changes only with the interface.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=${1:?usage: scripts/abi.sh check|baseline}

abidw_opts=(--no-show-locs --no-corpus-path --no-comp-dir-path --drop-undefined-syms --type-id-style hash)
fail=0
for arch in amd64 armhf; do
  so=build/pkg-$arch/lib/libqvs_utils.so.1.0.0
  base=abi/libqvs_utils.$arch.abi
  [ -f "$so" ] || { echo "abi: $so is not built (cmake --preset pkg-$arch && cmake --build --preset pkg-$arch)"; exit 1; }
  case $mode in
    baseline)
      abidw "${abidw_opts[@]}" "$so" > "$base.new"
      mv "$base.new" "$base"
      echo "abi: baseline $base written from $so"
      ;;
    check)
      [ -f "$base" ] || { echo "abi: no baseline $base (make abi-baseline)"; fail=1; continue; }
      tmp=$(mktemp)
      abidw "${abidw_opts[@]}" "$so" > "$tmp"
      set +e
      report=$(abidiff --no-show-locs --fail-no-debug-info "$base" "$tmp" 2>&1)
      rc=$?
      set -e
      rm -f "$tmp"
      if [ $rc -ne 0 ] || [ -n "$report" ]; then
        echo "abi: $arch: the interface of $so differs from $base (abidiff exit $rc):"
        echo "$report" | sed 's/^/  /'
        echo "abi: $arch: if this change is deliberate, run 'make abi-baseline' and commit abi/."
        fail=1
      else
        echo "abi: $arch: same interface as $base"
      fi
      ;;
    *) echo "usage: scripts/abi.sh check|baseline" >&2; exit 2 ;;
  esac
done
exit $fail
