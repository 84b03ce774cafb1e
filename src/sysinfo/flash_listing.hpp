// SPDX-License-Identifier: MIT
// The df listing the flash occupancy is read from: the two watched mount
// points' sizes and available blocks, in the forms the gateway's busybox
// and the distribution's df print.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvs::sysinfo {

class FlashListing {
public:
    // Reads one line of the listing (as fgets gave it).
    void read_line(const char *line);

    // How many of the two watched mount points were listed.
    int counted() const { return config_.listed + apps_.listed; }
    // Their 1K blocks: sizes and available blocks added up.
    std::int64_t sizes() const { return config_.size + apps_.size; }
    std::int64_t available() const { return config_.available + apps_.available; }

private:
    struct Mount {
        int listed = 0;
        std::int64_t size = 0;
        std::int64_t available = 0;
    };

    static bool is_lone_word(const char *line);

    Mount config_;  // "/userconfig/config"
    Mount apps_;    // "/opt/sgw/apps"
    // The previous line held a device name alone: its figures follow.
    bool figures_follow_ = false;
};

}  // namespace qvs::sysinfo
