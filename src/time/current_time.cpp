// SPDX-License-Identifier: MIT
// The current local time stamp for alarm records, from the store's time
// object (summer-time flag and zone text), else the process's local time.
#include <array>
#include <cstring>
#include <ctime>

#include "core/store.hpp"

namespace qvs::time {

namespace {

constexpr std::size_t kCurrentTimeSize = 26;

}  // namespace

}  // namespace qvs::time

extern "C" QVS_API char *get_currentTime(QVS_XMLSHM_HANDLE handle, char *out) {
    using namespace qvs::time;
    if (out == nullptr) return nullptr;

    std::array<char, kCurrentTimeSize> text{};
    if (handle != 0) {
        const QVS_TIME_REC *rec = qvs::object<QVS_TIME_REC>(handle, QVS_OID_TIME, 0);
        if (rec != nullptr) {
            // The record's zone field need not be terminated: take a bounded copy.
            std::array<char, sizeof rec->LocalTimeZone + 1> zone{};
            std::memcpy(zone.data(), rec->LocalTimeZone, sizeof rec->LocalTimeZone);
            if (my_localtime(rec->DaylightSavingsUsed, zone.data(), text.data()) == 0) {
                std::memcpy(out, text.data(), std::strlen(text.data()) + 1);
                return out;
            }
        }
    }

    text.fill(0);
    time_t now = ::time(nullptr);
    struct tm local {};
    if (localtime_r(&now, &local) != nullptr)
        std::strftime(text.data(), kCurrentTimeSize, "%Y-%m-%dT%H:%M:%S", &local);
    QVS_LOG(qvs::kLogTrace, "currTime=%s!\n", text.data());
    std::memcpy(out, text.data(), std::strlen(text.data()) + 1);
    return out;
}
