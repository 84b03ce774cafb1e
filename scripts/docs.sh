#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# API reference with Doxygen into build/docs/html; any warning (an
# undocumented function, table, type or macro of the header) fails.
set -euo pipefail
cd "$(dirname "$0")/.."
out=build/docs
rm -rf "$out"
mkdir -p "$out"
version=$(sed -n 's/^project(qvs_utils VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
if ! QVS_VERSION=$version QVS_DOCS_OUT=$out doxygen docs/Doxyfile > "$out/doxygen.log" 2>&1; then
  grep -v '^$' "$out/doxygen.log" || true
  echo "docs: Doxygen warnings (every exported entity needs a doc comment)"
  exit 1
fi
echo "docs: $out/html/index.html"
