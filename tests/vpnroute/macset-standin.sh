#!/bin/bash
# SPDX-License-Identifier: MIT
# Stand-in for the ipset tool where the running kernel has no hash:mac set
# type (CONFIG_IP_SET_HASH_MAC unset). Every command on any other set goes to
# the real ipset. A hash:mac set "vpn_mac<n>" is kept as a member file under
# /run/macset, and each member gets a counting rule "-m mac --mac-source" in
# the mangle chain "QV_VPN<n>", so that packets from that MAC are counted by
# the kernel just as a member's counter would count them; "list" prints the
# members with those counters in ipset's own format (MACs in upper case, as
# ipset prints them).
real=/usr/sbin/ipset
dir=/run/macset
mkdir -p "$dir"

chain_of() { echo "QV_VPN${1#vpn_mac}"; }
valid_mac() { [[ "$1" =~ ^[0-9a-fA-F]{2}(:[0-9a-fA-F]{2}){5}$ ]]; }

if [ "$1" = create ] && [ "$3" = hash:mac ]; then
  : > "$dir/$2"
  exit 0
fi
set_name=$2
if [ -z "$set_name" ] || [ ! -f "$dir/$set_name" ]; then
  exec "$real" "$@"
fi
file=$dir/$set_name
chain=$(chain_of "$set_name")
case "$1" in
  add)
    mac=${3,,}
    if ! valid_mac "$mac"; then
      echo "ipset v7.17: Syntax error: cannot parse '$3' as a MAC address" >&2; exit 1
    fi
    if grep -qx "$mac" "$file"; then
      echo "ipset v7.17: Element cannot be added to the set: it's already added" >&2; exit 1
    fi
    echo "$mac" >> "$file"
    iptables -t mangle -A "$chain" -m mac --mac-source "$mac"
    ;;
  del)
    mac=${3,,}
    if ! valid_mac "$mac" || ! grep -qx "$mac" "$file"; then
      echo "ipset v7.17: Element cannot be deleted from the set: it's not added" >&2; exit 1
    fi
    grep -vx "$mac" "$file" > "$file.new"; mv "$file.new" "$file"
    iptables -t mangle -D "$chain" -m mac --mac-source "$mac"
    ;;
  flush)
    while read -r mac; do iptables -t mangle -D "$chain" -m mac --mac-source "$mac"; done < "$file"
    : > "$file"
    ;;
  list)
    echo "Name: $set_name"
    echo "Type: hash:mac"
    echo "Header: hashsize 1024 maxelem 65536 counters"
    echo "Number of entries: $(wc -l < "$file")"
    echo "Members:"
    rules=$(iptables -t mangle -nvxL "$chain" 2>/dev/null)
    while read -r mac; do
      line=$(grep -i "MAC $mac" <<< "$rules" | head -1)
      read -r pkts bytes _ <<< "$line"
      echo "${mac^^} packets ${pkts:-0} bytes ${bytes:-0}"
    done < "$file"
    ;;
  *)
    echo "macset stand-in: '$1' not supported on $set_name" >&2; exit 1
    ;;
esac
