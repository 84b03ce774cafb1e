#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# `make bench`: every benchmark of a build (default build/host-release),
# inside the throwaway sandbox, at nice 10 (the machine is shared):
# 1. Base64 against OpenSSL and memcpy (bench_base64), host; fails below
#    2x OpenSSL;
# 2. the same Base64 bench built for armhf and run under qemu-arm against
#    an armhf OpenSSL (emulated: reported, not judged);
# 3. the Google Benchmark programs (bench_vpnroute: statistics time next to
#    the time of merely reading the same "ipset list" output);
# 4. the list writes on a disk filesystem (bench_listsync, a directory of
#    the build tree on the project's disk bound over /userconfig): time per
#    call and, from strace, data syncs (fsync, fdatasync) per call;
# 5. the spawn report (scripts/spawn-report.sh): process starts per call.
# Exits non-zero when a target is missed; every part still runs.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/host-release}
status=0
shopt -s nullglob

echo "=== bench_base64 (host, $build)"
if [ -x "$build/bin/bench_base64" ]; then
  nice -n 10 tests/sandbox/qvs-sandbox env LD_LIBRARY_PATH="$PWD/$build/lib" "$PWD/$build/bin/bench_base64" || status=1
else
  echo "bench_base64 not built (no OpenSSL libcrypto found for $build)"; status=1
fi

echo
echo "=== bench_base64 (armhf, build/armhf, under qemu-arm: emulated timings)"
ossl=$(bash scripts/armhf-openssl.sh || true)
if [ -n "$ossl" ]; then
  echo "armhf OpenSSL: Debian's libssl-dev:armhf unpacked in ${ossl#$PWD/} (see scripts/armhf-openssl.sh)"
  cmake --preset armhf -DQVS_BUILD_BENCHMARKS=ON -DQVS_BENCH_OPENSSL_ROOT="$ossl" >/dev/null
  nice -n 10 cmake --build --preset armhf --target bench_base64 >/dev/null
  QVS_BENCH_ROUNDS=${QVS_BENCH_ROUNDS_ARMHF:-7} nice -n 10 tests/sandbox/qvs-sandbox env \
    LD_LIBRARY_PATH="$PWD/build/armhf/lib:$ossl/usr/lib/arm-linux-gnueabihf" \
    qemu-arm "$PWD/build/armhf/bin/bench_base64" --no-target | sed 's/^Base64 on/Base64 (emulated armhf) on/' || status=1
else
  echo "no armhf OpenSSL could be installed or unpacked: armhf figures not printed"
fi

benches=()
for b in "$build"/bin/bench_*; do
  case "${b##*/}" in bench_base64|bench_listsync) ;; *) benches+=("$b") ;; esac
done
if [ ${#benches[@]} -eq 0 ]; then
  echo "bench.sh: no benchmarks under $build/bin (configure with the host-release preset)" >&2
  exit 1
fi
for b in "${benches[@]}"; do
  name=${b##*/}
  echo
  echo "=== $name"
  # The sandbox's /tmp is its own: the JSON results stay inside with it.
  nice -n 10 tests/sandbox/qvs-sandbox env LD_LIBRARY_PATH="$PWD/$build/lib" bash -c '
    set -e
    "$1" --benchmark_out=/tmp/results.json --benchmark_out_format=json
    if [ "$2" = bench_vpnroute ]; then
      echo
      echo "qvvpn_get_statistics, 2048 rows against 65536 members (mean real time per call):"
      python3 - /tmp/results.json <<"PY"
import json, sys
runs = {b["name"].split("/")[0]: b for b in json.load(open(sys.argv[1]))["benchmarks"]}
for kind in ("Ip", "Domain"):
    read = runs["BM_ReadIpsetOutput_" + kind]["real_time"]
    stat = runs["BM_GetStatistics_" + kind]["real_time"]
    unit = runs["BM_GetStatistics_" + kind]["time_unit"]
    verdict = "within" if stat <= 3 * read else "OVER"
    print(f"  {kind:6}  statistics {stat:8.2f} {unit}   reading the output {read:8.2f} {unit}"
          f"   ratio {stat / read:4.2f} ({verdict} the 3x target)")
PY
    fi' sh "$PWD/$b" "$name"
done

echo
echo "=== list writes on a disk filesystem (bench_listsync; syncs per call counted by strace)"
if [ -x "$build/bin/bench_listsync" ]; then
  disk="$PWD/$build/listsync-disk"
  rm -rf "$disk" && mkdir -p "$disk"
  echo "/userconfig: $(df -T "$disk" | awk 'NR == 2 {print $2 " on " $1}')"
  QVS_SANDBOX_KEEP="$disk" nice -n 10 tests/sandbox/qvs-sandbox env LD_LIBRARY_PATH="$PWD/$build/lib" \
    bash scripts/listsync-bench.sh "$disk" "$PWD/$build/bin/bench_listsync" || status=1
  rm -rf "$disk"
else
  echo "bench_listsync not built (configure with the host-release preset)"; status=1
fi

echo
echo "=== process starts per call (scripts/spawn-report.sh, rows in bench/spawns/)"
bash scripts/spawn-report.sh "$build" || status=1
exit $status
