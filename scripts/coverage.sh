#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs the host suites of a coverage build (GCC --coverage) and prints line
# and branch coverage of src/ per file with gcovr. The sandbox mounts the
# tree read-only, so the counters are written under build/coverage-data
# (kept writable inside the sandbox, GCOV_PREFIX) and copied back next to
# the objects afterwards.
set -euo pipefail
build=${1:?build directory}
here=$(cd "$(dirname "$0")/.." && pwd -P)
build=$(cd "$build" && pwd -P)
data=$here/build/coverage-data
rm -rf "$data" && mkdir -p "$data"
find "$build" -name '*.gcda' -delete
# The object paths below the build directory are kept under the prefix.
strip=$(echo "$build" | tr -cd '/' | wc -c)
export GCOV_PREFIX=$data GCOV_PREFIX_STRIP=$strip QVS_SANDBOX_KEEP=$data
ctest --preset coverage || echo "coverage: some tests failed (coverage is still reported)" >&2
cp -a "$data"/. "$build"/
cd "$here"
opts=(--root "$here" --filter "$here/src/" --exclude-unreachable-branches --exclude-throw-branches "$build")
echo "== lines"
gcovr "${opts[@]}" --print-summary
echo "== branches"
gcovr "${opts[@]}" --branches --print-summary
