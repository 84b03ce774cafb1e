# SPDX-License-Identifier: MIT
# Operator features: a CMCC timed Wi-Fi switch-off and back on, a device speed
# limit applied and lifted, CUC sleep and wake with the LAN ports, the Wi-Fi
# hardware check, and a LAN device's hardware QoS entry added and removed.
# Log lines of the library go to standard error and are shown here too.
exec 2>&1
qvstore reset >/dev/null
# The handlers read the local clock: pin it (China, UTC+8) where faketime exists.
export TZ=CST-8
at() { if command -v faketime >/dev/null 2>&1; then faketime "$@"; else shift; "$@"; fi; }
ssids() { echo "  SSID 1 (internal 1) Enable=$(qvstore get 399 1 Enable), SSID 5 (internal 9) Enable=$(qvstore get 399 9 Enable)"; }
limits() { echo "  host 2 ($(qvstore get 156 1,2 MACAddress)): up $(qvstore get 156 1,2 UpSpeedLimit), down $(qvstore get 156 1,2 DownSpeedLimit)"; }
ports() { for p in 0 1 2 3 4; do printf '  port %s admin %s\n' "$p" "$(qvstore device "port.$p.admin" 2>/dev/null || echo unset)"; done; }

echo "Timed task 1: Wi-Fi (SSIDs 1 and 5) off at 23:00, on at 07:00, every day."
qvstore set 389 - X_QV_External_SSID_Map 1,2,3,4,9,10,11,12,0,0,0,0,0,0,0,0
ssids
echo "22:59:30 -> not its minute, nothing happens:"
at '2026-06-01 22:59:30' qvsctl operator qvs_cmcc_timedTask_handler 1
echo "23:00:10 -> switched off:"
at '2026-06-01 23:00:10' qvsctl operator qvs_cmcc_timedTask_handler 1
ssids
echo "07:00:05 next morning -> switched back on:"
at '2026-06-02 07:00:05' qvsctl operator qvs_cmcc_timedTask_handler 1
ssids
echo "A once-only event task at 03:00 (task 2, enabled now): event 300 raised, the task removed and saved:"
qvstore set 566 2 Enable 1
at '2026-06-02 03:00:00' qvsctl operator qvs_cmcc_timedTask_handler 2
qvstore journal | grep -E '^(event|del|save)' | sed 's/^/  /'
echo "  task 2 exists: $(qvstore exists 566 2)"
echo "The same handler outside an event task's minute gives -1:"
qvstore add 566 3 >/dev/null
qvstore set 566 3 Repeat 1; qvstore set 566 3 Action 1; qvstore set 566 3 Time 10800; qvstore set 566 3 Enable 1
at '2026-06-02 03:01:00' qvsctl operator qvs_cmcc_timedTask_handler 3
echo
echo "Device-limit task 1: host 2 limited from 20:00 to 22:00 every day."
limits
echo "20:00 -> the limits applied:"
at '2026-06-02 20:00:00' qvsctl operator qvs_cmcc_deviceLimit_handler 1
limits
echo "22:00 -> lifted (0 means no limit):"
at '2026-06-02 22:00:00' qvsctl operator qvs_cmcc_deviceLimit_handler 1
limits
echo "Set at once by MAC: qvsctl operator qvs_setSpeedLimitByMac 00:1a:2b:3c:4d:02 256 1024"
qvsctl operator qvs_setSpeedLimitByMac 00:1a:2b:3c:4d:02 256 1024
limits
echo "An unknown MAC:"
qvsctl operator qvs_setSpeedLimitByMac 02:00:00:00:00:99 1 1
echo
echo "Hardware QoS entry of host 2 (active, limits 256/1024): added, numbers written back:"
qvsctl operator qvsTask_LanDeviceHost_exec 2 2
echo "  device state qos.2: $(qvstore device qos.2)"
echo "Called again with an old record holding the same limits: kept, no add:"
qvsctl operator qvsTask_LanDeviceHost_exec 2 2 1 256 1024
echo "Host 2 goes inactive: the entry is deleted and 0/0 written back:"
qvstore set 156 1,2 Active 0
qvsctl operator qvsTask_LanDeviceHost_exec 2 2
echo "  device state qos.2: $(qvstore device qos.2 2>/dev/null || echo gone)"
echo "An all-zero MAC is refused:"
qvstore set 156 1,3 MACAddress 00:00:00:00:00:00
qvsctl operator qvsTask_LanDeviceHost_exec 3 3
echo
qvstore set 389 - X_QV_Enable 1
echo "Sleep mode: Wi-Fi $(qvstore get 389 - X_QV_Enable), LEDs off $(qvstore get 229 - Leds_Turnoff)"
qvsctl operator qvs_cuc_get_sleep_mode
echo "Sleep -> Wi-Fi and LEDs remembered and switched off, LAN ports 1-5 down:"
qvsctl operator qvs_cuc_set_sleep_mode 1
echo "  Wi-Fi $(qvstore get 389 - X_QV_Enable), LEDs off $(qvstore get 229 - Leds_Turnoff), remembered Wi-Fi $(qvstore get 563 - LastWLANEnable)"
ports
echo "Sleep again -> already asleep, nothing changes:"
qvsctl operator qvs_cuc_set_sleep_mode 1
echo "Wake -> restored, ports up:"
qvsctl operator qvs_cuc_set_sleep_mode 0
echo "  Wi-Fi $(qvstore get 389 - X_QV_Enable), LEDs off $(qvstore get 229 - Leds_Turnoff)"
ports
echo
echo "Channels in use of radio 1 and a radio that does not exist:"
qvstore set 390 1 ChannelsInUse 36,40,44,48
qvsctl operator qvs_cuc_get_channelsinuse 1
qvsctl operator qvs_cuc_get_channelsinuse 3
echo
echo "Wi-Fi hardware check on the PCI device list (a list presented inside this sandbox):"
qvsctl operator qvs_cuc_check_hardware_start
if [ -d /proc/bus ] && mount -t tmpfs tmpfs /proc/bus 2>/dev/null; then
  mkdir -p /proc/bus/pci
  printf '0000\t14e4aa52\t0\n0100\t14c37915\t92\n' > /proc/bus/pci/devices
  echo "With a MediaTek 14c3:7915 in the second line:"
  qvsctl operator qvs_cuc_check_hardware_status
  printf '0000\t14e4aa52\t0\n' > /proc/bus/pci/devices
  echo "Without a known chip:"
  qvsctl operator qvs_cuc_check_hardware_status
  rm /proc/bus/pci/devices
  echo "Without the list at all:"
  qvsctl operator qvs_cuc_check_hardware_status
  umount /proc/bus
else
  echo "(no fixture possible here; the PC's own list:)"
  qvsctl operator qvs_cuc_check_hardware_status
fi
