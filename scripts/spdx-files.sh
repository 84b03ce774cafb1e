#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Lists the project's own source files that must carry an
# "SPDX-License-Identifier: MIT" line, one per line as "<style> <path>",
# where style is the comment that holds it: c (/* */), cpp (//) or hash (#).
# Tracked files and new ones not ignored; .deps (Debian's cJSON and libmd)
# is not ours. Used by spdx-check.sh and spdx-add.sh.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files --cached --others --exclude-standard | sort -u | while IFS= read -r f; do
  [ -f "$f" ] || continue
  case "$f" in
    .deps/*) continue ;;
    *.c | *.h) echo "c $f" ;;
    *.cpp | *.hpp | *.cc | *.mjs) echo "cpp $f" ;;
    *.sh | *.py | *.cmake | *.cmake.in | */CMakeLists.txt | CMakeLists.txt | Makefile | */Makefile \
      | *.bash-completion | .ci/run | tests/sandbox/qvs-sandbox) echo "hash $f" ;;
  esac
done
