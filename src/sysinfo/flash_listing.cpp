// SPDX-License-Identifier: MIT
// Reading df's listing for the flash occupancy.
//
// Each line is "<device> <1K-blocks> <used> <available> <use%> <mount point>".
// Two forms differ from the distribution's df on the gateway (busybox):
// - a device name longer than 20 characters stands on a line of its own and
//   its figures on the next line, which is read as the rest of that line
//   (scanned as it is, the figures line would give the used blocks as the
//   size and the use% as the available blocks);
// - a mount point that is mounted over is listed once per mount, each line
//   with the figures of the mount on top (statfs of the path): the watched
//   mount point counts once, with its last line's figures, as the
//   distribution's df lists it.
#include "sysinfo/flash_listing.hpp"

#include <cstdio>
#include <cstring>

namespace qvs::sysinfo {

namespace {

constexpr std::size_t kMountSize = 32;

}  // namespace

bool FlashListing::is_lone_word(const char *line) {
    const char *p = line + std::strspn(line, " \t\n");
    if (*p == '\0') return false;
    p += std::strcspn(p, " \t\n");
    return p[std::strspn(p, " \t\n")] == '\0';
}

void FlashListing::read_line(const char *line) {
    int size = 0;
    int available = 0;
    char mount[kMountSize] = {};
    const char *format = figures_follow_ ? "%d %*d %d %*s %31s" : "%*s %d %*d %d %*s %31s";
    const int got = std::sscanf(line, format, &size, &available, mount);
    figures_follow_ = !figures_follow_ && is_lone_word(line);
    if (got != 3) return;
    Mount *watched = nullptr;
    if (std::strcmp(mount, "/userconfig/config") == 0) watched = &config_;
    if (std::strcmp(mount, "/opt/sgw/apps") == 0) watched = &apps_;
    if (watched == nullptr) return;
    watched->listed = 1;
    watched->size = size;
    watched->available = available;
}

}  // namespace qvs::sysinfo
