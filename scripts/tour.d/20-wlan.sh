# SPDX-License-Identifier: MIT
# Wi-Fi SSIDs: the three numberings, adding and deleting, merging two radios'
# networks into one name, and guest clean-up. Log lines of the library go to
# standard error and are shown here too.
exec 2>&1
name() { echo "  SSID $1: \"$(qvstore get 396 "$1" SSID)\", bitmap $(qvstore get 399 "$1" X_QV_SSID_Bitmap)"; }

echo "The external-to-internal SSID map (external k -> internal slot; 1-8: 5 GHz, 9-16: 2.4 GHz):"
qvsctl wlan qvs_wlan_get_ssid_map
echo
echo "Add external SSID 3 on the 5 GHz radio (band 0), then external 4 on the 2.4 GHz radio (band 1):"
qvsctl wlan qvs_wlan_add_ssid 3 0
qvsctl wlan qvs_wlan_add_ssid 4 1
qvsctl wlan qvs_wlan_get_ssid_map
echo
echo "Conversions: external 3 -> internal; back to external; its radio; its band flag (1: radio 1):"
internal=$(qvsctl wlan qvs_wlan_get_internal_ssididx_by_ext_ssididx 3 | sed -n 's/^result: //p')
echo "  internal index: $internal"
qvsctl wlan qvs_wlan_get_ext_ssididx_by_internal_ssididx "$internal"
qvsctl wlan qvs_wlan_internal_ssididx_to_radioidx "$internal"
qvsctl wlan qvs_wlan_get_ssid_band 3
echo "The two ubus conversions read the ubus number differently:"
echo "  ubus $internal as an internal index value -> external index:"
qvsctl wlan qvs_wlan_get_ssididx_by_ubus_ssididx "$internal"
echo "  ubus 3 as a zero-based external position -> internal index of external 4:"
qvsctl wlan qvs_wlan_get_internal_ssididx_by_ubus 3
echo
echo "Merge external 1 (5 GHz) and 2 (2.4 GHz): SSID 9 takes SSID 1's name and security:"
name 1; name 9
qvsctl wlan qvs_wlan_set_same_ssid 1 2
name 1; name 9
qvsctl wlan qvs_wlan_get_same_ssid_status
echo "Cancel: the marks go, each merged 5 GHz SSID gets \"-5G\" appended (to whatever name it has):"
qvsctl wlan qvs_wlan_cancel_same_ssid
name 1; name 9
qvsctl wlan qvs_wlan_get_same_ssid_status
echo
echo "Guest list: put external 4 at position 2 (0x20000 selects the guest list), then tear it down:"
qvsctl wlan qvs_wlan_update_mapped_list 2 4 0x20000
qvstore set 399 10 X_QV_SSID_Bitmap 131072 >/dev/null
qvsctl wlan qvs_wlan_get_guest_ssid_list
echo "  guest SSIDs on the 2.4 GHz radio:"
qvsctl wlan qvs_wlan_get_guest_ssid_count_per_radio 9
qvsctl wlan qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx 4
qvsctl wlan qvs_wlan_get_guest_ssid_list
qvsctl wlan qvs_wlan_get_guest_ssid_count_per_radio 9
echo
echo "Which WAN interface SSID 1 is bound to, and SSID 2 (-1105: none):"
qvsctl wlan qvs_wlan_get_bind_ifname_by_ssididx 1
qvsctl wlan qvs_wlan_get_bind_ifname_by_ssididx 2
echo
echo "Delete external 3; deleting external 1 (the 5 GHz radio's first SSID) is refused but reports 0:"
qvsctl wlan qvs_wlan_del_ssid 3
qvsctl wlan qvs_wlan_del_ssid 1
qvsctl wlan qvs_wlan_get_ssid_map
