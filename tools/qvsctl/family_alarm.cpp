// SPDX-License-Identifier: MIT
// Alarm family: cu_alarmInfo, CU_add_AlarmID, CU_clear_AlarmID,
// add_AlarmInfo_Index, update_numberofAlarmInfo.
#include <cstdint>
#include <cstdio>

#include "qvs_utils.h"
#include "qvsctl.hpp"
#include "store.hpp"

#include "libqv.h"

namespace {


bool parse_code(const char *text, uint32_t &out) {
    long long v = 0;
    if (!qvsctl::parse_int(text, 0, 4294967295LL, v)) return false;
    out = static_cast<uint32_t>(v);
    return true;
}

int run_table(char **) {
    qvsctl::print_result(0);
    for (const CU_ALARM_INFO &row : cu_alarmInfo)
        std::printf("row: %u status=%u severity=%u \"%s\"\n", static_cast<unsigned>(row.alarmCode),
                    static_cast<unsigned>(row.alarmStatus), static_cast<unsigned>(row.perceivedSeverity),
                    row.alarmDetail);
    return qvsctl::kRan;
}

int run_add(char **argv) {
    uint32_t code = 0;
    if (!parse_code(argv[0], code)) return qvsctl::kBadArgs;
    qvsctl::print_result(CU_add_AlarmID(code));
    return qvsctl::kRan;
}

int run_clear(char **argv) {
    uint32_t code = 0;
    if (!parse_code(argv[0], code)) return qvsctl::kBadArgs;
    qvsctl::print_result(CU_clear_AlarmID(code));
    return qvsctl::kRan;
}

int run_index(char **argv) {
    uint32_t code = 0;
    long long status = 0;
    if (!parse_code(argv[0], code) || !qvsctl::parse_int(argv[1], 0, 255, status)) return qvsctl::kBadArgs;
    qvsctl::Store store;
    qvsctl::print_result(add_AlarmInfo_Index(store.handle(), code, static_cast<uint8_t>(status)));
    return qvsctl::kRan;
}

int run_update(char **argv) {
    uint32_t value = 0;
    if (!parse_code(argv[0], value)) return qvsctl::kBadArgs;
    qvsctl::Store store;
    const void *config = store.handle() != 0 ? qvsXml_GetObjectByOID(store.handle(), QVS_OID_ALARM_CONFIG, 0, 1) : nullptr;
    qvsctl::print_result(update_numberofAlarmInfo(store.handle(), config, value));
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"cu_alarmInfo", "", "the alarm definition table (code, status, severity, detail)", 0, 0, run_table},
    {"CU_add_AlarmID", "<alarm-code>", "raise an alarm (new entry or refresh of its entry)", 1, 1, run_add},
    {"CU_clear_AlarmID", "<alarm-code>", "clear an alarm (status 3, cleared time now)", 1, 1, run_clear},
    {"add_AlarmInfo_Index", "<alarm-code> <status>",
     "refresh the entry holding the code (-1) or give the first free index", 2, 2, run_index},
    {"update_numberofAlarmInfo", "<value>", "write NumberOfAlarmInfo on the alarm object", 1, 1, run_update},
};

}  // namespace

QVSCTL_FAMILY(g_alarm, "alarm", "operator alarm table and alarm entries", kCommands);
