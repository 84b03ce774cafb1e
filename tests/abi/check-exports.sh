#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check-exports.sh <library> <nm tool> [symbol-list folder]
# The library's dynamic symbol table (defined symbols) must equal the union
# of the per-family lists under abi/symbols, exactly.
set -euo pipefail
lib=${1:?library path}
nm_tool=${2:?nm tool}
lists=${3:-$(cd "$(dirname "$0")/../../abi/symbols" && pwd)}
expected=$(cat "$lists"/*.txt | grep -E '^[A-Za-z_][A-Za-z_0-9]*$' | LC_ALL=C sort -u)
actual=$("$nm_tool" -D --defined-only "$lib" | awk 'NF >= 3 {print $3}' | sed 's/@.*//' | LC_ALL=C sort -u)
if [ -z "$actual" ]; then
  echo "check-exports: no defined dynamic symbols read from $lib"
  exit 1
fi
if [ "$actual" != "$expected" ]; then
  echo "check-exports: $lib differs from $lists (< exported only, > listed only):"
  diff <(echo "$actual") <(echo "$expected") || true
  exit 1
fi
echo "check-exports: $(echo "$actual" | wc -l) exported symbols, as listed"
