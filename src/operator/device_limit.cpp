// SPDX-License-Identifier: MIT
// Per-device speed limits: set at once by MAC address, or on the schedule of
// a CMCC device-limit task (InternetGatewayDevice.X_CMCC_DeviceLimit.Task.<n>).
#include <cstdint>
#include <cstring>

#include "operator/cmcc_schedule.hpp"

using namespace qvs;

namespace {

constexpr char kUpLimit[] = "UpSpeedLimit";
constexpr char kDownLimit[] = "DownSpeedLimit";

// Adds both limits, each from a slot of its own that outlives the list.
// 0 when both were added, otherwise the OR of the two add results.
int add_limits(ParamList &list, const std::uint32_t &up, const std::uint32_t &down) {
    int up_result = list.add(kUpLimit, kTypeUInt32, &up);
    int down_result = list.add(kDownLimit, kTypeUInt32, &down);
    return up_result | down_result;
}

}  // namespace

extern "C" {

QVS_API int qvs_setSpeedLimitByMac(const uint8_t *mac, uint32_t upLimit, uint32_t downLimit) {
    if (mac == nullptr) return kFail;
    QVS_ATTACH(store, "XMLSHMINIT fail\n");
    if (!store) return kFail;
    ParamList list;
    if (!list) return kFail;
    const QVS_LAN_HOST_REC *device = op::find_lan_device(store.handle(), mac);
    if (device == nullptr) return kFail;

    std::uint32_t up = upLimit;
    std::uint32_t down = downLimit;
    int added = add_limits(list, up, down);
    if (added != 0) return added;
    list.apply(store.handle(), device);
    ::qvsXml_SaveIndirect(store.handle());
    return kOk;
}

QVS_API int qvs_cmcc_deviceLimit_handler(int instance) {
    QVS_ATTACH(store, "XMLSHMINIT fail\n");
    if (!store) return kFail;
    const Handle h = store.handle();
    QVS_IA task_ia = QVS_IA_VALUE(1, "%d", instance);
    const auto *task = object<QVS_CMCC_DEVICE_LIMIT_REC>(h, QVS_OID_CMCC_DEVICE_LIMIT, task_ia);
    if (task == nullptr || task->Enable != 1) return kFail;

    // The task's fields, kept before the task may be deleted below.
    std::uint32_t up = task->UpSpeedLimit;
    std::uint32_t down = task->DownSpeedLimit;
    const std::uint32_t repeat = task->Repeat;
    const std::uint32_t start_time = task->StartTime;
    const std::uint32_t end_time = task->EndTime;
    std::uint8_t mac[6];
    std::memcpy(mac, task->MACAddress, sizeof mac);
    if (up == 0 && down == 0) return kFail;

    const QVS_LAN_HOST_REC *device = op::find_lan_device(h, mac);
    if (device == nullptr) return kFail;
    ParamList list;
    if (!list) return kFail;

    if (op::timer_matches(start_time)) {
        int added = add_limits(list, up, down);
        if (added != 0) return added;
        list.apply(h, device);
        ::qvsXml_SaveIndirect(h);
        return kOk;
    }
    if (op::timer_matches(end_time)) {
        if (repeat != 0) {
            // A daily task lifts the limits: 0 means no limit.
            std::uint32_t no_up = 0;
            std::uint32_t no_down = 0;
            int added = add_limits(list, no_up, no_down);
            if (added != 0) return added;
            list.apply(h, device);
        } else {
            // A once-only task goes; the device keeps the limits it has.
            ::qvsXml_delObjectByOIDIAIndirect(h, QVS_OID_CMCC_DEVICE_LIMIT, task_ia);
            list.apply(h, device);
        }
        ::qvsXml_SaveIndirect(h);
        return kOk;
    }
    return kFail;
}

}  // extern "C"
