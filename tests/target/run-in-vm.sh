#!/bin/sh
# SPDX-License-Identifier: MIT
# run-in-vm.sh <tree> <results>: what the booted target does, as its PID 1's
# child (busybox sh). Installs our package with dpkg, runs the armhf suites
# named in <results>/selection (a ctest name pattern, or "all") with ctest
# from the build tree, then the consumer example against the installed
# package. Each step leaves its status in <results>; "finished" last.
tree=$1
results=$2
limit=$(cat "$results/limit")
selection=$(cat "$results/selection")
now() { cut -d' ' -f1 /proc/uptime; }
echo "booted: $(now) s" > "$results/times"
uname -rm > "$results/kernel"

# The kernel modules the suites use (they would load on demand as well).
modprobe -a ip_set_hash_ip ip_set_hash_net ip_set_hash_mac xt_set xt_mac iptable_mangle iptable_filter \
  8021q macvlan bridge veth xfrm_user esp4 xfrm4_tunnel 2>&1 | head -5
ldconfig

# Our runtime package, installed by dpkg against the image's package
# database (libc6's version included).
dpkg -i "$tree"/build/target/packages/libqvs-utils1_*_armhf.deb > "$results/dpkg.log" 2>&1
echo $? > "$results/dpkg.status"
dpkg -s libqvs-utils1 >> "$results/dpkg.log" 2>&1

# The suites: ctest from the armhf build tree (visible read-only at its own
# path, with a layer in memory for ctest's records); the whole run under
# one time limit besides each test's own.
set -- --test-dir "$tree/build/armhf" --output-on-failure -j2
[ "$selection" = all ] || set -- "$@" -R "$selection"
set -- "$@" -E "$(cat "$results/exclude")"
echo "suites start: $(now) s" >> "$results/times"
timeout -s KILL "$limit" ctest "$@" > "$results/ctest.log" 2>&1
echo $? > "$results/ctest.status"
echo "suites end: $(now) s" >> "$results/times"

# The consumer example, built outside against the unpacked armhf packages,
# run here against the installed library; only the maker's platform
# libraries come from a folder of their own.
consumer=$tree/build/target/consumer
status=1
LD_TRACE_LOADED_OBJECTS=1 LD_LIBRARY_PATH="$consumer/platform" "$consumer/consumer" > "$results/consumer.log" 2>&1
if grep -q 'libqvs_utils.so.1 => /usr/lib/arm-linux-gnueabihf/libqvs_utils.so.1 ' "$results/consumer.log" &&
   "$tree/tests/sandbox/qvs-sandbox" env LD_LIBRARY_PATH="$consumer/platform" "$consumer/consumer" \
     >> "$results/consumer.log" 2>&1; then
  status=0
fi
echo $status > "$results/consumer.status"

echo "end: $(now) s" >> "$results/times"
: > "$results/finished"
