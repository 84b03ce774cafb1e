// SPDX-License-Identifier: MIT
// Fixture files at gateway paths: a file the PC lacks appears, a real one
// reads as chosen or disappears, and the rest of /proc keeps answering.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "proc_fixture.hpp"
#include "qvs_utils.h"
#include "test_support.hpp"

namespace {

using qvstest::exists;
using qvstest::read_file;

TEST(ProcFixture, AFileThePcLacksAppearsAtItsPath) {
    qvstest::present_file("/proc/mtd", "dev:    size   erasesize  name\nmtd0: 00100000 00010000 \"boot\"\n");
    EXPECT_EQ(read_file("/proc/mtd"), "dev:    size   erasesize  name\nmtd0: 00100000 00010000 \"boot\"\n");
    // The rest of /proc is still the real one.
    EXPECT_NE(read_file("/proc/meminfo").find("MemTotal:"), std::string::npos);
    char link[256] = {0};
    ASSERT_GT(::readlink("/proc/self/exe", link, sizeof link - 1), 0);
    EXPECT_NE(std::string(link).find("test_support_proc_fixture"), std::string::npos);
}

TEST(ProcFixture, ARealFileReadsAsChosenAndCanBeHidden) {
    qvstest::present_file("/proc/meminfo", "MemTotal: 1000 kB\n");
    EXPECT_EQ(read_file("/proc/meminfo"), "MemTotal: 1000 kB\n");
    qvstest::hide_file("/proc/meminfo");
    EXPECT_FALSE(exists("/proc/meminfo"));
    EXPECT_TRUE(exists("/proc/version"));
}

TEST(ProcFixture, ANestedPathKeepsItsSiblings) {
    qvstest::present_file("/proc/bus/pci/devices", "0000\t14e4aa52\t0\n");
    EXPECT_EQ(read_file("/proc/bus/pci/devices"), "0000\t14e4aa52\t0\n");
    qvstest::present_file("/proc/bus/pci/devices", "");
    EXPECT_TRUE(exists("/proc/bus/pci/devices"));
    EXPECT_EQ(read_file("/proc/bus/pci/devices"), "");
    qvstest::hide_file("/proc/bus/pci/devices");
    EXPECT_FALSE(exists("/proc/bus/pci/devices"));
    EXPECT_TRUE(exists("/proc/bus"));
}

TEST(ProcFixture, TheLibraryStillFindsItsOwnPath) {
    qvstest::present_file("/proc/mtd", "");
    char *path = util_getPidname();
    ASSERT_NE(path, nullptr);
    EXPECT_NE(std::string(path).find("test_support_proc_fixture"), std::string::npos);
    free(path);
}

TEST(ProcFixture, OutsideProcTheFileIsWritten) {
    qvstest::present_file("/userconfig/config/fixture/a.txt", "x");
    EXPECT_EQ(read_file("/userconfig/config/fixture/a.txt"), "x");
    qvstest::hide_file("/userconfig/config/fixture/a.txt");
    EXPECT_FALSE(exists("/userconfig/config/fixture/a.txt"));
}

}  // namespace
