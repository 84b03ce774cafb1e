#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Unpacks Debian's source packages of cJSON and libmd into .deps/: their code
# is compiled into libqvs_utils.so (gateway processes resolve cJSON and MD5
# through it), for the host and for armhf alike.
set -euo pipefail
cd "$(dirname "$0")/.."
deps=.deps
mkdir -p "$deps"

fetch() { # package, file that proves it is unpacked
  local pkg=$1 probe=$2
  if compgen -G "$deps/$pkg-*/$probe" >/dev/null; then return 0; fi
  (cd "$deps" && for _ in 1 2 3; do apt-get source --download-only "$pkg" >/dev/null && break; sleep 3; done \
     && dpkg-source --no-check -x "$(ls -1 ${pkg}_*.dsc | head -n 1)" >/dev/null)
  compgen -G "$deps/$pkg-*/$probe" >/dev/null || { echo "fetch-sources: $pkg not unpacked" >&2; exit 1; }
}

fetch cjson cJSON.c
fetch libmd src/md5.c
for d in "$deps"/cjson-*/; do ln -sfn "$(basename "$d")" "$deps/cjson"; done
for d in "$deps"/libmd-*/; do ln -sfn "$(basename "$d")" "$deps/libmd"; done
