#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Size and stack of the shipped armhf object (build/armhf, MinSizeRel):
# - the stripped libqvs_utils.so against its 160 KiB budget;
# - text/data/bss of each family (src/<family>), of cJSON and of MD5;
# - the worst-case stack of every exported function (exported names taken
#   from abi/symbols/*.txt, call graphs and frame sizes from GCC's .ci files
#   of this build, C library calls at figures measured on armhf by
#   scripts/libc-stack-probe.c under qemu-arm) against the 16 KiB budget.
# Exits 1 when a budget is not met.
set -euo pipefail
cd "$(dirname "$0")/.."
b=${1:-build/armhf}
so=$b/lib/libqvs_utils.so
status=0
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

arm-linux-gnueabihf-strip -o "$tmp/lib.so" "$so"
bytes=$(stat -c %s "$tmp/lib.so")
budget=$((160 * 1024))
verdict="within"; [ "$bytes" -le "$budget" ] || { verdict="OVER"; status=1; }
echo "stripped libqvs_utils.so (armhf): $bytes bytes ($((bytes / 1024)) KiB, $verdict the 160 KiB budget)"
arm-linux-gnueabihf-size "$tmp/lib.so" | sed 's/^/  /'
echo

sum() { arm-linux-gnueabihf-size "$@" | awk 'NR>1 {t+=$1; d+=$2; b+=$3} END {printf "%8d %8d %8d\n", t, d, b}'; }
echo "Per family (object files, before linking):"
printf "  %-14s %8s %8s %8s\n" family text data bss
for d in src/*/; do
  fam=$(basename "$d")
  objs=$(find "$b/src/CMakeFiles/qvs_utils.dir/$fam" -name '*.o' 2>/dev/null)
  [ -n "$objs" ] || continue
  # shellcheck disable=SC2086
  printf "  %-14s %s\n" "$fam" "$(sum $objs)"
done
printf "  %-14s %s\n" cJSON "$(sum $(find "$b/deps" -name 'cJSON.c.o'))"
printf "  %-14s %s\n" MD5 "$(sum $(find "$b/deps" -name 'md5.c.o'))"
echo

# The C library's stack figures, measured on armhf in the sandbox.
arm-linux-gnueabihf-gcc -O2 -pthread -o "$b/bin/libc-stack-probe" scripts/libc-stack-probe.c
tests/sandbox/qvs-sandbox qemu-arm "$PWD/$b/bin/libc-stack-probe" > "$b/libc-stack.txt" 2>/dev/null
# The platform library's functions (the simulated stand-ins export the
# same names as libqv and liblog): not counted.
nm -D --defined-only "$b/lib/libqv.so" "$b/lib/liblog.so" | awk 'NF==3 && $2 ~ /[TW]/ {print $3}' \
  | sort -u > "$b/platform-functions.txt"
python3 scripts/stack-report.py "$b" abi/symbols --libc "$b/libc-stack.txt" \
  --platform "$b/platform-functions.txt" || status=1
exit $status
