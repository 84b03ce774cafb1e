#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The manual pages as the development package installs them: every exported
# function declared in the headers has its section 3 page (a page of its own
# or a ".so" link to its group's page), and every page, qvsctl(1) and
# qvstore(1) included, renders with `man --warnings` without a single
# warning and has a NAME line lexgrog can read (as lintian and mandb do).
# Needs the amd64 development package (make package) and the host build's
# section 1 pages.
set -euo pipefail
cd "$(dirname "$0")/.."
work=build/man-check
rm -rf "$work"
mkdir -p "$work/root"
deb=$(ls build/packages/libqvs-utils-dev_*_amd64.deb 2>/dev/null | head -n 1)
[ -n "$deb" ] || { echo "man-check: no development package (make package)"; exit 1; }
dpkg -x "$deb" "$work/root"
man_root=$work/root/usr/share/man
man1=build/host/man/man1
[ -d "$man1" ] || { echo "man-check: no $man1 (cmake --build --preset host)"; exit 1; }
mkdir -p "$man_root/man1"
cp "$man1"/*.1.gz "$man_root/man1/"
fail=0

# Every exported function: its page is there.
functions=$(python3 -c 'import sys; sys.path.insert(0, "docs"); import header_doc
for e in header_doc.all_entries("include"): print("\n".join(e.names))')
for f in $functions; do
  [ -f "$man_root/man3/$f.3.gz" ] || { echo "man-check: no page for $f"; fail=1; }
done
[ -f "$man_root/man3/qvs_utils.3.gz" ] || { echo "man-check: no page qvs_utils(3)"; fail=1; }
for f in qvsctl qvstore; do
  [ -f "$man_root/man1/$f.1.gz" ] || { echo "man-check: no page $f(1)"; fail=1; }
done

# Every page renders without a warning (from the manual's root, where the
# ".so" links resolve) and names itself; one page per process, on every
# core. Anything printed is a finding.
check_page() {
  local page=$1 err
  err=$(MANWIDTH=80 LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null) || err="man failed: $err"
  [ -z "$err" ] || echo "man-check: $page: $err"
  lexgrog "$page" > /dev/null || echo "man-check: $page: lexgrog reads no NAME line"
}
export -f check_page
cd "$man_root"
pages=$(ls man1/*.gz man3/*.gz | wc -l)
findings=$(ls man1/*.gz man3/*.gz | xargs -P "$(nproc)" -n 1 bash -c 'check_page "$0"')
[ -z "$findings" ] || { echo "$findings"; fail=1; }
echo "man-check: $(echo "$functions" | wc -w) functions, $pages pages and links: $([ $fail = 0 ] && echo ok || echo FAILED)"
exit $fail
