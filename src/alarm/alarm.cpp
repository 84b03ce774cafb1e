// SPDX-License-Identifier: MIT
// The operator's alarm log: a fixed table of known alarm codes, and entries
// under InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.<n> (n = 1..255)
// that are raised, refreshed and cleared by alarm code.
#include <cstdint>
#include <cstring>

#include "core/command.hpp"
#include "core/store.hpp"

extern "C" {

const CU_ALARM_INFO cu_alarmInfo[CU_ALARM_INFO_COUNT] = {
    {104001, 2, 2, "Device reboot"},
    {104006, 1, 1, "Port unreachable"},
    {104012, 2, 1, "WLAN is unavailable due to a hardware fault"},
    {104030, 1, 2, "The CPU is above 95% for 5 consecutive minutes"},
    {104031, 1, 2, "Log space is limited"},
    {104032, 1, 3, "The number of consecutive login errors has exceeds 10"},
    {104033, 1, 3, "The bit error rate exceeds 1%"},
    {104034, 1, 3, "The encryption or decryption failed rate exceeds 1%"},
    {104035, 3, 2, "Insufficient available bandwidth"},
    {104050, 1, 1, "The file server is unreachable"},
    {104051, 1, 1, "The username or password of the file server is incorrect"},
    {104052, 1, 1, "File download time out (5 minutes)"},
    {104053, 1, 1, "There's no specified file on the server"},
    {104058, 1, 1, "The firmware upgrade failed"},
    {104059, 1, 1, "Insufficient Flash space"},
    {104060, 1, 1, "The self-service software upgrade is faulty"},
    {104061, 1, 1, "The syslog upload failed"},
    {104122, 1, 1, "The EPG Serve is unreachabler"},
    {104142, 1, 1, "The DDNS Server is unreachabler"},
    {104143, 1, 1, "The username or password of the DDNS is incorrect"},
    {104160, 1, 2, "The video device is not in the supported list"},
};

}  // extern "C"

namespace qvs::alarm {
namespace {

constexpr char kEntryPath[] = "InternetGatewayDevice.X_CU_Function.Log.AlarmInfo.%d";
constexpr char kNoTime[] = "0000-00-00T00:00:00";
constexpr std::uint8_t kStatusCleared = 3;
constexpr int kLastRaiseScanIndex = 254;  // raising scans one index fewer than clearing
constexpr int kLastIndex = 255;
constexpr std::size_t kTimeTextSize = 26;

// Entry n looked up by its instance path.
const QVS_ALARM_INFO_REC *entry_by_path(Handle h, int index) {
    CommandBuffer<128> path;
    path.format(kEntryPath, index);
    return static_cast<const QVS_ALARM_INFO_REC *>(::qvsXml_GetObjectByName(h, path.c_str(), 1));
}

const CU_ALARM_INFO *find_definition(std::uint32_t code) {
    for (const CU_ALARM_INFO &row : cu_alarmInfo)
        if (row.alarmCode == code) return &row;
    return nullptr;
}

}  // namespace
}  // namespace qvs::alarm

