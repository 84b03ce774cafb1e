// SPDX-License-Identifier: MIT
// The minute a CMCC task names, and LAN devices found by MAC address.
#include "operator/cmcc_schedule.hpp"

#include <cstdio>
#include <cstring>
#include <ctime>

namespace qvs::op {

bool timer_matches(std::uint32_t seconds) {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    const int task_hour = static_cast<int>(seconds / 3600);
    const int task_minute = static_cast<int>((seconds % 3600) / 60);
    std::printf("now time %02d:%02d, your timer %02d:%02d\n", local.tm_hour, local.tm_min, task_hour, task_minute);
    return local.tm_hour == task_hour && local.tm_min == task_minute;
}

const QVS_LAN_HOST_REC *find_lan_device(Handle h, const std::uint8_t mac[6]) {
    for (int device = 1; device <= kLastLanDevice; ++device) {
        QVS_IA ia = QVS_IA_VALUE(2, "1,%d", device);
        const auto *rec = object<QVS_LAN_HOST_REC>(h, QVS_OID_LAN_HOST, ia);
        if (rec != nullptr && std::memcmp(rec->MACAddress, mac, 6) == 0) return rec;
    }
    return nullptr;
}

}  // namespace qvs::op
