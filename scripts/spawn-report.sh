#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Process starts per call: for every row of bench/spawns/*.txt, runs the
# qvsctl call under strace inside one throwaway sandbox and counts the
# programs it started (successful execve calls, qvsctl itself not counted)
# and the command lines it handed to the platform's runners (the simulated
# store's journal, "cmd" lines). Prints both next to the row's expected
# numbers and fails loudly on any difference. Row format: bench/README.md.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/host}
command -v strace >/dev/null || { echo "spawn-report: strace missing (scripts/install-deps.sh)" >&2; exit 1; }
exec tests/sandbox/qvs-sandbox env PATH="$PWD/$build/bin:$PATH" LD_LIBRARY_PATH="$PWD/$build/lib" bash -c '
set -uo pipefail
mkdir -p /userconfig/config
trace=/tmp/spawn-trace
bad=0; rows=0
printf "%-62s %9s %9s  %s\n" "call (qvsctl ...)" "runner" "programs" "programs started"
for f in bench/spawns/*.txt; do
  echo "--- ${f##*/}"
  while IFS= read -r line || [ -n "$line" ]; do
    case "$line" in ""|"#"*) continue ;; esac
    if [ "${line#setup:}" != "$line" ]; then
      bash -c "${line#setup:}" >/dev/null 2>&1 || true
      continue
    fi
    IFS="|" read -r expect call why <<<"$line"
    read -r want_cmds want_progs <<<"$expect"
    call=$(echo $call)
    qvstore journal clear >/dev/null
    # shellcheck disable=SC2086
    rm -f $trace.*
    # One trace file per process (-ff), so that no call is split.
    eval "strace -ff -qq -e trace=execve -e signal=none -o $trace qvsctl $call" >/dev/null 2>&1
    started=$(cat $trace.* | grep -E "^execve\(.*\) = 0$" | grep -v "qvsctl\"," || true)
    progs=$(echo "$started" | sed -nE "s/^execve\(\"([^\"]*)\".*/\1/p" | xargs -r -n1 basename | sort | tr "\n" " ")
    nprogs=$(echo "$started" | grep -c . || true)
    ncmds=$(qvstore journal | awk -F"\t" "\$1 == \"cmd\"" | wc -l)
    rows=$((rows + 1))
    mark=""
    if [ "$ncmds" != "$want_cmds" ] || [ "$nprogs" != "$want_progs" ]; then
      mark="  <-- DIFFERS: expected $want_cmds runner line(s), $want_progs program(s)"; bad=$((bad + 1))
    fi
    printf "%-62s %4s/%-4s %4s/%-4s  %s%s\n" "$call" "$ncmds" "$want_cmds" "$nprogs" "$want_progs" "${progs:-(none)}" "$mark"
  done < "$f"
done
echo "(runner = command lines handed to qv_do_cmd/qvs_system/libqv_dosystem, measured/expected;"
echo " programs = processes started, measured/expected)"
if [ $bad -ne 0 ]; then
  echo "SPAWN REPORT: $bad of $rows calls start other processes than their algorithm lists" >&2
  exit 1
fi
echo "spawn report: all $rows calls start exactly the processes their algorithm lists"
'