extern "C" {

QVS_API int update_numberofAlarmInfo(uint32_t handle, const void *alarmObject, uint32_t value) {
    QVS_LOG(qvs::kLogTrace, "Update NumberOfAlarmInfo=%d\n", static_cast<int>(value));
    if (handle == 0 || alarmObject == nullptr) return 0;
    qvs::ParamList list;
    if (!list) return 0;
    std::uint32_t number = value;
    list.add("NumberOfAlarmInfo", qvs::kTypeUInt32, &number);
    list.apply(handle, alarmObject);
    return 0;
}

QVS_API int add_AlarmInfo_Index(uint32_t handle, uint32_t alarmCode, uint8_t alarmStatus) {
    using namespace qvs::alarm;
    if (handle == 0) return -1;
    QVS_LOG(qvs::kLogTrace, "alarm_code = %d, alarmStatus=%d\n", static_cast<int>(alarmCode),
            static_cast<int>(alarmStatus));

    for (int i = 1; i <= kLastRaiseScanIndex; ++i) {
        const QVS_ALARM_INFO_REC *entry = entry_by_path(handle, i);
        if (entry == nullptr || entry->AlarmCode != alarmCode) continue;
        qvs::ParamList list;
        if (!list) return -1;
        char now[kTimeTextSize] = {};
        get_currentTime(handle, now);
        char cleared[sizeof kNoTime] = {};
        std::memcpy(cleared, kNoTime, sizeof kNoTime);
        std::uint8_t status = alarmStatus;
        list.add("AlarmStatus", qvs::kTypeInt8, &status);
        list.add("AlarmRaisedTime", qvs::kTypeDateTime, now);
        list.add("AlarmClearedTime", qvs::kTypeDateTime, cleared);
        list.apply(handle, entry);
        return -1;
    }

    for (int i = 1; i <= kLastIndex; ++i) {
        if (qvs::object<QVS_ALARM_INFO_REC>(handle, QVS_OID_ALARM_INFO, QVS_IA_VALUE(1, "%d", i)) != nullptr)
            continue;
        QVS_LOG(qvs::kLogTrace, "Add new addindex = %d\n", i);
        return i;
    }
    QVS_LOG(qvs::kLogTrace, "Add new addindex = %d\n", -1);
    return -1;
}

QVS_API int CU_add_AlarmID(uint32_t alarmCode) {
    QVS_ATTACH(store, "xmlShm init error.\r\n");
    if (!store) return -1;
    QVS_LOG(qvs::kLogTrace, "xmlShm init success.\r\n");
    const qvs::Handle h = store.handle();

    const auto *config = qvs::object<QVS_ALARM_CONFIG_REC>(h, QVS_OID_ALARM_CONFIG, 0);
    if (config == nullptr) return -1;
    if (config->AlarmEnable == 0 || config->AlarmLevel == 0) {
        QVS_LOG(qvs::kLogError, "Alarm is disabled.\r\n");
        return -1;
    }
    QVS_LOG(qvs::kLogTrace, "alarm_code=%d\n", static_cast<int>(alarmCode));

    std::uint8_t severity = 0;
    std::uint8_t status = 0;
    const char *detail = "";
    if (const CU_ALARM_INFO *row = qvs::alarm::find_definition(alarmCode)) {
        severity = row->perceivedSeverity;
        status = row->alarmStatus;
        detail = row->alarmDetail;
        if (config->AlarmLevel < severity) {
            QVS_LOG(qvs::kLogError, "current Alarm severity is below AlarmLevel!\n");
            return -1;
        }
    }

    const int index = add_AlarmInfo_Index(h, alarmCode, status);
    if (index == -1) return 0;

    char now[qvs::alarm::kTimeTextSize] = {};
    get_currentTime(h, now);
    QVS_LOG(qvs::kLogTrace, "AlarmCode=%d, AlarmRaisedTime=%s\n", static_cast<int>(alarmCode), now);

    {
        qvs::ParamList list;
        if (!list) return -1;
        std::uint32_t id = static_cast<std::uint32_t>(index);
        std::uint32_t code = alarmCode;
        list.add("AlarmID", qvs::kTypeUInt32, &id);
        list.add("AlarmCode", qvs::kTypeUInt32, &code);
        list.add("AlarmStatus", qvs::kTypeInt8, &status);
        list.add("PerceivedSeverity", qvs::kTypeInt8, &severity);
        list.add("AlarmRaisedTime", qvs::kTypeDateTime, now);
        list.add("AlarmDetail", qvs::kTypeString, detail);
        ::qvsXml_addObjectByOIDIWithParaListIndirect(h, QVS_OID_ALARM_INFO, QVS_IA_VALUE(1, "%d", index),
                                                      list.get());
    }
    update_numberofAlarmInfo(h, config, static_cast<std::uint32_t>(index));
    return 0;
}

QVS_API int CU_clear_AlarmID(uint32_t alarmCode) {
    QVS_ATTACH(store, "xmlShm init error.\r\n");
    if (!store) return -1;
    QVS_LOG(qvs::kLogTrace, "xmlShm init success.\r\n");
    const qvs::Handle h = store.handle();

    for (int i = 1; i <= qvs::alarm::kLastIndex; ++i) {
        const QVS_ALARM_INFO_REC *entry = qvs::alarm::entry_by_path(h, i);
        if (entry == nullptr || entry->AlarmCode != alarmCode) continue;
        qvs::ParamList list;
        if (!list) return 0;
        char now[qvs::alarm::kTimeTextSize] = {};
        get_currentTime(h, now);
        std::uint8_t status = qvs::alarm::kStatusCleared;
        list.add("AlarmStatus", qvs::kTypeInt8, &status);
        list.add("AlarmClearedTime", qvs::kTypeDateTime, now);
        list.apply(h, entry);
        return 0;
    }
    return 0;
}

}  // extern "C"
