#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# sbom-validate.sh FILE...: validates CycloneDX JSON SBOMs with the CycloneDX
# project's own library (tools/sbom-validator). Its npm packages, pinned by
# the committed package-lock.json, are installed once into
# build/sbom-validator (npm ci) and again only when the lock file changes.
set -euo pipefail
cd "$(dirname "$0")/.."
src=tools/sbom-validator
dir=build/sbom-validator
stamp=$dir/.installed-lock.sha256
want=$(sha256sum "$src/package.json" "$src/package-lock.json" | sha256sum | cut -d' ' -f1)
if [ ! -d "$dir/node_modules" ] || [ "$(cat "$stamp" 2>/dev/null)" != "$want" ]; then
  rm -rf "$dir"
  mkdir -p "$dir"
  cp "$src/package.json" "$src/package-lock.json" "$dir/"
  (cd "$dir" && npm ci --ignore-scripts --no-audit --no-fund --loglevel=error >/dev/null)
  echo "$want" > "$stamp"
fi
cp "$src/validate.mjs" "$dir/"
files=()
for f in "$@"; do files+=("$(realpath "$f")"); done
node "$dir/validate.mjs" "${files[@]}"
