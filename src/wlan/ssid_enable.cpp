// SPDX-License-Identifier: MIT
// Switching one SSID on or off by its external index (the operator family's
// timed tasks turn SSIDs 1 to 8 off and on with it).
#include "wlan/ssid_enable.hpp"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "wlan/ssid_map.hpp"

namespace qvs::wlan {

namespace {

// Only the first eight external SSIDs are switched here.
constexpr int kFirstServed = 1;
constexpr int kLastServed = 8;

// Internal index at position ext_idx - 1 of the map text (at most 63
// characters of it), or -1 when the text holds no number there.
int internal_of(const QVS_WIFI_COMMON_REC *rec, int ext_idx) {
    char text[kTextSize] = {};
    std::memcpy(text, rec->X_QV_External_SSID_Map, sizeof text - 1);
    char *save = nullptr;
    int position = 0;
    for (char *token = ::strtok_r(text, ",", &save); token != nullptr; token = ::strtok_r(nullptr, ",", &save)) {
        if (++position == ext_idx) return static_cast<int>(std::strtol(token, nullptr, 10));
    }
    return -1;
}

}  // namespace

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" int __setSSIDEnable(int ext_idx, int enable) {
    QVS_ATTACH(store, "XMLSHMINIT fail\n");
    if (!store) return kFail;
    const Handle h = store.handle();

    int internal_idx = -1;  // an index outside 1 to 8 looks up nothing
    if (ext_idx >= kFirstServed && ext_idx <= kLastServed) {
        const auto *common = object<QVS_WIFI_COMMON_REC>(h, QVS_OID_WIFI_COMMON, 0);
        if (common != nullptr) internal_idx = internal_of(common, ext_idx);
    }

    const auto *ssid = object<QVS_WIFI_SSID_REC>(h, QVS_OID_WIFI_SSID, QVS_IA_VALUE(1, "%d", internal_idx));
    if (ssid != nullptr) {
        const std::uint8_t value = enable != 0 ? 1 : 0;
        ParamList list;
        if (list) {
            list.add("Enable", kTypeBool, &value);
            list.apply(h, ssid);  // the store's result is not examined; not saved here
        }
    }
    return kOk;
}
