// SPDX-License-Identifier: MIT
// Shared steps of the CMCC task handlers: the minute a task names, and the
// LAN device that holds a MAC address.
#pragma once

#include <cstdint>

#include "core/store.hpp"

namespace qvs::op {

// LAN devices are numbered 1 to 255 ("1,%d"); gaps are skipped.
inline constexpr int kLastLanDevice = 255;

// True when the current local hour and minute are those of `seconds` (seconds
// since local midnight). Prints "now time HH:MM, your timer HH:MM" to
// standard output on every call.
bool timer_matches(std::uint32_t seconds);

// The first LAN device (1 to 255) whose MAC is the 6 given bytes, or null.
const QVS_LAN_HOST_REC *find_lan_device(Handle h, const std::uint8_t mac[6]);

}  // namespace qvs::op
