// SPDX-License-Identifier: MIT
// CMCC timed tasks (InternetGatewayDevice.X_CMCC_TimedTask.Task.<n>): at their
// minute they raise a platform event, or switch Wi-Fi off and back on.
#include <cstdint>

#include "operator/cmcc_schedule.hpp"
#include "wlan/ssid_enable.hpp"

using namespace qvs;

namespace {

constexpr std::uint32_t kActionEvent = 1;
constexpr std::uint32_t kActionWifiOffOn = 2;
constexpr int kTimedTaskEvent = 300;
// SSID 0 in a task stands for both first SSIDs.
constexpr int kFirstSsid = 1;
constexpr int kSecondFirstSsid = 5;

void switch_wifi(std::uint32_t ssid, int enable) {
    if (ssid != 0) {
        ::__setSSIDEnable(static_cast<int>(ssid), enable);
        return;
    }
    ::__setSSIDEnable(kFirstSsid, enable);
    ::__setSSIDEnable(kSecondFirstSsid, enable);
}

}  // namespace

extern "C" {

QVS_API int qvs_cmcc_timedTask_handler(int instance) {
    QVS_ATTACH(store, "XMLSHMINIT fail\n");
    if (!store) return kFail;
    const Handle h = store.handle();
    QVS_IA ia = QVS_IA_VALUE(1, "%d", instance);
    const auto *task = object<QVS_CMCC_TIMED_TASK_REC>(h, QVS_OID_CMCC_TIMED_TASK, ia);
    if (task == nullptr) return kFail;
    if (task->Enable != 1) return kOk;

    // The task's fields, kept before the task may be deleted below.
    const std::uint32_t action = task->Action;
    const std::uint32_t ssid = task->SSIDIndex;
    const std::uint32_t time = task->Time;
    const std::uint32_t end_time = task->EndTime;
    const bool once_removable = task->Repeat == 0 && task->Removable == 1;

    if (action == kActionEvent) {
        if (!op::timer_matches(time)) return kFail;
        if (once_removable) {
            ::qvsXml_delObjectByOIDIAIndirect(h, QVS_OID_CMCC_TIMED_TASK, ia);
            ::qvsXml_SaveIndirect(h);
        }
        std::uint32_t payload = 0;
        ::qvs_eventNotify(kTimedTaskEvent, sizeof payload, &payload);
        return kOk;
    }
    if (action == kActionWifiOffOn) {
        // The switch-off minute comes first: equal times only switch off, and
        // the task is never removed then.
        if (op::timer_matches(time)) {
            switch_wifi(ssid, 0);
        } else if (op::timer_matches(end_time)) {
            switch_wifi(ssid, 1);
            if (once_removable) {
                ::qvsXml_delObjectByOIDIAIndirect(h, QVS_OID_CMCC_TIMED_TASK, ia);
                ::qvsXml_SaveIndirect(h);
            }
        }
        return kOk;
    }
    return kOk;
}

}  // extern "C"
