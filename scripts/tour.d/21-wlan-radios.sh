# SPDX-License-Identifier: MIT
# Wi-Fi radios: neighbour scans (the simulated Wi-Fi driver answers a request
# as the device fact "wifi.scan" says), the 802.11 standards of both radios,
# the uplink credentials handed to a listening Wi-Fi agent, the OMCI VLAN
# settings of a Wi-Fi interface, and associated stations by MAC address.
exec 2>&1
state() { echo "  radio $1 state: $(qvstore get 390 "$1" X_QV_DiagnosticsState)"; }

echo "A scan on radio 2 that the driver completes, finding 5 neighbours:"
qvstore device wifi.scan complete >/dev/null
qvstore device wifi.scan_results 5 >/dev/null
qvsctl wlan qvs_wlan_start_scan 2
state 2
qvsctl wlan qvs_wlan_get_scan_result 2
echo "The retrying statistics call (retry 2) succeeds at its first attempt:"
qvsctl wlan qvs_stats_wlan_neighbor 2 2
echo
echo "A scan on radio 1 that the driver never answers: ten polls one second apart, then"
echo "the state is rewritten to Error and the result is -1 (this takes 10 seconds):"
qvstore device wifi.scan pending >/dev/null
qvsctl wlan qvs_wlan_start_scan_force 1
state 1
qvsctl wlan qvs_wlan_get_scan_result 1
state 1
echo
echo "Supported standards, each once in the order a, b, g, n, ac, ax, whichever radio names it:"
echo "  radio 1 lists \"$(qvstore get 390 1 SupportedStandards)\", radio 2 \"$(qvstore get 390 2 SupportedStandards)\""
qvsctl wlan qvs_wlan_get_supported_standards_for_ct
qvstore set 390 1 SupportedStandards b,g,n >/dev/null
qvstore set 390 2 SupportedStandards a,n,ad >/dev/null
echo "  radio 1 lists \"b,g,n\", radio 2 \"a,n,ad\" (ad is not in the table):"
qvsctl wlan qvs_wlan_get_supported_standards_for_ct
echo
echo "Uplink Wi-Fi credentials to a Wi-Fi agent listening on /var/run/wlan_event_agent_socket:"
rm -f /tmp/agent.ready
python3 - <<'PY' &
import os, socket
path = "/var/run/wlan_event_agent_socket"
s = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
s.bind(path)
s.listen(1)
open("/tmp/agent.ready", "w").close()
c, _ = s.accept()
data = b""
while True:
    chunk = c.recv(4096)
    if not chunk:
        break
    data += chunk
text = lambda b: b.split(b"\0", 1)[0].decode()
print("  agent received %d bytes: type %d, ssid \"%s\", password \"%s\", security mode \"%s\""
      % (len(data), data[0], text(data[4:37]), text(data[37:101]), text(data[101:124])))
open("/tmp/agent.bin", "wb").write(data)
os.unlink(path)
PY
agent=$!
for _ in $(seq 50); do [ -e /tmp/agent.ready ] && break; sleep 0.1; done
qvsctl wlan qvs_set_uplink_wlan_conn_info HomeNet-Uplink s3cret-passphrase WPA2-PSK
wait "$agent"
xxd /tmp/agent.bin | sed 's/^/  /'
echo "With no agent listening the send fails (connect failed), and the call still reports 0:"
qvsctl wlan qvs_set_uplink_wlan_conn_info HomeNet-Uplink s3cret-passphrase WPA2-PSK
echo
echo "OMCI VLAN settings: the first line of /var/run/qvOmciWifi naming ra0 reaches the switch and the network layer:"
printf 'rai0 1 10 0 0 \nra0 2 100 1 3 \nra0 4 200 1 3 \n' > /var/run/qvOmciWifi
sed 's/^/  /' /var/run/qvOmciWifi
qvsctl wlan qvsTask_wlanUpToOmciMsg ra0
echo "  switch VLAN (default TCI, type): $(qvstore device switch.vlan)"
echo "  VLAN mode (mode, VLAN, type, physical index): $(qvstore device vlanmode)"
echo
echo "Stations by MAC under SSID instance 9: the second station, then a MAC nobody has"
echo "(the last read's code: instance 128 does not exist):"
qvsctl wlan qvs_wlan_get_sta_objidx_by_mac 9 a4:83:e7:55:66:03
qvsctl wlan qvs_wlan_get_sta_objidx_by_mac 9 00:11:22:33:44:55
echo "The mesh queries are not supported:"
qvsctl wlan qvs_wlan_get_map_sta_num
qvsctl wlan qvs_wlan_get_map_bh_almac
