// SPDX-License-Identifier: MIT
// The Wi-Fi hardware check: known chips looked for in "/proc/bus/pci/devices"
// (a fixture file at that path inside the test's sandbox).
#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "proc_fixture.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

namespace {

const char kPci[] = "/proc/bus/pci/devices";
const char kOpenFailure[] = "fail to open file /proc/bus/pci/devices\n";

// A PCI device list line: bus/device/function, vendor and device, interrupt.
std::string pci_line(const char *bdf, const char *id) {
    return std::string(bdf) + "\t" + id + "\t0\t" + "e0000004\t0\t0\t0\t0\t0\t0\t0\t100000\t0\t0\t0\t0\t0\t0\t0\n";
}

class HardwareCheck : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(qvstest::in_sandbox()); }

    // Byte 1 of the status record; the other eight bytes must be 0.
    static int wifi_state(std::string *err_out = nullptr) {
        std::uint8_t status[QVS_HW_STATUS_SIZE + 1];
        std::memset(status, 0xaa, sizeof status);
        qvstest::CaptureFd err(2);
        EXPECT_EQ(qvs_cuc_check_hardware_status(status), 0);
        std::string text = err.text();
        if (err_out != nullptr) *err_out = text;
        for (int i = 0; i < QVS_HW_STATUS_SIZE; ++i) {
            if (i != 1) {
                EXPECT_EQ(status[i], 0) << "byte " << i;
            }
        }
        EXPECT_EQ(status[QVS_HW_STATUS_SIZE], 0xaa) << "written past the record";
        return status[1];
    }
};

TEST_F(HardwareCheck, EachKnownChipCountsAsPresent) {
    for (const char *id : {"14c37615", "14c37915", "14c37663", "14c37603"}) {
        qvstest::present_file(kPci, pci_line("0100", id));
        std::string err;
        EXPECT_EQ(wifi_state(&err), 0) << id;
        EXPECT_EQ(err, "") << id;
    }
}

TEST_F(HardwareCheck, AChipOnlyInALaterLineIsFound) {
    qvstest::present_file(kPci, pci_line("0000", "14e4aa52") + pci_line("0008", "10ec8168") +
                                    pci_line("0100", "14c37663"));
    EXPECT_EQ(wifi_state(), 0);
}

TEST_F(HardwareCheck, TwoChipsOfTheTableAreFine) {
    qvstest::present_file(kPci, pci_line("0100", "14c37603") + pci_line("0200", "14c37615"));
    EXPECT_EQ(wifi_state(), 0);
}

TEST_F(HardwareCheck, OtherMediatekPartsDoNotCount) {
    qvstest::present_file(kPci, pci_line("0100", "14c37961") + pci_line("0200", "14c30608"));
    EXPECT_EQ(wifi_state(), 254);
}

TEST_F(HardwareCheck, TheIdentifiersMustBeOneLowerCaseField) {
    qvstest::present_file(kPci, pci_line("0100", "14C37915") + "14c3 7915\n");
    EXPECT_EQ(wifi_state(), 254);
}

TEST_F(HardwareCheck, ThePatternMayStandAnywhereInTheLine) {
    qvstest::present_file(kPci, "0100\t0\t14c37915\n");
    EXPECT_EQ(wifi_state(), 0);
}

TEST_F(HardwareCheck, AnEmptyListIsAHardwareFault) {
    qvstest::present_file(kPci, "");
    std::string err;
    EXPECT_EQ(wifi_state(&err), 254);
    EXPECT_EQ(err, "");
}

TEST_F(HardwareCheck, NoListIsAHardwareFaultForEveryChipTried) {
    qvstest::hide_file(kPci);
    std::string err;
    EXPECT_EQ(wifi_state(&err), 254);
    std::string four;
    for (int i = 0; i < 4; ++i) four += kOpenFailure;
    EXPECT_EQ(err, four);
}

TEST_F(HardwareCheck, ANullRecordIsLeftAlone) {
    qvstest::present_file(kPci, pci_line("0100", "14c37915"));
    EXPECT_EQ(qvs_cuc_check_hardware_status(nullptr), 0);
}

}  // namespace
