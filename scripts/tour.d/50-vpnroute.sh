# SPDX-License-Identifier: MIT
# VPN route lists: per tunnel an IP, a domain and a MAC list, kept as files
# under /userconfig/config/qvvpn and mirrored into the tunnel's ipset sets.
mkdir -p /userconfig/config
echo "The tunnel's set-up (outside the library) creates its sets with counters:"
ipset create vpn_ip1 hash:net counters
ipset create vpn_domain1 hash:ip comment counters
ipset create vpn_mac1 hash:mac counters 2>/dev/null ||
  echo "  (this kernel has no hash:mac sets: the MAC commands below fail silently, as on a gateway without the set)"

echo
echo "qvvpn_add_route_ip 1 10.1.2.0/24, then 10.0.0.12 -> 0 each (added to file and set)"
qvsctl vpnroute qvvpn_add_route_ip 1 10.1.2.0/24
qvsctl vpnroute qvvpn_add_route_ip 1 10.0.0.12
echo "qvvpn_add_route_ip 1 10.0.0.1 -> 2: found by substring in line 2 (10.0.0.12), nothing added"
qvsctl vpnroute qvvpn_add_route_ip 1 10.0.0.1
echo "--- /userconfig/config/qvvpn/VPN_IP_1:"; cat /userconfig/config/qvvpn/VPN_IP_1
echo "--- ipset members of vpn_ip1:"; ipset list vpn_ip1 | sed -n '/Members:/,$p' | tail -n +2

echo
echo "qvvpn_add_route_mac 1 AABBCCDDEEFF -> stored lower-cased, set member aa:bb:cc:dd:ee:ff"
qvsctl vpnroute qvvpn_add_route_mac 1 AABBCCDDEEFF

echo
echo "qvvpn_add_route_domain: the list, then dnsmasq's ipset file (dnsmasq is signalled if running)"
qvsctl vpnroute qvvpn_add_route_domain 1 video.example
qvsctl vpnroute qvvpn_add_route_domain 1 news.example
echo "--- /etc/dnsmasq/ipset/vpn_domain1:"; cat /etc/dnsmasq/ipset/vpn_domain1

echo
echo "qvvpn_get_route_all 1 1 -> the domain list joined by %"
qvsctl vpnroute qvvpn_get_route_all 1 1
echo "qvvpn_set_route_all 1 0 '10.9.0.0/16%%10.8.8.8' -> the IP list replaced (empty items vanish) and reloaded"
qvsctl vpnroute qvvpn_set_route_all 1 0 '10.9.0.0/16%%10.8.8.8'
qvsctl vpnroute qvvpn_get_route_all 1 0

echo
echo "Refused: caller text with shell characters never reaches a command line"
qvsctl vpnroute qvvpn_add_route_ip 1 '10.0.0.1;reboot' 2>&1

echo
echo "A reboot empties the sets; qvvpn_reload_route refills them from the files"
echo "(dnsmasq has meanwhile resolved news.example: the reload keeps the domain set)"
ipset flush vpn_ip1
ipset add vpn_domain1 10.7.7.7 comment "news.example" packets 12 bytes 900
qvsctl vpnroute qvvpn_reload_route 1
ipset list vpn_ip1 | sed -n '/Members:/,$p' | tail -n +2
ipset list vpn_domain1 | sed -n '/Members:/,$p' | tail -n +2

echo
echo "qvvpn_get_statistics 1 1 -> packets per domain entry, from the members' comments and counters"
qvsctl vpnroute qvvpn_get_statistics 1 1
echo "qvvpn_get_pkgCount 1 -> 0: it opens the iptables command text as a file name, which does not exist"
qvsctl vpnroute qvvpn_get_pkgCount 1
