// SPDX-License-Identifier: MIT
// Fault rows of the landed families that attach by themselves: alarms, PON
// zero-configuration state, the Wi-Fi band and WAN binding lookups.
#include "fault_table.hpp"
#include "libqv.h"
#include "qvs_utils.h"

namespace {

void nothing() {}

}  // namespace

FAULT_FAMILY(alarm) {
    return {"alarm",
            nothing,
            {
                {"CU_add_AlarmID", [] { (void)CU_add_AlarmID(cu_alarmInfo[0].alarmCode); },
                 {QVS_OID_ALARM_CONFIG, QVS_OID_ALARM_INFO, QVS_OID_TIME},
                 {"AlarmCode", "AlarmStatus", "PerceivedSeverity", "AlarmRaisedTime", "NumberOfAlarmInfo"}},
                {"CU_clear_AlarmID", [] {
                     (void)CU_add_AlarmID(cu_alarmInfo[0].alarmCode);
                     (void)CU_clear_AlarmID(cu_alarmInfo[0].alarmCode);
                 },
                 {QVS_OID_ALARM_CONFIG, QVS_OID_ALARM_INFO, QVS_OID_TIME},
                 {"AlarmStatus", "AlarmClearedTime"}},
            }};
}

FAULT_FAMILY(pon) {
    return {"pon",
            nothing,
            {
                {"getzeroconfigeponstate", [] { (void)getzeroconfigeponstate(); },
                 {QVS_OID_EPON_OLT_REG, QVS_OID_WAN_IP_CONN, QVS_OID_WAN_PPP_CONN, QVS_OID_RMS_REGISTER},
                 {}},
                {"getzeroconfiggponstate", [] { (void)getzeroconfiggponstate(); },
                 {QVS_OID_GPON_OLT_REG, QVS_OID_WAN_IP_CONN, QVS_OID_WAN_PPP_CONN, QVS_OID_RMS_REGISTER},
                 {}},
            }};
}

FAULT_FAMILY(wlan) {
    return {"wlan",
            nothing,
            {
                {"qvs_wlan_get_ssid_band", [] { (void)qvs_wlan_get_ssid_band(1); }, {QVS_OID_WIFI_COMMON},
                 {"X_QV_External_SSID_Map"}},
                {"qvs_wlan_get_bind_ifname_by_ssididx",
                 [] {
                     char ifname[32] = {};
                     (void)qvs_wlan_get_bind_ifname_by_ssididx(1, ifname);
                 },
                 {QVS_OID_WAN_DEVICE, QVS_OID_WAN_CONN_DEVICE, QVS_OID_WAN_IP_CONN, QVS_OID_WAN_PPP_CONN},
                 {}},
            }};
}
