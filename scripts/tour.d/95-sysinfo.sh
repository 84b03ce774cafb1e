# SPDX-License-Identifier: MIT
# System facts, the bridge forwarding table, an Ethernet port joining br0,
# the PVC index for a new WAN connection and bridged OTHER bindings.
qvstore reset >/dev/null

echo "Largest firmware image: /proc/mtd is a gateway file a PC lacks, so the size stays as it was:"
qvsctl sysinfo GetMaxImageSize
echo
echo "Default configuration for area CN, province GD (no customised, area or OEM file):"
qvsctl sysinfo getPreDefaultXml 2>/dev/null
qvstore device province WX
echo "... for CN / WX:"
qvsctl sysinfo getPreDefaultXml 2>/dev/null
mkdir -p /userconfig/config/customized && echo encrypted > /userconfig/config/customized/CN_WX.default.enc
echo "... once /userconfig/config/customized/CN_WX.default.enc exists (the level-1 log line on stderr):"
qvsctl sysinfo getPreDefaultXml
rm -r /userconfig/config/customized
qvsctl sysinfo getAreaAndProvince
echo
echo "CPU (the platform's measure), RAM (this machine's /proc/meminfo), software version:"
qvsctl sysinfo getCpuOccupy
qvsctl sysinfo getRamOccupy
qvsctl sysinfo qvs_getSWVersion 2>/dev/null
echo
echo "Flash: df of /userconfig/config (8 MB, 3 MB used) and /opt/sgw/apps (64 MB, 20 MB used),"
echo "plus 50922 fixed blocks, of 262144 blocks:"
mkdir -p /userconfig/config /opt/sgw/apps
mount -t tmpfs -o size=8m flash-config /userconfig/config
mount -t tmpfs -o size=64m flash-apps /opt/sgw/apps
dd if=/dev/zero of=/userconfig/config/data bs=1024 count=3072 2>/dev/null
dd if=/dev/zero of=/opt/sgw/apps/data bs=1024 count=20480 2>/dev/null
df /userconfig/config /opt/sgw/apps | sed 's/^/  /'
qvsctl sysinfo getFLASHOccupy
umount /opt/sgw/apps
echo "... without /opt/sgw/apps the percentage is still written, the result is -1:"
qvsctl sysinfo getFLASHOccupy
umount /userconfig/config
echo

echo "A LAN bridge br0 with two ports and five hosts learned on them:"
ip link add br0 type bridge && ip link set br0 up
for i in 1 2; do
  ip link add lan$i type veth peer name host$i
  ip link set lan$i master br0 && ip link set lan$i up
done
for h in 1 2 3 4 5; do bridge fdb add 02:00:00:00:00:0$h dev lan$(( h % 2 + 1 )) master static; done
bridge fdb show br br0 | grep -F 'master br0' | sed 's/^/  /'
echo "qvsctl sysinfo brctl_getmacs br0   -> the learned hosts (local addresses left out)"
qvsctl sysinfo brctl_getmacs br0
echo "qvsctl sysinfo brctl_getmacs br0 3 -> only the first 3 records are examined"
qvsctl sysinfo brctl_getmacs br0 3
echo "qvsctl sysinfo brctl_getmacs_by_mac br0 02:00:00:00:00:04"
qvsctl sysinfo brctl_getmacs_by_mac br0 02:00:00:00:00:04
qvsctl sysinfo brctl_getmacs_by_mac br0 02:00:00:00:00:99
echo

echo "Ethernet port eth1 (one end of a veth pair) joins br0 tagged with VLAN 45:"
ip link add eth1 type veth peer name uplink1 && ip link set eth1 up && ip link set uplink1 up
qvstore journal clear
qvsctl sysinfo qvsUtil_setEthToLan eth1 45
echo "  what it did, in order (200 ms pauses after the removal, the add, the promisc and the up):"
qvstore journal | grep -E '^(cmd|device)' | sed 's/^/    /'
echo "  the device ($(qvstore device netdev.eth1.45)):"
ip -br link show eth1.45 | sed 's/^/    /'
echo "  br0's ports: $(ls /sys/class/net/br0/brif | tr '\n' ' ')"
echo "  eth1: mtu $(cat /sys/class/net/eth1/mtu), flags $(cat /sys/class/net/eth1/flags) (0x100: promiscuous)"
echo "qvsctl sysinfo qvsUtil_setEthToLan wan0 45 -> not an Ethernet port, nothing run"
qvsctl sysinfo qvsUtil_setEthToLan wan0 45
echo

echo "PVC index for a new WAN connection. The default gateway uses 1, 2, 3:"
qvsctl sysinfo Qvs_getpvcIndex
qvstore set 196 1,2,1 X_QV_PVCIndex 6
echo "with 1, 6, 3 in use -> the lowest free one below the highest:"
qvsctl sysinfo Qvs_getpvcIndex
qvstore set 174 1,1,1 X_QV_PVCIndex 25
echo "with 25, 6, 3 in use -> 1 is free (indices above 19 only raise the highest):"
qvsctl sysinfo Qvs_getpvcIndex
qvstore set 174 1,1,1 X_QV_PVCIndex 1
qvstore set 196 1,2,1 X_QV_PVCIndex 2
echo

echo "Bridged OTHER bindings: LAN 4 is bound to connection device 3 (IP_Bridged, OTHER):"
qvsctl sysinfo isIntfBindByOtherBridgeWan InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.4
echo "LAN 1 only to the routed INTERNET connection:"
qvsctl sysinfo isIntfBindByOtherBridgeWan InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.1
qvstore set 174 1,3,1 X_QV_LanInterface InternetGatewayDevice.LANDevice.1.LANEthernetInterfaceConfig.4,InternetGatewayDevice.WiFi.SSID.2
echo "SSID 2 bound too; a WLAN path is looked up by its SSID name:"
qvsctl sysinfo isIntfBindByOtherBridgeWan InternetGatewayDevice.LANDevice.1.WLANConfiguration.2
