#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The signed feed as an integrator meets it (needs make feed):
#  1. a clean Debian root (mmdebstrap, variant apt, plus libsqlite3-0 for
#     the simulated platform), made once and cached as a tarball in
#     build/feed-test/cache/, unpacked afresh every run;
#  2. the feed inside it, signed-by the feed's test key, as its only apt
#     source: apt-get update and apt-get install libqvs-utils-dev, inside
#     the test sandbox (no network);
#  3. the consumer example built on the host against the root's installed
#     header, pkg-config file and CMake package, then run inside the root,
#     where the loader finds libqvs_utils.so.1 at the path the package put
#     it (the maker's libqv and liblog, part of a firmware image, come from
#     the build's simulated platform under /opt/qvs-platform);
#  4. Release changed after signing: apt-get update must refuse the feed,
#     once with the changed text in InRelease, once with InRelease gone and
#     only Release and its detached signature left.
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD
work=$top/build/feed-test
root=$work/root
cache=$work/cache/bookworm-apt.tar
platform=$top/build/pkg-amd64/lib
key=$top/build/feed-key/qvs-feed.gpg
fail=0
say() { echo "feed-test: $*"; }
[ -f build/feed/InRelease ] && [ -s "$key" ] || { say "no signed feed in build/feed (make feed)"; exit 1; }

t0=$(date +%s)
made=0
if [ ! -s "$cache" ]; then
  made=1
  mkdir -p "$(dirname "$cache")"
  # The host's own Debian sources (binary indexes only) are the mirror.
  sources=$(cat /etc/apt/sources.list.d/*.sources 2>/dev/null | sed -E 's/^Types: .*/Types: deb/' || true)
  [ -n "$sources" ] || sources=$(grep -h '^deb ' /etc/apt/sources.list)
  suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
  mmdebstrap --quiet --variant=apt --include=libsqlite3-0 --mode=root --format=tar \
    "$suite" "$cache.part" - <<<"$sources"
  mv "$cache.part" "$cache"
fi
rm -rf "$root"
mkdir -p "$root"
tar -C "$root" -xf "$cache"
t1=$(date +%s)

# The feed is the root's only source.
rm -f "$root"/etc/apt/sources.list "$root"/etc/apt/sources.list.d/*
mkdir -p "$root/srv" "$root/etc/apt/keyrings"
cp -r build/feed "$root/srv/qvs-feed"
cp "$key" "$root/etc/apt/keyrings/qvs-feed.gpg"
echo "deb [signed-by=/etc/apt/keyrings/qvs-feed.gpg] file:/srv/qvs-feed ./" > "$root/etc/apt/sources.list.d/qvs-feed.list"

# in_root COMMAND...: runs inside the root, inside the test sandbox.
in_root() {
  QVS_SANDBOX_KEEP=$root tests/sandbox/qvs-sandbox bash -c '
    r=$1; shift
    mount --rbind /dev "$r/dev"; mount -t proc proc "$r/proc"
    exec chroot "$r" "$@"' sh "$root" "$@"
}

if in_root sh -c 'apt-get -q update && DEBIAN_FRONTEND=noninteractive apt-get -q -y install libqvs-utils-dev' \
     > "$work/install.log" 2>&1; then
  say "apt installed $(in_root dpkg-query -W -f='${Package} ${Version}, ' libqvs-utils1 libqvs-utils-dev)from the signed feed"
else
  say "apt install from the feed FAILED"; cat "$work/install.log"; fail=1
fi
t2=$(date +%s)

# The consumer, built against what apt installed, both ways.
libdir=$root/usr/lib/x86_64-linux-gnu
rm -rf "$work/consumer-make" "$work/consumer-cmake"
mkdir -p "$work/consumer-make"
if env PKG_CONFIG_SYSROOT_DIR="$root" PKG_CONFIG_LIBDIR="$libdir/pkgconfig" PKG_CONFIG_PATH= \
     make -s -C examples/consumer O="$work/consumer-make" LDFLAGS="-Wl,-rpath-link,$platform" \
     > "$work/consumer-make.log" 2>&1 \
   && cmake -S examples/consumer -B "$work/consumer-cmake" -G Ninja -DCMAKE_PREFIX_PATH="$root/usr" \
     -DCMAKE_EXE_LINKER_FLAGS="-Wl,-rpath-link,$platform" > "$work/consumer-cmake.log" 2>&1 \
   && cmake --build "$work/consumer-cmake" >> "$work/consumer-cmake.log" 2>&1; then
  mkdir -p "$root/opt/qvs-platform" "$root/opt/consumer"
  cp "$platform"/libqv.so "$platform"/liblog.so "$platform"/qvsim-default.model "$root/opt/qvs-platform/"
  cp "$work/consumer-make/consumer" "$root/opt/consumer/consumer-make"
  cp "$work/consumer-cmake/consumer" "$root/opt/consumer/consumer-cmake"
  for how in make cmake; do
    # The loader must take the library from where the package put it
    # (/lib is /usr/lib in a merged-/usr root).
    if in_root env LD_LIBRARY_PATH=/opt/qvs-platform sh -c '
         ldd "$1" | grep -E "libqvs_utils.so.1 => (/usr)?/lib/x86_64-linux-gnu/libqvs_utils.so.1 " \
           || { echo "libqvs_utils.so.1 not from the installed package:"; ldd "$1"; exit 1; }
         "$1"' sh "/opt/consumer/consumer-$how" > "$work/run-$how.log" 2>&1; then
      say "consumer ($how) ran against the installed library:$(head -n 1 "$work/run-$how.log" | sed 's/ (0x.*//')"
    else
      say "consumer ($how) FAILED"; cat "$work/run-$how.log"; fail=1
    fi
  done
else
  say "consumer build against the installed packages FAILED"; cat "$work"/consumer-*.log; fail=1
fi

# Release changed after signing: apt must refuse the feed. The index files
# of the good feed are dropped first, as on a machine that never saw it
# (apt would otherwise keep using them, with a warning, and exit 0).
feed=$root/srv/qvs-feed
expect_refusal() {
  local what=$1
  find "$root/var/lib/apt/lists" -maxdepth 1 -type f -name '*qvs-feed*' -delete
  if in_root apt-get -q update > "$work/refuse.log" 2>&1; then
    say "apt accepted the feed with $what: FAILED"; cat "$work/refuse.log"; fail=1
  elif grep -Eq 'BADSIG|signatures were invalid|is not signed' "$work/refuse.log"; then
    say "apt refused the feed with $what: ok ($(grep -Eo 'BADSIG|is not signed' "$work/refuse.log" | sort -u | paste -sd, -))"
    # (it stays installed: only the feed must no longer offer it)
    if in_root apt-cache policy libqvs-utils-dev | grep -q 'file:/srv/qvs-feed'; then
      say "yet the feed still offers libqvs-utils-dev: FAILED"; fail=1
    fi
  else
    say "apt failed for another reason with $what: FAILED"; cat "$work/refuse.log"; fail=1
  fi
}
sed -i 's/^Label: qvs_utils$/Label: qvs_utils (changed)/' "$feed/Release" "$feed/InRelease"
expect_refusal "a changed Release inside InRelease"
rm "$feed/InRelease"
expect_refusal "a changed Release next to Release.gpg"
t3=$(date +%s)

say "root $((t1 - t0)) s (made$([ $made = 1 ] || echo " before, unpacked")), install $((t2 - t1)) s, consumer and refusal $((t3 - t2)) s"
[ $fail -eq 0 ] && say "ok" || say "FAILED"
exit $fail
