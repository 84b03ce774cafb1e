# Wi-Fi SSIDs: the three numberings, adding and deleting, merging two radios'
# networks into one name, and guest clean-up.
echo "The external-to-internal SSID map (external k -> internal slot; 1-8: 5 GHz, 9-16: 2.4 GHz):"
qvsctl wlan qvs_wlan_get_ssid_map
echo
echo "Add external SSID 3 on the 5 GHz radio (band 0), then external 4 on the 2.4 GHz radio (band 1):"
qvsctl wlan qvs_wlan_add_ssid 3 0
qvsctl wlan qvs_wlan_add_ssid 4 1
qvsctl wlan qvs_wlan_get_ssid_map
echo
echo "Conversions: external 3 -> internal; internal back -> external; its radio; its band flag:"
qvsctl wlan qvs_wlan_get_internal_ssididx_by_ext_ssididx 3
internal=$(qvsctl wlan qvs_wlan_get_internal_ssididx_by_ext_ssididx 3 | sed -n 's/^result: //p')
qvsctl wlan qvs_wlan_get_ext_ssididx_by_internal_ssididx "$internal"
qvsctl wlan qvs_wlan_internal_ssididx_to_radioidx "$internal"
qvsctl wlan qvs_wlan_get_ssid_band 3
echo "The two ubus conversions read the ubus number differently (internal value vs zero-based position):"
qvsctl wlan qvs_wlan_get_ssididx_by_ubus_ssididx "$internal"
qvsctl wlan qvs_wlan_get_internal_ssididx_by_ubus 2
echo
echo "Merge external 1 (5 GHz) and 2 (2.4 GHz) into one network name, check, then cancel:"
qvsctl wlan qvs_wlan_set_same_ssid 1 2
qvsctl wlan qvs_wlan_get_same_ssid_status
qvsctl wlan qvs_wlan_cancel_same_ssid
qvsctl wlan qvs_wlan_get_same_ssid_status
echo
echo "Guest list: put external 4 at position 1, count guests per radio, tear it down:"
qvsctl wlan qvs_wlan_update_mapped_list 1 4 0x20000 || true
qvsctl wlan qvs_wlan_get_guest_ssid_list
qvsctl wlan qvs_wlan_get_guest_ssid_count_per_radio 9
qvsctl wlan qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx 4
qvsctl wlan qvs_wlan_get_guest_ssid_list
echo
echo "Which WAN interface SSID 1 is bound to (-1105: none):"
qvsctl wlan qvs_wlan_get_bind_ifname_by_ssididx 1
echo
echo "Delete external 3; deleting external 1 (the 5 GHz radio's first SSID) is refused but reports 0:"
qvsctl wlan qvs_wlan_del_ssid 3
qvsctl wlan qvs_wlan_del_ssid 1
qvsctl wlan qvs_wlan_get_ssid_map
