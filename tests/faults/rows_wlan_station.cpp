// SPDX-License-Identifier: MIT
// Fault rows of the Wi-Fi station lookup: the associated stations under one
// access point searched by MAC address (the scans and the supported-standards
// report take the caller's store handle; the agent and OMCI calls use no store).
#include <cstdint>

#include "fault_table.hpp"
#include "libqv.h"
#include "qvs_utils.h"

namespace {

// The default model's stations under access point 9 (two) are enough.
void nothing() {}

}  // namespace

FAULT_FAMILY(wlan_station) {
    return {"wlan station",
            nothing,
            {
                // The second station matches: both are read.
                {"qvs_wlan_get_sta_objidx_by_mac found",
                 [] {
                     const std::uint8_t mac[6] = {0xa4, 0x83, 0xe7, 0x55, 0x66, 0x03};
                     (void)qvs_wlan_get_sta_objidx_by_mac(9, mac);
                 },
                 {QVS_OID_WIFI_ASSOC_STA},
                 {"MACAddress"}},
                // No station matches: all 128 places are read.
                {"qvs_wlan_get_sta_objidx_by_mac missing",
                 [] {
                     const std::uint8_t mac[6] = {0x02, 0x00, 0x00, 0x00, 0x00, 0x01};
                     (void)qvs_wlan_get_sta_objidx_by_mac(9, mac);
                 },
                 {QVS_OID_WIFI_ASSOC_STA},
                 {"MACAddress"}},
            }};
}
