#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Prints the root of an armhf OpenSSL (libcrypto and headers) for the Base64
# bench of the armhf build, or nothing. Installing libssl-dev:armhf next to
# the host's libssl3 fails whenever the mirror's armhf and amd64 versions
# differ (multiarch packages must match), so Debian's two packages are
# unpacked with dpkg -x into .deps/armhf-openssl instead: nothing of the
# host is changed.
set -uo pipefail
cd "$(dirname "$0")/.."
root=$PWD/.deps/armhf-openssl
if [ -e "$root/usr/lib/arm-linux-gnueabihf/libcrypto.so.3" ]; then echo "$root"; exit 0; fi
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
chmod 755 "$tmp"
ver=$(apt-cache policy libssl-dev:armhf 2>/dev/null | awk '/Candidate:/ {print $2}')
if [ -z "$ver" ] || [ "$ver" = "(none)" ]; then
  echo "armhf-openssl: no libssl-dev:armhf in the package lists" >&2; exit 0
fi
(cd "$tmp" && apt-get download -q "libssl3:armhf=$ver" "libssl-dev:armhf=$ver") >/dev/null 2>&1 || {
  echo "armhf-openssl: libssl-dev:armhf $ver could not be downloaded" >&2; exit 0; }
mkdir -p "$root"
for d in "$tmp"/*.deb; do dpkg -x "$d" "$root"; done
[ -e "$root/usr/lib/arm-linux-gnueabihf/libcrypto.so.3" ] && echo "$root"
