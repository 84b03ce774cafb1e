#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Every source file of ours carries "SPDX-License-Identifier: MIT" in its
# first lines (scripts/spdx-files.sh says which files; scripts/spdx-add.sh
# adds the line where it is missing). Exit 1 and the list otherwise.
set -euo pipefail
cd "$(dirname "$0")/.."
missing=()
count=0
while read -r _ f; do
  count=$((count + 1))
  head -n 5 "$f" | grep -q 'SPDX-License-Identifier: MIT' || missing+=("$f")
done < <(bash scripts/spdx-files.sh)
if [ ${#missing[@]} -gt 0 ]; then
  echo "spdx-check: ${#missing[@]} of $count files lack 'SPDX-License-Identifier: MIT' (run scripts/spdx-add.sh):"
  printf '  %s\n' "${missing[@]}"
  exit 1
fi
echo "spdx-check: all $count source files carry SPDX-License-Identifier: MIT"
