#!/usr/bin/env bash
# Size of the shipped armhf object: stripped file size, and text/data/bss of
# our own code apart from the bundled cJSON and MD5.
set -euo pipefail
cd "$(dirname "$0")/.."
b=${1:-build/armhf}
so=$b/lib/libqvs_utils.so
tmp=$(mktemp)
arm-linux-gnueabihf-strip -o "$tmp" "$so"
echo "stripped libqvs_utils.so (armhf): $(stat -c %s "$tmp") bytes"
arm-linux-gnueabihf-size "$tmp" | sed 's/^/  /'
rm -f "$tmp"
sum() { arm-linux-gnueabihf-size "$@" | awk 'NR>1 {t+=$1; d+=$2; b+=$3} END {printf "text %d, data %d, bss %d\n", t, d, b}'; }
echo "our code:      $(sum $(find "$b/src" -name '*.o'))"
echo "cJSON and MD5: $(sum $(find "$b/deps" -name '*.o'))"
