#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs every libFuzzer harness of a fuzz build for the given number of
# seconds, inside the sandbox (the list harness writes /userconfig), on a
# throwaway copy of its seed corpus. Prints each harness's executions and
# fails when one crashed. FUZZ_HARNESSES picks some (default: all five).
set -euo pipefail
build=${1:?build directory}
seconds=${2:-60}
here=$(cd "$(dirname "$0")/.." && pwd -P)
build=$(cd "$build" && pwd -P)
sandbox=$here/tests/sandbox/qvs-sandbox
# Longest input per harness (libFuzzer's default is 4096): the codecs work
# in groups of 3 and 4 characters and in 16-byte blocks, so codec inputs past
# 1 KiB reach no new code and only slow every execution down.
max_len() {
  case $1 in
    codec) echo 1024 ;;
    *) echo 4096 ;;
  esac
}
status=0
for h in ${FUZZ_HARNESSES:-codec strings time parse lists}; do
  exe=$build/bin/fuzz_$h
  echo "== fuzz_$h: $seconds s"
  # -close_fd_mask=1: the harnessed functions' own progress lines on stdout
  # are not wanted; libFuzzer reports on stderr.
  if ! "$sandbox" /bin/bash -c '
      work=$(mktemp -d)
      cp -r "$2"/. "$work"/
      cd /tmp
      rc=0
      "$1" -max_total_time="$3" -max_len="$4" -close_fd_mask=1 -print_final_stats=1 -artifact_prefix=/tmp/ "$work" \
        >/tmp/fuzz.log 2>&1 || rc=$?
      grep -E "^(stat::number_of_executed_units|stat::average_exec_per_sec|stat::peak_rss_mb)" /tmp/fuzz.log || true
      if [ "$rc" -ne 0 ]; then tail -n 60 /tmp/fuzz.log; fi
      exit "$rc"
    ' sh "$exe" "$here/fuzz/corpus/$h" "$seconds" "$(max_len "$h")"; then
    status=1
  fi
done
exit $status
