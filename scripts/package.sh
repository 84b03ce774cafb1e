#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Debian packages of the shipped library for amd64 and armhf (runtime and
# development package each) into build/packages/, then lintian on all four:
# any lintian error fails, warnings are shown. The -dev packages carry both
# packages' SBOMs (scripts/sbom.py, run by cpack).
set -euo pipefail
cd "$(dirname "$0")/.."
out=build/packages
# Every time stamp in the packages (and the SBOMs) is the last commit's, so
# a build of the same commit gives the same bytes (make reproducible).
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
# CPack gives the packages' folders and ar members the modes they have on
# disk: the same umask for everyone.
umask 022
rm -rf "$out"
mkdir -p "$out"
for preset in pkg-amd64 pkg-armhf; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  (cd "build/$preset" && cpack -G DEB -B "$PWD/../packages/$preset" >/dev/null)
  mv "$out/$preset"/*.deb "$out/"
  rm -rf "${out:?}/$preset"
done
ls -1 "$out"/*.deb
# lintian as root says so on stderr every time; that line is not a finding.
report=$(lintian --no-cfg --fail-on none "$out"/*.deb 2>&1 | grep -v 'running with root privileges' || true)
[ -n "$report" ] && echo "$report"
if grep -q '^E:' <<<"$report"; then
  echo "package: lintian errors"
  exit 1
fi
echo "package: $(ls "$out"/*.deb | wc -l) packages, no lintian errors"
