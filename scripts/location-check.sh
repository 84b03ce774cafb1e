#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# location-check.sh <build-dir>: the checks do not depend on where the
# checkout lives. The tree (sources, and the build's programs and libraries)
# is copied under /tmp and under /var/tmp, the directories the sandbox gives
# the gateway's volatile files, and the injection and fault tables, whose
# checks list and read what lies there, run from each copy: one sandbox per
# test case, as ctest runs them, with the copy's own sandbox and libraries.
# The two copies run side by side (two cores, as ctest's two jobs).
set -euo pipefail
build=${1:?usage: location-check.sh <build-dir>}
here=$(cd "$(dirname "$0")/.." && pwd -P)
cd "$here"
programs=(test_injection test_faults)
limit=600  # seconds per test case, as the suites' own limit; then KILL (the
           # test is PID 1 of its namespace and takes no TERM from outside)

# Runs the tables from a copy under $1; prints what failed; status 1 then.
check_from() {
  local base=$1 start=$SECONDS copy prog name names cases=0 status=0 out
  copy=$(mktemp -d "$base/qvs-location.XXXXXX")
  # shellcheck disable=SC2064
  trap "rm -rf '$copy'" EXIT
  tar -C "$here" --exclude=./build --exclude=./.git --exclude=./.deps -cf - . | tar -C "$copy" -xf -
  mkdir -p "$copy/$build"
  cp -a "$build/bin" "$build/lib" "$copy/$build/"
  local sandbox=("$copy/tests/sandbox/qvs-sandbox" env LD_LIBRARY_PATH="$copy/$build/lib")
  for prog in "${programs[@]}"; do
    # "Suite." lines, then "  Case  # GetParam() = ..." lines.
    names=$("${sandbox[@]}" "$copy/$build/bin/$prog" --gtest_list_tests | awk '/^[^ ]/ {s=$1; next} {print s $1}')
    for name in $names; do
      cases=$((cases + 1))
      if ! out=$(cd "$copy/$build" && timeout -k 10 "$limit" "${sandbox[@]}" "$copy/$build/bin/$prog" --gtest_filter="$name" 2>&1); then
        echo "$out"
        echo "location-check: FAILED from $copy: $prog $name"
        status=1
      fi
    done
  done
  echo "location-check: $cases test cases of ${programs[*]} from a copy under $base: $((SECONDS - start)) s"
  return $status
}

logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT
check_from /tmp > "$logs/tmp" 2>&1 & tmp_job=$!
check_from /var/tmp > "$logs/var" 2>&1 & var_job=$!
status=0
wait $tmp_job || status=1
wait $var_job || status=1
cat "$logs/tmp" "$logs/var"
exit $status
