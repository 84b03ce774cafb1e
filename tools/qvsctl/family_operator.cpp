// SPDX-License-Identifier: MIT
// Operator family: CMCC timed tasks and device limits, speed limits by MAC,
// CUC sleep mode, Wi-Fi hardware check, channels in use, LAN host entries.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "qvs_utils.h"
#include "qvsctl.hpp"
#include "store.hpp"

#include "libqv.h"

namespace {

bool parse_instance(const char *text, int &out) {
    long long v = 0;
    if (!qvsctl::parse_int(text, -2147483648LL, 2147483647LL, v)) return false;
    out = static_cast<int>(v);
    return true;
}

bool parse_u32(const char *text, uint32_t &out) {
    long long v = 0;
    if (!qvsctl::parse_int(text, 0, 4294967295LL, v)) return false;
    out = static_cast<uint32_t>(v);
    return true;
}

int run_timed_task(char **argv) {
    int instance = 0;
    if (!parse_instance(argv[0], instance)) return qvsctl::kBadArgs;
    qvsctl::print_result(qvs_cmcc_timedTask_handler(instance));
    return qvsctl::kRan;
}

int run_device_limit(char **argv) {
    int instance = 0;
    if (!parse_instance(argv[0], instance)) return qvsctl::kBadArgs;
    qvsctl::print_result(qvs_cmcc_deviceLimit_handler(instance));
    return qvsctl::kRan;
}

int run_speed_limit(char **argv) {
    unsigned char mac[6] = {};
    uint32_t up = 0, down = 0;
    if (!qvsctl::parse_mac(argv[0], mac) || !parse_u32(argv[1], up) || !parse_u32(argv[2], down))
        return qvsctl::kBadArgs;
    qvsctl::print_result(qvs_setSpeedLimitByMac(mac, up, down));
    return qvsctl::kRan;
}

int run_set_sleep(char **argv) {
    int enable = 0;
    if (!parse_instance(argv[0], enable)) return qvsctl::kBadArgs;
    qvsctl::print_result(qvs_cuc_set_sleep_mode(enable));
    return qvsctl::kRan;
}

int run_get_sleep(char **) {
    qvsctl::print_result(qvs_cuc_get_sleep_mode());
    return qvsctl::kRan;
}

int run_hw_start(char **) {
    qvsctl::print_result(qvs_cuc_check_hardware_start());
    return qvsctl::kRan;
}

int run_hw_status(char **) {
    uint8_t status[QVS_HW_STATUS_SIZE] = {};
    qvsctl::print_result(qvs_cuc_check_hardware_status(status));
    qvsctl::print_hex("status", status, sizeof status);
    qvsctl::print_int("wifi", status[1]);
    return qvsctl::kRan;
}

int run_channels(char **argv) {
    int radio = 0;
    if (!parse_instance(argv[0], radio)) return qvsctl::kBadArgs;
    char channels[QVS_CHANNELS_IN_USE_SIZE] = {};
    int r = qvs_cuc_get_channelsinuse(radio, channels);
    qvsctl::print_result(r);
    if (r == 0) qvsctl::print_text("channels", channels);
    return qvsctl::kRan;
}

const QVS_LAN_HOST_REC *lan_host(uint32_t handle, int device) {
    if (handle == 0) return nullptr;
    QVS_IA ia = qvsXml_ConstructIAValue("family_operator.cpp", "lan_host", __LINE__, 2, "1,%d", device);
    return static_cast<const QVS_LAN_HOST_REC *>(qvsXml_GetObjectByOID(handle, QVS_OID_LAN_HOST, ia, 1));
}

// <host-index> <device> [<old-active> <old-up> <old-down>]: the device's
// current record as the new one; the old one, when given, is that record
// with the three fields replaced.
int run_lan_host(char **argv) {
    int index = 0, device = 0;
    if (!parse_instance(argv[0], index) || !parse_instance(argv[1], device)) return qvsctl::kBadArgs;
    uint32_t old_active = 0, old_up = 0, old_down = 0;
    bool with_old = argv[2] != nullptr;
    if (with_old && (!parse_u32(argv[2], old_active) || argv[3] == nullptr || !parse_u32(argv[3], old_up) ||
                     argv[4] == nullptr || !parse_u32(argv[4], old_down)))
        return qvsctl::kBadArgs;
    qvsctl::Store store;
    const QVS_LAN_HOST_REC *now = lan_host(store.handle(), device);
    QVS_LAN_HOST_REC old{};
    if (with_old && now != nullptr) {
        std::memcpy(&old, now, sizeof old);
        old.Active = static_cast<uint8_t>(old_active);
        old.UpSpeedLimit = old_up;
        old.DownSpeedLimit = old_down;
    }
    qvsctl::print_result(qvsTask_LanDeviceHost_exec(store.handle(), index, now, with_old ? &old : nullptr));
    if (now != nullptr) {
        qvsctl::print_int("BucketID", now->BucketID);
        qvsctl::print_int("CounterID", now->CounterID);
    }
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"qvs_cmcc_timedTask_handler", "<task-instance>",
     "run a CMCC timed task if now is its minute (event 300, or Wi-Fi off/on)", 1, 1, run_timed_task},
    {"qvs_cmcc_deviceLimit_handler", "<task-instance>",
     "run a CMCC device-limit task (limits at its start, lifted or task removed at its end)", 1, 1,
     run_device_limit},
    {"qvs_setSpeedLimitByMac", "<mac> <up-limit> <down-limit>", "set a LAN device's speed limits by its MAC", 3, 3,
     run_speed_limit},
    {"qvs_cuc_set_sleep_mode", "<enable>", "1: sleep (Wi-Fi, LEDs, LAN ports off); other: wake", 1, 1,
     run_set_sleep},
    {"qvs_cuc_get_sleep_mode", "", "the sleep flag", 0, 0, run_get_sleep},
    {"qvs_cuc_check_hardware_start", "", "start hook of the hardware check (does nothing)", 0, 0, run_hw_start},
    {"qvs_cuc_check_hardware_status", "", "9-byte status; byte 1: 0 Wi-Fi chip present, 254 none", 0, 0,
     run_hw_status},
    {"qvs_cuc_get_channelsinuse", "<radio>", "a radio's channels in use (1: 5 GHz, 2: 2.4 GHz)", 1, 1, run_channels},
    {"qvsTask_LanDeviceHost_exec", "<host-index> <device> [<old-active> <old-up> <old-down>]",
     "bring LAN device <device>'s hardware QoS entry in step (old record: the current one with these fields)", 2,
     5, run_lan_host},
};

}  // namespace

QVSCTL_FAMILY(g_operator, "operator", "CMCC timed tasks and speed limits, CUC sleep and hardware check, LAN host entries",
              kCommands);
