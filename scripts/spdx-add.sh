#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Adds "SPDX-License-Identifier: MIT" as the first line (after a #! line)
# of every source file that lacks it (scripts/spdx-files.sh), in that
# file's comment style. Safe to run again: files that have it are left.
set -euo pipefail
cd "$(dirname "$0")/.."
added=0
while read -r style f; do
  head -n 5 "$f" | grep -q 'SPDX-License-Identifier: MIT' && continue
  case "$style" in
    c) line='/* SPDX-License-Identifier: MIT */' ;;
    cpp) line='// SPDX-License-Identifier: MIT' ;;
    hash) line='# SPDX-License-Identifier: MIT' ;;
  esac
  if head -n 1 "$f" | grep -q '^#!'; then
    sed -i "1a\\$line" "$f"
  else
    sed -i "1i\\$line" "$f"
  fi
  added=$((added + 1))
done < <(bash scripts/spdx-files.sh)
echo "spdx-add: added the line to $added files"
