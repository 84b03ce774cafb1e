// SPDX-License-Identifier: MIT
// Fault rows of the operator features that attach by themselves: the CMCC
// timed tasks and device limits (each at the minute that makes it act), the
// speed limit by MAC address, the CUC sleep mode both ways and the radio's
// channels in use. qvsTask_LanDeviceHost_exec takes the caller's handle and
// the hardware check reads no store: neither belongs here.
#include <cstdint>
#include <ctime>
#include <string>

#include "fault_table.hpp"
#include "libqv.h"
#include "qvs_utils.h"
#include "qvsim.h"
#include "test_clock.h"

namespace {

// Every task row runs with the test clock pinned at this moment (UTC noon of
// 2026-06-01); the tasks are set to its local minute or two minutes later.
std::time_t pinned() {
    std::tm tm{};
    tm.tm_year = 2026 - 1900;
    tm.tm_mon = 5;
    tm.tm_mday = 1;
    tm.tm_hour = 12;
    return ::timegm(&tm);
}

// Seconds since local midnight of the pinned moment, moved by the given
// seconds (within one day).
std::string local_seconds(int moved = 0) {
    const std::time_t t = pinned();
    std::tm local{};
    ::localtime_r(&t, &local);
    const int s = local.tm_hour * 3600 + local.tm_min * 60 + moved;
    return std::to_string((s + 86400) % 86400);
}

void set(int oid, const char *instance, const char *param, const std::string &value) {
    (void)qvsim_set(oid, instance, param, value.c_str());
}

void add(int oid, const char *instance) {
    if (!qvsim_exists(oid, instance)) (void)qvsim_add_instance(oid, instance);
}

// Timed task 1: Wi-Fi off now on both first SSIDs (two nested attaches of the
// SSID switch). Task 2: a once-only removable event now. Task 3: a once-only
// removable Wi-Fi task whose switch-on minute is now (SSID 1, then removed).
// Device limit 1: limits start now. 2: a once-only limit that ends now (the
// task goes). 3: a daily limit that ends now (limits lifted).
void prepare() {
    const std::string now = local_seconds();
    const std::string later = local_seconds(120);

    set(QVS_OID_CMCC_TIMED_TASK, "1", "Time", now);
    set(QVS_OID_CMCC_TIMED_TASK, "2", "Time", now);
    set(QVS_OID_CMCC_TIMED_TASK, "2", "Enable", "1");
    add(QVS_OID_CMCC_TIMED_TASK, "3");
    set(QVS_OID_CMCC_TIMED_TASK, "3", "Repeat", "0");
    set(QVS_OID_CMCC_TIMED_TASK, "3", "Action", "2");
    set(QVS_OID_CMCC_TIMED_TASK, "3", "SSIDIndex", "1");
    set(QVS_OID_CMCC_TIMED_TASK, "3", "Time", later);
    set(QVS_OID_CMCC_TIMED_TASK, "3", "EndTime", now);
    set(QVS_OID_CMCC_TIMED_TASK, "3", "Removable", "1");
    set(QVS_OID_CMCC_TIMED_TASK, "3", "Enable", "1");

    set(QVS_OID_CMCC_DEVICE_LIMIT, "1", "StartTime", now);
    for (const char *instance : {"2", "3"}) {
        add(QVS_OID_CMCC_DEVICE_LIMIT, instance);
        set(QVS_OID_CMCC_DEVICE_LIMIT, instance, "UpSpeedLimit", "512");
        set(QVS_OID_CMCC_DEVICE_LIMIT, instance, "DownSpeedLimit", "2048");
        set(QVS_OID_CMCC_DEVICE_LIMIT, instance, "Enable", "1");
        set(QVS_OID_CMCC_DEVICE_LIMIT, instance, "StartTime", later);
        set(QVS_OID_CMCC_DEVICE_LIMIT, instance, "EndTime", now);
        set(QVS_OID_CMCC_DEVICE_LIMIT, instance, "MACAddress", "00:1a:2b:3c:4d:01");
    }
    set(QVS_OID_CMCC_DEVICE_LIMIT, "2", "Repeat", "0");
    set(QVS_OID_CMCC_DEVICE_LIMIT, "3", "Repeat", "1");
}

template <int (*Handler)(int), int Instance>
void at_pinned_minute() {
    test_clock_pin(pinned());
    (void)Handler(Instance);
    test_clock_release();
}

}  // namespace

FAULT_FAMILY(operator) {
    const std::vector<int> timed = {QVS_OID_CMCC_TIMED_TASK};
    const std::vector<int> timed_wifi = {QVS_OID_CMCC_TIMED_TASK, QVS_OID_WIFI_COMMON, QVS_OID_WIFI_SSID};
    const std::vector<int> limit = {QVS_OID_CMCC_DEVICE_LIMIT, QVS_OID_LAN_HOST};
    const std::vector<std::string> limits = {"UpSpeedLimit", "DownSpeedLimit"};
    const std::vector<int> sleep = {QVS_OID_SLEEP, QVS_OID_WIFI_COMMON, QVS_OID_LED, QVS_OID_LAN_ETH_IF};
    const std::vector<std::string> sleep_params = {"Enable", "LastWLANEnable", "LastLeds_Turnoff", "X_QV_Enable",
                                                   "Leds_Turnoff"};
    return {"operator",
            prepare,
            {
                {"qvs_cmcc_timedTask_handler wifi off", at_pinned_minute<qvs_cmcc_timedTask_handler, 1>, timed_wifi,
                 {"Enable"}},
                {"qvs_cmcc_timedTask_handler event", at_pinned_minute<qvs_cmcc_timedTask_handler, 2>, timed, {}},
                {"qvs_cmcc_timedTask_handler wifi on", at_pinned_minute<qvs_cmcc_timedTask_handler, 3>, timed_wifi,
                 {"Enable"}},
                {"qvs_cmcc_deviceLimit_handler start", at_pinned_minute<qvs_cmcc_deviceLimit_handler, 1>, limit,
                 limits},
                {"qvs_cmcc_deviceLimit_handler end once", at_pinned_minute<qvs_cmcc_deviceLimit_handler, 2>, limit,
                 limits},
                {"qvs_cmcc_deviceLimit_handler end daily", at_pinned_minute<qvs_cmcc_deviceLimit_handler, 3>, limit,
                 limits},
                {"qvs_setSpeedLimitByMac",
                 [] {
                     const std::uint8_t mac[6] = {0x00, 0x1a, 0x2b, 0x3c, 0x4d, 0x02};
                     (void)qvs_setSpeedLimitByMac(mac, 1024, 4096);
                 },
                 {QVS_OID_LAN_HOST},
                 limits},
                {"qvs_cuc_set_sleep_mode sleep", [] { (void)qvs_cuc_set_sleep_mode(1); }, sleep, sleep_params},
                {"qvs_cuc_set_sleep_mode wake",
                 [] {
                     set(QVS_OID_SLEEP, "", "Enable", "1");
                     (void)qvs_cuc_set_sleep_mode(0);
                 },
                 sleep,
                 sleep_params},
                {"qvs_cuc_get_sleep_mode", [] { (void)qvs_cuc_get_sleep_mode(); }, {QVS_OID_SLEEP}, {}},
                {"qvs_cuc_get_channelsinuse",
                 [] {
                     char channels[QVS_CHANNELS_IN_USE_SIZE] = {};
                     (void)qvs_cuc_get_channelsinuse(1, channels);
                 },
                 {QVS_OID_WIFI_RADIO},
                 {}},
            }};
}
