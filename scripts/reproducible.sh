#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# make reproducible: two builds of the last commit from two clones at
# different paths, each with its own umask, time zone, locale and build
# time (the second runs under faketime, a year and more ahead), then a
# byte-for-byte comparison of libqvs_utils.so.1.0.0 (amd64 and armhf, as
# built, with debug information) and of the four .deb files. Anything that
# differs fails, with diffoscope's report of the difference.
# Both builds take every time stamp from the last commit (SOURCE_DATE_EPOCH,
# scripts/package.sh) and map their own paths away (-ffile-prefix-map,
# CMakePresets.json). Uncommitted changes are not part of either build.
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD
work=$top/build/reproducible
rev=$(git rev-parse HEAD)
[ -z "$(git status --porcelain --untracked-files=no)" ] || echo "reproducible: uncommitted changes are left out: building $rev"
rm -rf "$work"
mkdir -p "$work"

# clone_and_build <folder> <umask> <TZ> <locale> [time wrapper...]
clone_and_build() {
  local dir=$1 mask=$2 tz=$3 locale=$4
  shift 4
  git clone --quiet --no-hardlinks "$top" "$dir"
  git -C "$dir" checkout --quiet "$rev"
  # The same Debian sources of cJSON and libmd (fetch-sources.sh would
  # download them again).
  cp -a "$top/.deps" "$dir/.deps"
  (
    cd "$dir"
    umask "$mask"
    env -u SOURCE_DATE_EPOCH TZ="$tz" LC_ALL="$locale" LANG="$locale" "$@" bash scripts/package.sh
  ) > "$dir.log" 2>&1 || { echo "reproducible: the build in $dir failed:"; tail -n 40 "$dir.log"; exit 1; }
}

one=$work/one/qvs_utils
two=$work/second-clone/at/another/path/libqvs_utils-src
mkdir -p "$(dirname "$one")" "$(dirname "$two")"
echo "reproducible: build 1 in ${one#$top/} (umask 022, TZ UTC, C.UTF-8)"
clone_and_build "$one" 022 UTC C.UTF-8
echo "reproducible: build 2 in ${two#$top/} (umask 077, TZ Pacific/Kiritimati, POSIX, clock +400 days)"
clone_and_build "$two" 077 Pacific/Kiritimati POSIX faketime -f +400d

status=0
compare() { # label, file in build 1, file in build 2
  local label=$1 a=$2 b=$3
  if cmp -s "$a" "$b"; then
    echo "  identical  $label  $(sha256sum < "$a" | cut -c1-16)"
  else
    echo "  DIFFERENT  $label"
    diffoscope --text "$work/diffoscope-${label//\//_}.txt" "$a" "$b" > /dev/null 2>&1 || true
    cat "$work/diffoscope-${label//\//_}.txt"
    status=1
  fi
}
echo "reproducible: comparing"
for arch in amd64 armhf; do
  compare "pkg-$arch/libqvs_utils.so.1.0.0" "$one/build/pkg-$arch/lib/libqvs_utils.so.1.0.0" \
    "$two/build/pkg-$arch/lib/libqvs_utils.so.1.0.0"
done
for deb in "$one"/build/packages/*.deb; do
  compare "$(basename "$deb")" "$deb" "$two/build/packages/$(basename "$deb")"
done
[ "$(ls "$two"/build/packages/*.deb | wc -l)" = "$(ls "$one"/build/packages/*.deb | wc -l)" ] || { echo "  the builds made different package sets"; status=1; }
echo "reproducible: $([ $status = 0 ] && echo "bit-identical ($rev)" || echo FAILED)"
exit $status
