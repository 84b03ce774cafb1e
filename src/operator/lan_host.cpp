// SPDX-License-Identifier: MIT
// LAN host hardware entries: the QoS host entry of one LAN device kept in step
// with its record, and the entry's "BucketID" and "CounterID" written back.
#include <cstdint>

#include "core/store.hpp"

using namespace qvs;

namespace {

constexpr int kLastLanDevice = 255;
constexpr int kMaxHardwareEntries = 255;
constexpr int kEntryEnable = 1;

bool holds_entry(const QVS_LAN_HOST_REC &host) { return host.BucketID != 0 || host.CounterID != 0; }

// Devices 1 to 255 that already hold a hardware entry.
int entries_in_use(Handle h) {
    int count = 0;
    for (int device = 1; device <= kLastLanDevice; ++device) {
        QVS_IA ia = QVS_IA_VALUE(2, "1,%d", device);
        const auto *host = object<QVS_LAN_HOST_REC>(h, QVS_OID_LAN_HOST, ia);
        if (host != nullptr && holds_entry(*host)) ++count;
    }
    return count;
}

}  // namespace

extern "C" {

QVS_API int qvsTask_LanDeviceHost_exec(uint32_t handle, int hostIndex, const void *newHost, const void *oldHost) {
    if (handle == 0) return kFail;
    const int in_use = entries_in_use(handle);
    const auto *host = static_cast<const QVS_LAN_HOST_REC *>(newHost);
    const auto *old = static_cast<const QVS_LAN_HOST_REC *>(oldHost);
    if (host == nullptr || ::isValidMac(host->MACAddress) == 0) {
        QVS_UTIL_PRINTF("Invalid Host. index:%d", hostIndex);
        return kFail;
    }
    const std::uint8_t *mac = host->MACAddress;

    // 32-bit slots holding the 16-bit numbers; the QoS API updates them.
    std::uint32_t bucket = host->BucketID;
    std::uint32_t counter = host->CounterID;
    if (host->Active == 0) {
        if (bucket != 0 || counter != 0) {
            QVS_UTIL_PRINTF("LAN HostEntry del index:%d mac=%02x:%02x:%02x:%02x:%02x:%02x\n", hostIndex, mac[0],
                            mac[1], mac[2], mac[3], mac[4], mac[5]);
            ::libqv_qos_hostEntryDel(hostIndex, mac, &bucket, &counter);
        }
    } else {
        // At most 255 devices are counted: kept as a guard all the same.
        if (in_use > kMaxHardwareEntries) {
            QVS_UTIL_PRINTF("NO more HW resource for LAN host!");
            return kFail;
        }
        const bool unchanged = old != nullptr && old->Active != 0 && old->UpSpeedLimit == host->UpSpeedLimit &&
                               old->DownSpeedLimit == host->DownSpeedLimit;
        if (!unchanged) {
            // The old record's address as a number (exact on the 32-bit gateway).
            const auto old_address = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(old));
            QVS_UTIL_PRINTF("LAN HostEntry add index:%d  p_old=0x%X mac=%02x:%02x:%02x:%02x:%02x:%02x\n", hostIndex,
                            old_address, mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
            ::libqv_qos_hostEntryAdd(hostIndex, mac, kEntryEnable, host->UpSpeedLimit, host->DownSpeedLimit,
                                     &bucket, &counter);
        }
    }

    ParamList list;
    if (!list) {
        QVS_UTIL_PRINTF("newParameterList() failed!!!");
        return kFail;
    }
    list.add("BucketID", kTypeHostValue, &bucket);
    list.add("CounterID", kTypeHostValue, &counter);
    return list.apply(handle, host);
}

}  // extern "C"
