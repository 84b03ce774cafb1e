// SPDX-License-Identifier: MIT
// A bridge's forwarding database as the kernel publishes it: all learned
// hosts, or the record of one MAC address.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/command.hpp"

namespace qvs::sysinfo {

namespace {

constexpr std::size_t kPathSize = 128;
constexpr std::size_t kRecordSize = 16;
constexpr std::size_t kBatch = 32;
// Reading stops once more than this many records were read.
constexpr std::size_t kReadLimit = 96;
constexpr std::size_t kMaxRecords = kReadLimit + kBatch;

static_assert(sizeof(qvs_fdb_entry) == kRecordSize, "a forwarding record is 16 bytes");

// Reads the first records of "/sys/class/net/<bridge>/brforward" in batches
// of 32 until the end of the file or more than 96 records; returns how many
// (at most 128), 0 when the file cannot be opened.
std::size_t read_forwarding(const char *bridge, qvs_fdb_entry (&records)[kMaxRecords]) {
    char path[kPathSize] = {};
    std::snprintf(path, sizeof path, "/sys/class/net/%s/brforward", bridge != nullptr ? bridge : "");
    File file(path, "r");
    if (!file) return 0;
    std::size_t count = 0;
    while (count <= kReadLimit) {
        if (std::fseek(file.get(), static_cast<long>(count * kRecordSize), SEEK_SET) != 0) break;
        const std::size_t got = std::fread(&records[count], kRecordSize, kBatch, file.get());
        if (got == 0) break;
        count += got;
    }
    return count;
}

}  // namespace

}  // namespace qvs::sysinfo

using namespace qvs::sysinfo;

extern "C" {

int brctl_getmacs_by_mac(const char *brname, const unsigned char *mac, struct qvs_fdb_entry *out) {
    qvs_fdb_entry records[kMaxRecords];
    const std::size_t count = read_forwarding(brname, records);
    if (count == 0 || mac == nullptr) return 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (std::memcmp(records[i].mac_addr, mac, sizeof records[i].mac_addr) != 0) continue;
        if (out != nullptr) std::memcpy(out, &records[i], kRecordSize);
        return 1;
    }
    return 0;
}

int brctl_getmacs(const char *brname, struct qvs_fdb_entry *out, int max) {
    qvs_fdb_entry records[kMaxRecords];
    const std::size_t count = read_forwarding(brname, records);
    const int considered = max < static_cast<int>(count) ? max : static_cast<int>(count);
    if (considered < 1 || out == nullptr) return 0;
    int written = 0;
    for (int i = 0; i < considered; ++i) {
        if (records[i].is_local != 0) continue;
        std::memcpy(&out[written], &records[i], kRecordSize);
        ++written;
    }
    return written;
}

}  // extern "C"
