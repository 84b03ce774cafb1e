#!/usr/bin/env bash
# Runs every benchmark of a build (default build/host-release) inside the
# throwaway sandbox, then prints each statistics time next to the time of
# merely reading the same "ipset list" output, and their ratio.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/host-release}
shopt -s nullglob
benches=("$build"/bin/bench_*)
if [ ${#benches[@]} -eq 0 ]; then
  echo "bench.sh: no benchmarks under $build/bin (configure with the host-release preset)" >&2
  exit 1
fi
for b in "${benches[@]}"; do
  name=${b##*/}
  echo "=== $name"
  # The sandbox's /tmp is its own: the JSON results stay inside with it.
  tests/sandbox/qvs-sandbox env LD_LIBRARY_PATH="$PWD/$build/lib" bash -c '
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
