#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs, from Debian's packages, everything the builds, tests and the
# simulated gateway need. Safe to run again: it only installs what is missing.
set -euo pipefail

need_root() { [ "$(id -u)" -eq 0 ] || { echo "install-deps: run as root" >&2; exit 1; }; }

host_pkgs=(
  build-essential clang cmake ninja-build pkg-config git python3
  g++-arm-linux-gnueabihf gcc-arm-linux-gnueabihf qemu-user binutils-arm-linux-gnueabihf
  googletest libgtest-dev libgmock-dev libbenchmark-dev strace
  libsqlite3-dev sqlite3 libmd-dev dpkg-dev
  ipset iptables dnsmasq-base bridge-utils net-tools iproute2 procps psmisc
  faketime openssl util-linux
  # The gateway's userland (busybox applets) for the busybox test preset
  busybox
  # The booted ARM target: its image and its machine
  qemu-system-arm mmdebstrap cpio kmod e2fsprogs
  # IPsec: pki and swanctl, charon with its userspace IPsec plugin
  strongswan-pki strongswan-swanctl strongswan-starter strongswan-charon libcharon-extra-plugins
  # Shipping: ABI baseline, API reference, package checks, manual page checks
  abigail-tools doxygen lintian file gzip man-db groff-base
  # Hardening: coverage and memcheck
  gcovr valgrind
  # Power-cut tests: a FUSE filesystem that keeps only what was synced
  fuse3 libfuse3-dev
  # Release: hardening-check, diffoscope, the signed feed and its install test
  devscripts diffoscope-minimal gnupg apt-utils mmdebstrap
)
# Runtime only: the cross toolchain brings its own libc headers, and a
# -dev:armhf package would need index files the security mirror may lack.
armhf_pkgs=(libc6:armhf libstdc++6:armhf libgcc-s1:armhf libsqlite3-0:armhf)

missing=()
for p in "${host_pkgs[@]}" "${armhf_pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

# The SBOM validator (scripts/sbom-validate.sh) runs on Node with npm; a Node
# that came without npm gets Debian's.
command -v npm >/dev/null || missing+=(nodejs npm)

# cJSON is compiled into our library from Debian's source package, so the
# archive's source lines must be on (same archive, no host added).
src_enabled() { grep -Rqs '^Types:.*deb-src' /etc/apt/sources.list.d/ || grep -qs '^deb-src' /etc/apt/sources.list; }

if [ ${#missing[@]} -eq 0 ] && src_enabled && dpkg --print-foreign-architectures | grep -qx armhf; then
  exit 0
fi
need_root

updated=0
# A mirror caught mid-sync fails one index now and then: retry, then go on
# with what was fetched; the install below says whether that was enough.
apt_update() {
  [ $updated -eq 1 ] && return 0
  for _ in 1 2; do apt-get update -qq && break; sleep 3; done
  updated=1
}

if ! src_enabled; then
  for f in /etc/apt/sources.list.d/*.sources; do
    [ -f "$f" ] && sed -i 's/^Types: deb$/Types: deb deb-src/' "$f"
  done
  [ -f /etc/apt/sources.list ] && sed -i -E 's/^deb (.*)$/deb \1\ndeb-src \1/' /etc/apt/sources.list
  updated=0
fi

if ! dpkg --print-foreign-architectures | grep -qx armhf; then
  dpkg --add-architecture armhf
  updated=0
fi

if [ ${#missing[@]} -gt 0 ]; then
  apt_update
  for _ in 1 2; do DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" && break; updated=0; apt_update; done
  for p in "${missing[@]}"; do dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || { echo "install-deps: $p missing" >&2; exit 1; }; done
fi
