#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check-hardening.sh ARCH [--tree] LABEL=OBJECT...: the hardening of objects,
# one table row each, from Debian's hardening-check and from readelf:
#   RELRO     a GNU_RELRO segment (hardening-check and readelf)
#   BIND_NOW  the BIND_NOW / FLAGS NOW dynamic entry (both)
#   canary    __stack_chk_fail imported (hardening-check)
#   FORTIFY   *_chk functions imported (hardening-check; shown as
#             fortified/plain imports of functions that have a _chk form:
#             the plain ones are calls the compiler proved safe)
#   NX stack  GNU_STACK without the execute flag (readelf)
#   TEXTREL   no TEXTREL dynamic entry (readelf)
#   RPATH     no RPATH/RUNPATH (readelf); not judged for the objects after
#             --tree (test builds, whose RUNPATH finds the simulated platform)
#   flags     objects with debug information: every compilation unit's
#             recorded options include -fstack-protector-strong and
#             -fstack-clash-protection, and -fcf-protection on x86-64.
# The x86 CET property note (hardening-check's "Control flow integrity") is
# not judged: the linker sets it only if every input has it, and Debian's
# crti.o, crtn.o and libc_nonshared.a (glibc built without CET) do not, so
# no bookworm-built object carries it; -fcf-protection is checked per unit
# instead. hardening-check's stack clash line needs an x86 frame over 4 KiB
# to see a probe, so it too is checked per unit.
# Exits 1 if any property is missing on any object.
set -euo pipefail
arch=$1
shift
readelf=readelf
[ "$arch" = armhf ] && readelf=arm-linux-gnueabihf-readelf
fail=0
tree=0

hc_opts=(--nopie --nocfprotection)

# yes/NO for one property (printed from a subshell: failures are counted
# separately below).
mark() { if [ "$1" = 1 ]; then printf yes; else printf NO; fi; }

printf "%-22s %-6s %-8s %-6s %-13s %-8s %-7s %-6s %s\n" \
  "$arch object" RELRO BIND_NOW canary FORTIFY "NX stack" TEXTREL RPATH "flags (every unit)"
for item in "$@"; do
  [ "$item" = --tree ] && { tree=1; continue; }
  label=${item%%=*} so=${item#*=}
  hc=$(hardening-check --verbose "${hc_opts[@]}" "$so" 2>&1 || true)
  dyn=$($readelf -dW "$so")
  seg=$($readelf -lW "$so")
  has() { grep -Eq "$2" <<<"$1" && echo 1 || echo 0; }
  relro=$(( $(has "$hc" 'Read-only relocations: yes') & $(has "$seg" '^ *GNU_RELRO ') ))
  now=$(( $(has "$hc" 'Immediate binding: yes') & $(has "$dyn" '\(BIND_NOW\)|\(FLAGS\) +BIND_NOW|\(FLAGS_1\).* NOW') ))
  canary=$(has "$hc" 'Stack protected: yes')
  fortify=$(has "$hc" 'Fortify Source functions: yes')
  fcount="$(grep -c $'^\tprotected:' <<<"$hc" || true)/$(grep -c $'^\tunprotected:' <<<"$hc" || true)"
  nx=$(grep -E '^ *GNU_STACK ' <<<"$seg" | grep -Eq ' RW  ' && echo 1 || echo 0)
  notext=$(( 1 - $(has "$dyn" '\(TEXTREL\)') ))
  norpath=$(( 1 - $(has "$dyn" '\((RPATH|RUNPATH)\)') ))
  rpath=$(mark $norpath)
  [ $tree = 1 ] && rpath=tree
  [ $tree = 1 ] && norpath=1
  row_ok=1
  for v in $relro $now $canary $fortify $nx $notext $norpath; do [ "$v" = 1 ] || row_ok=0; done
  flags="(no debug info)"
  if $readelf -S "$so" | grep -q '\.debug_info'; then
    need=(-fstack-protector-strong -fstack-clash-protection)
    [ "$arch" = amd64 ] && need+=(-fcf-protection)
    # GCC records each unit's options there; Clang records none.
    producers=$($readelf --debug-dump=info --dwarf-depth=1 "$so" 2>/dev/null \
      | sed -n 's/.*DW_AT_producer.*: \(GNU .*\)/\1/p' | sort -u || true)
    if [ -z "$producers" ]; then
      flags="(options not recorded)"
    else
      flags="ok ($(grep -c . <<<"$producers") option sets)"
      for f in "${need[@]}"; do
        missing=$(grep -vc -- "$f" <<<"$producers" || true)
        [ "$missing" = 0 ] || { flags="$missing without $f"; row_ok=0; }
      done
    fi
  fi
  printf "%-22s %-6s %-8s %-6s %-13s %-8s %-7s %-6s %s\n" "$label" "$(mark $relro)" "$(mark $now)" \
    "$(mark $canary)" "$(mark $fortify) $fcount" "$(mark $nx)" "$(mark $notext)" \
    "$rpath" "$flags"
  if [ $row_ok = 0 ]; then
    fail=1
    grep -v $'^ *\t' <<<"$hc" | sed 's/^/    /'
  fi
done
exit $fail
