// SPDX-License-Identifier: MIT
// Adding an SSID (a free internal slot mapped to an external index) and
// deleting one (disabled and unmapped).
#include <cstring>

#include "wlan/ssid_map.hpp"

namespace qvs::wlan {

namespace {

// The slot search logs, and builds its instance addresses, under this name.
constexpr char kSlotSearchName[] = "get_next_free_internal_idx";

bool is_first_slot(int internal_idx) { return internal_idx == 1 || internal_idx == 9; }

// Disables one SSID object (its address built by the caller under its own
// name); the store's result is not examined.
void disable_ssid(Handle handle, QVS_IA ia) {
    std::uint8_t enable = 0;
    ::qvsXml_setOneParameterByOIDIndirect(handle, QVS_OID_WIFI_SSID, ia, "Enable", kTypeBool, &enable);
}

}  // namespace

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

int qvs_wlan_add_ssid(uint32_t handle, int ext_idx, int band) {
    if (handle == 0) return kFail;

    std::uint8_t table[kMapRoom] = {};
    int count = kMapRoom;
    bool used[kMapRoom + 1] = {};
    if (qvs_wlan_get_ssid_map(handle, table, &count) == kOk) {  // a failed read is no error here
        for (int i = 0; i < count; ++i)
            if (table[i] != 0 && table[i] <= kMapRoom) used[table[i]] = true;
    }

    const int first = band != 0 ? 9 : 1;
    const int last = band != 0 ? 16 : 8;
    int chosen = 0;
    // One value for all reads: a failed read keeps the value read last.
    std::uint32_t bitmap = 0;
    for (int idx = first; idx <= last; ++idx) {
        if (used[idx]) continue;
        QVS_IA ia = ::qvsXml_ConstructIAValue(kSourceFile, kSlotSearchName, __LINE__, 1, "%d", idx);
        ::qvsXml_getParameterByOID(handle, QVS_OID_WIFI_SSID, ia, kParamBitmap, &bitmap);
        if ((bitmap & kBitmapReserved) == 0) {
            chosen = idx;
            break;
        }
    }
    if (chosen == 0) {
        QVS_LOG_AS(kSlotSearchName, kLogError, "there is no free internal index\n");
        return kFail;
    }
    if (band != 0)
        QVS_LOG_AS(kSlotSearchName, kLogError, "get next 2.4G free internal index=%d\n", chosen);
    else
        QVS_LOG_AS(kSlotSearchName, kLogError, "get next 5G free internal index=%d\n", chosen);

    // Whether the external index is free is not examined: it is overwritten.
    return change_ssid_map(handle, ext_idx, chosen);
}

int qvs_wlan_del_ssid(uint32_t handle, int ext_idx) {
    if (handle == 0) return kFail;
    int internal_idx = qvs_wlan_get_internal_ssididx_by_ext_ssididx(handle, ext_idx);
    if (internal_idx < 1) return kFail;
    if (is_first_slot(internal_idx)) {
        QVS_LOG(kLogError, "The first 2.4G/5G ssid can not be removed internal_ssid_index=%d\n", internal_idx);
        return kOk;  // refused, reported as success
    }
    disable_ssid(handle, QVS_IA_VALUE(1, "%d", internal_idx));
    return change_ssid_map(handle, ext_idx, 0);
}

int qvs_wlan_del_ssid_by_ubus(uint32_t handle, int ubus_idx) {
    if (handle == 0) return kFail;
    if (ubus_idx < 1) return kFail;
    if (is_first_slot(ubus_idx)) {
        QVS_LOG(kLogError, "The first 2.4G/5G ssid can not be removed internal_ssid_index=%d\n", ubus_idx);
        return kOk;  // refused, reported as success
    }
    disable_ssid(handle, QVS_IA_VALUE(1, "%d", ubus_idx));
    // Nothing found (0) or a failed conversion (-1) frees no entry, but the
    // map is still rewritten in its 16-number form.
    return change_ssid_map(handle, qvs_wlan_get_ssididx_by_ubus_ssididx(handle, ubus_idx), 0);
}

}  // extern "C"
