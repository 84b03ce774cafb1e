// SPDX-License-Identifier: MIT
// CUC Wi-Fi hardware check: a known Wi-Fi chip on the PCI bus or a hardware
// fault; and the start hook kept for callers.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/command.hpp"
#include "core/store.hpp"

using namespace qvs;

namespace {

constexpr char kPciDevices[] = "/proc/bus/pci/devices";
constexpr std::size_t kStatusSize = 9;
constexpr std::uint8_t kWifiPresent = 0;
constexpr std::uint8_t kWifiFault = 254;

struct PciId {
    unsigned vendor;
    unsigned device;
};

// The known Wi-Fi chips (MediaTek), tried in this order.
constexpr PciId kWifiChips[] = {
    {0x14c3, 0x7615},
    {0x14c3, 0x7915},
    {0x14c3, 0x7663},
    {0x14c3, 0x7603},
};

// True when a line of the PCI device list holds the chip's vendor and device
// as one 8-digit field. An unreadable list counts as not found.
bool pci_chip_present(const PciId &chip) {
    File list(kPciDevices, "r");
    if (!list) {
        std::fprintf(stderr, "fail to open file %s\n", kPciDevices);
        return false;
    }
    char pattern[16] = {};
    std::snprintf(pattern, sizeof pattern, "%04x%04x", chip.vendor, chip.device);
    char line[1024] = {};
    bool found = false;
    while (!found && std::fgets(line, sizeof line, list.get()) != nullptr)
        found = std::strstr(line, pattern) != nullptr;
    return found;
}

}  // namespace

extern "C" {

QVS_API int qvs_cuc_check_hardware_start(void) { return kOk; }

QVS_API int qvs_cuc_check_hardware_status(uint8_t *status) {
    if (status == nullptr) return kOk;
    bool found = false;
    for (const PciId &chip : kWifiChips) {
        found = pci_chip_present(chip);
        if (found) break;
    }
    std::memset(status, 0, kStatusSize);
    status[1] = found ? kWifiPresent : kWifiFault;
    return kOk;
}

}  // extern "C"
