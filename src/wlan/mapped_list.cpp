// SPDX-License-Identifier: MIT
// The shared and guest SSID lists: reading them, one entry by position, and
// changing one entry.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "wlan/ssid_map.hpp"

namespace qvs::wlan {

namespace {

const char *list_param(int selector) {
    if (selector == kSelectShared) return kParamSharedMap;
    if (selector == kSelectGuest) return kParamGuestMap;
    return nullptr;
}

}  // namespace

int get_mapped_ssid_list(Handle handle, std::uint8_t *table, int *count, int selector) {
    if (handle == 0) {
        if (count != nullptr) *count = 0;
        return kErrZeroHandle;
    }
    const auto *rec = object<QVS_WIFI_COMMON_REC>(handle, QVS_OID_WIFI_COMMON, 0);
    if (rec == nullptr) {
        if (count != nullptr) *count = 0;
        return kErrNoObject;
    }
    const char *source = nullptr;
    if (selector == kSelectShared)
        source = rec->X_QV_SharedSSID_Map;
    else if (selector == kSelectGuest)
        source = rec->X_QV_GuestSSID_Map;
    else
        return kErrSelector;

    char text[kTextSize] = {};
    ::libqv_safe_strncpy(text, source, sizeof text);

    // The lists are split with the plain tokenizer.
    char *token = std::strtok(text, ",");
    if (token == nullptr || count == nullptr || table == nullptr || *count < 1) {
        if (count != nullptr) *count = 0;
        return kErrEmpty;
    }
    int stored = 0;
    while (token != nullptr && stored < *count) {
        table[stored++] = static_cast<std::uint8_t>(std::strtol(token, nullptr, 10));
        token = std::strtok(nullptr, ",");
    }
    *count = stored;
    return kOk;
}

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

int qvs_wlan_get_shared_ssid_list(uint32_t handle, uint8_t *table, int *count) {
    return get_mapped_ssid_list(handle, table, count, kSelectShared);
}

int qvs_wlan_get_guest_ssid_list(uint32_t handle, uint8_t *table, int *count) {
    return get_mapped_ssid_list(handle, table, count, kSelectGuest);
}

int qvs_wlan_get_ext_ssid_idx_by_mapped_ssid_oid_idx(uint32_t handle, int position, int selector) {
    if (handle == 0) return kFail;
    if (position < 1 || position > kMapRoom) return kFail;
    if (list_param(selector) == nullptr) return kFail;
    uint8_t table[kMapRoom] = {};
    int count = kMapRoom;
    if (get_mapped_ssid_list(handle, table, &count, selector) != kOk) return kFail;
    if (count < position) return kFail;
    return table[position - 1];
}

int qvs_wlan_update_mapped_list(uint32_t handle, int position, int value, int selector) {
    if (handle == 0) return kFail;
    if (position < 1 || position > kMapRoom) return kFail;
    const char *param = list_param(selector);
    if (param == nullptr) return kFail;
    uint8_t table[kMapRoom] = {};
    int count = kMapRoom;
    if (get_mapped_ssid_list(handle, table, &count, selector) != kOk) return kFail;

    if (value != 0) {
        for (int i = 0; i < count; ++i)
            if (table[i] == value) return kFail;  // no duplicates
    }
    table[position - 1] = static_cast<uint8_t>(value);

    // The entries read, and up to the position when it lies beyond them.
    char text[kTextSize];
    join_entries(table, count > position ? count : position, text);
    return ::qvsXml_setOneParameterByOIDIndirect(handle, QVS_OID_WIFI_COMMON, 0, param, kTypeString, text);
}

}  // extern "C"
