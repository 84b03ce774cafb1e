// SPDX-License-Identifier: MIT
// Guest SSIDs: tearing one down, and counting them per radio.
#include "wlan/ssid_map.hpp"

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

int qvs_wlan_clean_guest_ssid_conf_by_ext_ssididx(uint32_t handle, int ext_idx) {
    if (handle == 0) return kFail;
    int internal_idx = qvs_wlan_get_internal_ssididx_by_ext_ssididx(handle, ext_idx);
    QVS_IA ia = QVS_IA_VALUE(1, "%d", internal_idx);

    ParamList list;
    if (!list) return kOk;
    const auto *rec = object<QVS_WIFI_SSID_REC>(handle, QVS_OID_WIFI_SSID, ia);
    if (rec == nullptr) return kOk;

    std::uint32_t duration = 0;
    std::uint8_t isolation = 0;
    std::uint8_t enable = 0;
    list.add("X_QV_Guest_Duration", kTypeUInt32, &duration);
    list.add("X_QV_PortIsolation", kTypeBool, &isolation);
    list.add("Enable", kTypeBool, &enable);

    std::uint32_t bitmap = 0;
    ::qvsXml_getParameterByOID(handle, QVS_OID_WIFI_SSID, ia, kParamBitmap, &bitmap);
    bitmap &= ~kBitmapGuest;
    list.add(kParamBitmap, kTypeUInt32, &bitmap);
    list.apply(handle, rec);

    // Positions 0 to 15 are asked: 0 never answers, 16 is never reached.
    for (int position = 0; position < kMapRoom; ++position) {
        if (qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(handle, position, kSelectGuest) == ext_idx) {
            qvs_wlan_update_mapped_list(handle, position, 0, kSelectGuest);
            break;
        }
    }
    return kOk;
}

int qvs_wlan_get_guest_ssid_count_per_radio(uint32_t handle, int internal_idx) {
    if (handle == 0) return kFail;
    std::uint8_t first_half = 0;   // slots 1 to 8
    std::uint8_t second_half = 0;  // slots 9 to 16
    // One value for all reads: a failed read counts the previous index's bits.
    std::uint32_t bitmap = 0;
    for (int idx = 1; idx <= kMapRoom; ++idx) {
        QVS_IA ia = QVS_IA_VALUE(1, "%d", idx);
        ::qvsXml_getParameterByOID(handle, QVS_OID_WIFI_SSID, ia, kParamBitmap, &bitmap);
        if ((bitmap & kBitmapGuest) == 0) continue;
        if (idx > 8)
            ++second_half;
        else
            ++first_half;
    }
    return internal_idx > 8 ? second_half : first_half;
}

}  // extern "C"
