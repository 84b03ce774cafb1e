// SPDX-License-Identifier: MIT
// The external-to-internal SSID map: reading, writing one entry, and the
// conversions between the three SSID numberings.
#include "wlan/ssid_map.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qvs::wlan {

namespace {

// Reads the map into a cleared 16-entry table with room 16.
int read_map(Handle handle, std::uint8_t (&table)[kMapRoom], int &count) {
    std::memset(table, 0, sizeof table);
    count = kMapRoom;
    return ::qvs_wlan_get_ssid_map(handle, table, &count);
}

}  // namespace

void join_entries(const std::uint8_t *table, int count, char (&text)[kTextSize]) {
    std::memset(text, 0, sizeof text);
    for (int i = 0; i < count; ++i) {
        char number[kNumberScratch] = {};
        std::snprintf(number, sizeof number, "%d", table[i]);
        if (i > 0) std::strncat(text, ",", sizeof text - 1 - std::strlen(text));
        std::strncat(text, number, sizeof text - 1 - std::strlen(text));
    }
}

int change_ssid_map(Handle handle, int ext, int internal_idx) {
    if (handle == 0) return kFail;

    std::uint8_t table[kMapRoom];
    int count = 0;
    if (read_map(handle, table, count) != kOk) {
        QVS_LOG(kLogError, "get wlan ssid map fail.\n");
        return kFail;
    }
    // Callers pass 1 to 16; anything else must not reach outside the table.
    if (ext >= 1 && ext <= kMapRoom) table[ext - 1] = static_cast<std::uint8_t>(internal_idx);

    // Always all 16 entries, whatever count was read.
    char text[kTextSize];
    join_entries(table, kMapRoom, text);
    QVS_LOG(kLogError, "new ssid_map=%s", text);

    const auto *rec = object<QVS_WIFI_COMMON_REC>(handle, QVS_OID_WIFI_COMMON, 0);
    if (rec == nullptr) {
        QVS_LOG(kLogError, "get wifi object error\n");
        return kFail;
    }
    ParamList list;
    if (!list) return kFail;
    list.add(kParamExtMap, kTypeString, text);
    list.apply(handle, rec);  // the store's result is not examined
    return kOk;
}

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

int qvs_wlan_get_ssid_map(uint32_t handle, uint8_t *table, int *count) {
    if (handle == 0) return kErrZeroHandle;
    const auto *rec = object<QVS_WIFI_COMMON_REC>(handle, QVS_OID_WIFI_COMMON, 0);
    if (rec == nullptr) return kErrNoObject;

    char text[kTextSize] = {};
    std::memcpy(text, rec->X_QV_External_SSID_Map, sizeof text - 1);

    char *save = nullptr;
    char *token = ::strtok_r(text, ",", &save);
    if (token == nullptr || count == nullptr || table == nullptr || *count < 1) return kErrEmpty;

    int stored = 0;
    while (token != nullptr && stored < *count) {
        table[stored++] = static_cast<uint8_t>(std::strtol(token, nullptr, 10));
        token = ::strtok_r(nullptr, ",", &save);
    }
    *count = stored;
    return kOk;
}

int qvs_wlan_get_internal_ssididx_by_ext_ssididx(uint32_t handle, int ext_idx) {
    if (ext_idx < 1) return kFail;
    uint8_t table[kMapRoom];
    int count = 0;
    if (read_map(handle, table, count) != kOk || count < ext_idx) return kFail;
    return table[ext_idx - 1];
}

int qvs_wlan_get_ext_ssididx_by_internal_ssididx(uint32_t handle, int internal_idx) {
    uint8_t table[kMapRoom];
    int count = 0;
    if (read_map(handle, table, count) != kOk) return kFail;
    if (internal_idx < 1 || internal_idx > kMapRoom) return kFail;
    for (int i = 0; i < count; ++i)
        if (table[i] == internal_idx) return i + 1;
    return kFail;
}

int qvs_wlan_get_ssididx_by_ubus_ssididx(uint32_t handle, int ubus_idx) {
    if (ubus_idx < 1) return kFail;
    uint8_t table[kMapRoom];
    int count = 0;
    if (read_map(handle, table, count) != kOk || count < ubus_idx) return kFail;
    // The ubus number is an internal index value here; all 16 positions count.
    for (int i = 0; i < kMapRoom; ++i)
        if (table[i] == ubus_idx) return i + 1;
    return 0;
}

int qvs_wlan_get_internal_ssididx_by_ubus(uint32_t handle, int ubus_idx) {
    if (ubus_idx < 1) return kFail;
    uint8_t table[kMapRoom];
    int count = 0;
    if (read_map(handle, table, count) != kOk || count < ubus_idx) return kFail;
    // The ubus number is a zero-based external position here.
    return ubus_idx < kMapRoom ? table[ubus_idx] : 0;
}

int qvs_wlan_internal_ssididx_to_radioidx(int internal_idx) {
    return (internal_idx >= 9 && internal_idx <= 16) ? 2 : 1;
}

int qvs_wlan_internal_staidx_to_radioidx(int sta_idx) {
    // Station interfaces are numbered the other way round from the SSIDs.
    return sta_idx == 1 ? 2 : 1;
}

int qvs_wlan_get_ssid_band(int ext_idx) {
    QVS_ATTACH(store, "XMLSHMINIT fail\n");
    if (!store) return 0;
    int internal_idx = qvs_wlan_get_internal_ssididx_by_ext_ssididx(store.handle(), ext_idx);
    return qvs_wlan_internal_ssididx_to_radioidx(internal_idx) == 1 ? 1 : 0;
}

int qvs_wlan_get_dual_bandsupport(void) { return 1; }

}  // extern "C"
