// SPDX-License-Identifier: MIT
// Neighbour Wi-Fi scans: the three scan requests, polling for the driver's
// answer, the retrying neighbour statistics, and the supported 802.11
// standards of both radios in the form CT management expects.
#include <unistd.h>

#include <cstring>

#include "wlan/ssid_map.hpp"

namespace qvs::wlan {

namespace {

constexpr char kParamState[] = "X_QV_DiagnosticsState";
constexpr char kRequested[] = "Requested";
constexpr char kRequestForce[] = "Request_Force";
constexpr char kRequestPartial[] = "Request_partial";
constexpr char kComplete[] = "Complete";
constexpr char kError[] = "Error";

constexpr int kPolls = 10;                 // one poll a second
constexpr unsigned kPollPause = 1;         // seconds before each poll
constexpr unsigned kRetryPause = 3;        // seconds between attempts
constexpr int kStateSize = 32;             // a state read: 31 characters and the zero
constexpr int kNeighbourStatsArg = 6000;   // handed to the store's statistics call

// The standards helper logs, and builds its instance addresses, under this name.
constexpr char kStandardsName[] = "__wlan_get_supported_standards";
// The standards in report order.
constexpr const char *kStandards[] = {"a", "b", "g", "n", "ac", "ax"};
constexpr int kStandardCount = sizeof kStandards / sizeof kStandards[0];
constexpr int kStandardsTextSize = 64;     // the supported-standards field and the report

// Writes one scan request into the radio's diagnostics state; the address is
// built under the caller's name. The store's write result, or -1 without a
// list or a radio object.
int request_scan(Handle handle, int radio, const char *value, const char *func) {
    ParamList list;
    if (!list) return kFail;
    QVS_IA ia = ::qvsXml_ConstructIAValue(kSourceFile, func, __LINE__, 1, "%d", radio);
    const auto *rec = object<QVS_WIFI_RADIO_REC>(handle, QVS_OID_WIFI_RADIO, ia);
    if (rec == nullptr) return kFail;
    list.add(kParamState, kTypeString, value);
    return list.apply(handle, rec);
}

using RequestFn = int (*)(uint32_t, int);

// Requests and polls up to retry + 1 times, 3 seconds apart; the first
// non-negative poll result, else the last failure. func names the caller.
int neighbour_stats(Handle handle, int radio, int retry, RequestFn request, const char *func) {
    int result = kFail;
    for (int attempt = 0; attempt <= retry; ++attempt) {
        result = request(handle, radio);
        if (result < 0) break;
        result = ::qvs_wlan_get_scan_result(handle, radio);
        if (result >= 0) return result;
        QVS_UTIL_PRINTF_AS(func, "qvs_wlan_start_scan() Failed, retry%d", attempt);
        if (attempt == retry) break;  // also keeps attempt from passing INT_MAX
        ::sleep(kRetryPause);
    }
    QVS_UTIL_PRINTF_AS(func, "%s() Failed", func);
    return result;
}

// Flags every standard that one radio's comma-separated list names exactly.
void flag_standards(const QVS_WIFI_RADIO_REC *rec, bool (&flags)[kStandardCount]) {
    char text[kStandardsTextSize] = {};
    std::memcpy(text, rec->SupportedStandards, sizeof rec->SupportedStandards - 1);
    char *save = nullptr;
    for (char *token = ::strtok_r(text, ",", &save); token != nullptr; token = ::strtok_r(nullptr, ",", &save))
        for (int i = 0; i < kStandardCount; ++i)
            if (std::strcmp(token, kStandards[i]) == 0) flags[i] = true;
}

int supported_standards(Handle handle, char *out) {
    if (out == nullptr || handle == 0) return kFail;
    bool flags[kStandardCount] = {};
    QVS_IA ia = ::qvsXml_ConstructIAValue(kSourceFile, kStandardsName, __LINE__, 1, "%d", 1);
    for (int radio = 1; radio <= 2; ++radio) {
        ia = ::qvsXmlSetIAValue(1, ia, radio);
        const auto *rec = object<QVS_WIFI_RADIO_REC>(handle, QVS_OID_WIFI_RADIO, ia);
        if (rec == nullptr) {
            QVS_LOG_AS(kStandardsName, kLogError, "fail to get object ID %d\r\n", QVS_OID_WIFI_RADIO);
            continue;
        }
        flag_standards(rec, flags);
    }

    char text[kStandardsTextSize] = {};
    for (int i = 0; i < kStandardCount; ++i) {
        if (!flags[i]) continue;
        std::strcat(text, "802.11");
        std::strcat(text, kStandards[i]);
        std::strcat(text, "/");
    }
    const std::size_t length = std::strlen(text);
    if (length == 0) return kOk;  // nothing named: the caller's buffer is left as it is
    text[length - 1] = '\0';      // no "/" after the last one
    std::memcpy(out, text, length);  // at most 49 characters and the zero
    return kOk;
}

}  // namespace

}  // namespace qvs::wlan

using namespace qvs;
using namespace qvs::wlan;

extern "C" {

int qvs_wlan_start_scan(uint32_t handle, int radio) { return request_scan(handle, radio, kRequested, __func__); }

int qvs_wlan_start_scan_force(uint32_t handle, int radio) {
    return request_scan(handle, radio, kRequestForce, __func__);
}

int qvs_wlan_start_scan_partial(uint32_t handle, int radio) {
    return request_scan(handle, radio, kRequestPartial, __func__);
}

int qvs_wlan_get_scan_result(uint32_t handle, int radio) {
    const QVS_IA ia = QVS_IA_VALUE(1, "%d", radio);
    int result = kFail;
    for (int poll = 0; poll < kPolls; ++poll) {
        ::sleep(kPollPause);
        char state[kStateSize] = {};
        const int read = ::qvsXml_getParameterByOID(handle, QVS_OID_WIFI_RADIO, ia, kParamState, state);
        if (read < 0) {
            result = read;  // the store's code; polling goes on
            continue;
        }
        if (std::strcmp(state, kComplete) == 0) return ::qvsXml_ObjectStats(QVS_OID_WIFI_NEIGHBOR, ia, kNeighbourStatsArg);
        result = kFail;
        if (std::strcmp(state, kError) == 0) break;
    }
    // A scan that failed or timed out is left marked as failed.
    ::qvsXml_setOneParameterByOIDIndirect(handle, QVS_OID_WIFI_RADIO, ia, kParamState, kTypeString, kError);
    return result;
}

int qvs_stats_wlan_neighbor(uint32_t handle, int radio, int retry) {
    return neighbour_stats(handle, radio, retry, qvs_wlan_start_scan, __func__);
}

int qvs_stats_wlan_neighbor_force(uint32_t handle, int radio, int retry) {
    return neighbour_stats(handle, radio, retry, qvs_wlan_start_scan_force, __func__);
}

int qvs_wlan_get_supported_standards_for_ct(uint32_t handle, char *out) { return supported_standards(handle, out); }

}  // extern "C"
