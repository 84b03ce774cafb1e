#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Inside the sandbox (scripts/bench.sh): binds the disk directory $1 over
# /userconfig, runs bench_listsync ($2) for its times per call, then each
# phase again under strace and prints the data syncs of files and of
# directories per call (descriptors opened O_DIRECTORY are directories),
# counted from the phase's marker (a getcwd call) on.
set -euo pipefail
disk=$1 prog=$2
mount --bind "$disk" /userconfig
"$prog"
echo
printf "%-28s %12s %16s\n" "call" "file syncs" "directory syncs"
for phase in approute_add_route_ip approute_del_route_ip approute_add_route_iplist qvvpn_add_route_ip qvvpn_del_route_ip; do
  calls=$(strace -f -qq -e trace=fsync,fdatasync,getcwd,openat -o /tmp/syncs "$prog" --phase "$phase")
  awk -v calls="$calls" -v phase="$phase" '
    /getcwd\(/ { on = 1; next }
    !on { next }
    /openat\(.*O_DIRECTORY.*= [0-9]+$/ { dirfd[$NF] = 1; next }
    /openat\(.*= [0-9]+$/ { delete dirfd[$NF]; next }
    /f(data)?sync\(/ {
      fd = $0; sub(/.*sync\(/, "", fd); sub(/\).*/, "", fd)
      if (fd in dirfd) d++; else f++
    }
    END { printf "%-28s %12.2f %16.2f\n", phase, f / calls, d / calls }' /tmp/syncs
done
