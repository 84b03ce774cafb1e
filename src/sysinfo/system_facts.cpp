// SPDX-License-Identifier: MIT
// Read-only facts about the gateway: the largest firmware image the flash
// takes, the factory default configuration to apply, area and province, CPU,
// RAM and flash occupancy, and the software version.
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/command.hpp"
#include "core/list_lock.hpp"
#include "core/store.hpp"
#include "sysinfo/flash_listing.hpp"

namespace qvs::sysinfo {

namespace {

constexpr char kMtdPath[] = "/proc/mtd";
constexpr std::size_t kMtdLine = 256;

constexpr std::size_t kAreaSize = 32;
constexpr std::size_t kDefaultPathSize = 96;

constexpr char kMeminfoPath[] = "/proc/meminfo";
constexpr std::size_t kMeminfoSize = 8192;

constexpr char kFlashListing[] = "/tmp/flashsize";
constexpr char kFlashListingLock[] = "flashsize";
constexpr std::size_t kFlashLine = 128;
// Blocks of 1 KB that the read-only images take whatever the mounts hold,
// and the flash's whole size in such blocks (256 MB).
constexpr std::int64_t kFixedFlashBlocks = 50922;
constexpr std::int64_t kFlashBlocks = 262144;

// The default configuration path handed back to callers.
char g_default_xml[kDefaultPathSize];

// Size of a partition line of /proc/mtd ("mtd3: 01a00000 00020000 "rootfs-1"").
std::uint32_t partition_size(const char *line) {
    char device[kMtdLine] = {};
    char name[kMtdLine] = {};
    unsigned int size = 0;
    unsigned int erase = 0;
    std::sscanf(line, "%255s %x %x %255s", device, &size, &erase, name);
    return size;
}

bool exists(const char *path) { return ::access(path, F_OK) == 0; }

}  // namespace

}  // namespace qvs::sysinfo

using namespace qvs;
using namespace qvs::sysinfo;

extern "C" {

int GetMaxImageSize(uint32_t *size) {
    File mtd(kMtdPath, "r");
    if (!mtd) return kOk;
    std::uint32_t rootfs = 0;
    std::uint32_t framework = 0;
    char line[kMtdLine] = {};
    while (std::fgets(line, sizeof line, mtd.get()) != nullptr) {
        if (std::strstr(line, "rootfs-1") != nullptr) rootfs = partition_size(line);
        if (std::strstr(line, "framework-1") != nullptr) framework = partition_size(line);
    }
    if (size != nullptr) *size = rootfs + framework;
    return kOk;
}

char *getPreDefaultXml(void) {
    char area[kAreaSize] = {};
    char province[kAreaSize] = {};
    ::libqv_sys_getArea(area);
    ::libqv_sys_getProvince(province);
    std::memset(g_default_xml, 0, sizeof g_default_xml);

    static const char *const kCandidates[] = {
        "/userconfig/config/customized/%s_%s.default.enc",
        "/usr/config/%s_%s.default.enc",
        "/userconfig/config/oem/%s_%s.default.enc",
    };
    bool found = false;
    for (const char *format : kCandidates) {
        std::snprintf(g_default_xml, sizeof g_default_xml, format, area, province);
        if (exists(g_default_xml)) {
            found = true;
            break;
        }
    }
    if (!found) {
        if (std::strcmp(area, "CN") == 0 && std::strcmp(province, "WX") == 0)
            std::snprintf(g_default_xml, sizeof g_default_xml, "%s", "/usr/config/CN_WX.default.enc");
        else
            std::snprintf(g_default_xml, sizeof g_default_xml, "%s", "/usr/config/config.default.enc");
    }
    QVS_LOG(kLogError, "final default xml is %s\n.", g_default_xml);
    return g_default_xml;
}

int getAreaAndProvince(char *area, char *province) {
    int result = 0;
    if (area != nullptr) result = ::libqv_sys_getArea(area);
    if (province != nullptr) return ::libqv_sys_getProvince(province);
    return result;
}

int getCpuOccupy(unsigned int *percent) {
    std::uint32_t usage = 0;
    if (::libqv_sys_getCpuUsage(&usage) == 0 && percent != nullptr) *percent = usage;
    return kOk;
}

int getRamOccupy(unsigned int *percent) {
    const int fd = ::open(kMeminfoPath, O_RDONLY);
    if (fd < 0) return kFail;
    // One byte more than is read, so the text always ends in a zero.
    char text[kMeminfoSize + 1] = {};
    const ssize_t got = ::read(fd, text, kMeminfoSize);
    if (got < 1) {
        ::close(fd);
        std::puts("Invalid parameters.");
        return kFail;
    }
    int total = 0;
    int available = 0;
    const char *at_total = std::strstr(text, "MemTotal");
    const char *at_available = at_total != nullptr ? std::strstr(at_total, "MemAvailable") : nullptr;
    if (at_total == nullptr || at_available == nullptr || std::sscanf(at_total, "MemTotal: %d KB", &total) != 1 ||
        total <= 0 || std::sscanf(at_available, "MemAvailable: %d KB", &available) != 1) {
        ::close(fd);
        std::puts("couln't parser, parameter error.");
        return kFail;
    }
    const std::int64_t used = static_cast<std::int64_t>(total) - available;
    if (percent != nullptr) *percent = static_cast<unsigned int>(static_cast<std::int32_t>(used * 100 / total));
    ::close(fd);
    return kOk;
}

int getFLASHOccupy(int *percent) {
    // The listing's name is fixed, so callers in other processes share it:
    // one at a time, or one caller's df truncates the listing another is
    // reading, or its rm takes it away before the other opens it.
    ListLock lock(__func__, kFlashListingLock);
    if (!lock) return kFail;
    // The exit status of either command changes nothing: the listing is
    // read when it exists.
    const int listed = std::system("df>/tmp/flashsize");
    static_cast<void>(listed);
    File listing(kFlashListing, "r");
    if (!listing) return kFail;

    FlashListing flash;
    char line[kFlashLine] = {};
    while (std::fgets(line, sizeof line, listing.get()) != nullptr) flash.read_line(line);
    if (percent != nullptr)
        *percent = static_cast<int>((flash.sizes() + kFixedFlashBlocks - flash.available()) * 100 / kFlashBlocks);
    listing.close();
    const int removed = std::system("rm /tmp/flashsize");
    static_cast<void>(removed);
    return flash.counted() == 2 ? kOk : kFail;
}

int qvs_getSWVersion(char *dst) {
    QVS_ATTACH(store, "xmlShm init error.\r\n");
    if (!store) return kFail;
    QVS_LOG(kLogTrace, "xmlShm init success.\r\n");
    const auto *info = object<QVS_DEVICE_INFO_REC>(store.handle(), QVS_OID_DEVICE_INFO, 0);
    if (info == nullptr || info->SoftwareVersion[0] == '\0' || dst == nullptr) return kFail;
    std::strcpy(dst, info->SoftwareVersion);
    return kOk;
}

}  // extern "C"
