// SPDX-License-Identifier: MIT
// System facts: image size from /proc/mtd, the default configuration path,
// area and province, CPU, RAM and flash use, the software version.
#include <sys/statvfs.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "busybox_first.hpp"
#include "proc_fixture.hpp"
#include "sysinfo_fixture.hpp"

using namespace sysinfotest;
using qvstest::CaptureFd;

namespace {

// ---- GetMaxImageSize --------------------------------------------------------

const char kMtdHeader[] = "dev:    size   erasesize  name\n";

class MaxImageSize : public SysinfoTest {};

TEST_F(MaxImageSize, AddsTheRootfsAndFrameworkPartitions) {
    qvstest::present_file("/proc/mtd", std::string(kMtdHeader) +
                                           "mtd0: 00080000 00020000 \"boot\"\n"
                                           "mtd1: 00040000 00020000 \"env\"\n"
                                           "mtd3: 01a00000 00020000 \"rootfs-1\"\n"
                                           "mtd4: 00600000 00020000 \"framework-1\"\n"
                                           "mtd5: 01a00000 00020000 \"rootfs-2\"\n"
                                           "mtd6: 00600000 00020000 \"framework-2\"\n");
    uint32_t size = 0xdeadbeef;
    EXPECT_EQ(GetMaxImageSize(&size), 0);
    EXPECT_EQ(size, 0x01a00000u + 0x00600000u);
    EXPECT_EQ(qvstest::read_file("/proc/mtd").substr(0, 4), "dev:");  // the fixture was read at its real path
}

TEST_F(MaxImageSize, WithoutFrameworkOnlyTheRootfsCounts) {
    qvstest::present_file("/proc/mtd", std::string(kMtdHeader) +
                                           "mtd0: 00080000 00020000 \"boot\"\n"
                                           "mtd3: 02000000 00020000 \"rootfs-1\"\n");
    uint32_t size = 0xdeadbeef;
    EXPECT_EQ(GetMaxImageSize(&size), 0);
    EXPECT_EQ(size, 0x02000000u);
}

TEST_F(MaxImageSize, WithoutRootfsOnlyTheFrameworkCounts) {
    qvstest::present_file("/proc/mtd", std::string(kMtdHeader) + "mtd4: 00600000 00020000 \"framework-1\"\n");
    uint32_t size = 0xdeadbeef;
    EXPECT_EQ(GetMaxImageSize(&size), 0);
    EXPECT_EQ(size, 0x00600000u);
}

TEST_F(MaxImageSize, ALaterLineOverridesAnEarlierOne) {
    qvstest::present_file("/proc/mtd", std::string(kMtdHeader) +
                                           "mtd3: 01000000 00020000 \"rootfs-1\"\n"
                                           "mtd4: 00100000 00020000 \"framework-1\"\n"
                                           "mtd7: 00c00000 00010000 \"rootfs-1\"\n"
                                           "mtd8: 00300000 00010000 \"framework-1\"\n");
    uint32_t size = 0;
    EXPECT_EQ(GetMaxImageSize(&size), 0);
    EXPECT_EQ(size, 0x00c00000u + 0x00300000u);
}

TEST_F(MaxImageSize, NeitherPartitionGivesZero) {
    qvstest::present_file("/proc/mtd", std::string(kMtdHeader) + "mtd0: 00080000 00020000 \"boot\"\n");
    uint32_t size = 0xdeadbeef;
    EXPECT_EQ(GetMaxImageSize(&size), 0);
    EXPECT_EQ(size, 0u);
}

TEST_F(MaxImageSize, AnEmptyListGivesZero) {
    qvstest::present_file("/proc/mtd", "");
    uint32_t size = 0xdeadbeef;
    EXPECT_EQ(GetMaxImageSize(&size), 0);
    EXPECT_EQ(size, 0u);
}

TEST_F(MaxImageSize, NoMtdFileLeavesTheSizeUntouched) {
    qvstest::hide_file("/proc/mtd");
    ASSERT_FALSE(qvstest::exists("/proc/mtd"));
    uint32_t size = 0xdeadbeef;
    EXPECT_EQ(GetMaxImageSize(&size), 0);
    EXPECT_EQ(size, 0xdeadbeefu);
    EXPECT_EQ(effects(), Lines{});
}

// ---- getPreDefaultXml -------------------------------------------------------

class DefaultXml : public SysinfoTest {
protected:
    static void place(const std::string &path) {
        std::string dir = path.substr(0, path.rfind('/'));
        ASSERT_EQ(std::system(("mkdir -p " + dir).c_str()), 0);
        qvstest::write_file(path, "encrypted\n");
    }
    static void area(const char *a, const char *p) {
        device("area", a);
        device("province", p);
    }
    static Lines final_log(const std::string &path) {
        return Lines{"getPreDefaultXml|1|final default xml is " + path + "\n."};
    }
};

TEST_F(DefaultXml, NoFileAndAnyOtherPairGivesTheGeneralDefault) {
    area("CN", "GD");
    const char *path = getPreDefaultXml();
    ASSERT_NE(path, nullptr);
    EXPECT_STREQ(path, "/usr/config/config.default.enc");
    EXPECT_EQ(logs(), final_log("/usr/config/config.default.enc"));
    EXPECT_EQ(effects(), (Lines{"device|libqv_sys_getArea", "device|libqv_sys_getProvince"}));
}

TEST_F(DefaultXml, NoFileAndCnWxGivesTheWuxiDefaultWithoutTestingIt) {
    area("CN", "WX");
    ASSERT_FALSE(qvstest::exists("/usr/config/CN_WX.default.enc"));
    EXPECT_STREQ(getPreDefaultXml(), "/usr/config/CN_WX.default.enc");
    EXPECT_EQ(logs(), final_log("/usr/config/CN_WX.default.enc"));
}

TEST_F(DefaultXml, OnlyTheExactPairCnWxSelectsTheWuxiDefault) {
    area("CN", "WXI");
    EXPECT_STREQ(getPreDefaultXml(), "/usr/config/config.default.enc");
    area("cn", "WX");
    EXPECT_STREQ(getPreDefaultXml(), "/usr/config/config.default.enc");
    area("CNX", "WX");
    EXPECT_STREQ(getPreDefaultXml(), "/usr/config/config.default.enc");
}

TEST_F(DefaultXml, TheCustomisedFileComesFirst) {
    area("CN", "WX");
    place("/userconfig/config/customized/CN_WX.default.enc");
    place("/usr/config/CN_WX.default.enc");
    place("/userconfig/config/oem/CN_WX.default.enc");
    EXPECT_STREQ(getPreDefaultXml(), "/userconfig/config/customized/CN_WX.default.enc");
    EXPECT_EQ(logs(), final_log("/userconfig/config/customized/CN_WX.default.enc"));
}

TEST_F(DefaultXml, TheAreaFileComesSecond) {
    area("CN", "GD");
    place("/usr/config/CN_GD.default.enc");
    place("/userconfig/config/oem/CN_GD.default.enc");
    EXPECT_STREQ(getPreDefaultXml(), "/usr/config/CN_GD.default.enc");
}

TEST_F(DefaultXml, TheOemFileComesThird) {
    area("CN", "SH");
    place("/userconfig/config/oem/CN_SH.default.enc");
    place("/usr/config/config.default.enc");
    EXPECT_STREQ(getPreDefaultXml(), "/userconfig/config/oem/CN_SH.default.enc");
}

TEST_F(DefaultXml, FilesOfAnotherPairAreNotTaken) {
    area("CN", "GD");
    place("/userconfig/config/customized/CN_SH.default.enc");
    place("/usr/config/CN_WX.default.enc");
    EXPECT_STREQ(getPreDefaultXml(), "/usr/config/config.default.enc");
}

TEST_F(DefaultXml, TheBufferIsStaticAndOverwrittenByEachCall) {
    area("CN", "GD");
    char *first = getPreDefaultXml();
    area("CN", "WX");
    char *second = getPreDefaultXml();
    EXPECT_EQ(first, second);
    EXPECT_STREQ(first, "/usr/config/CN_WX.default.enc");
    EXPECT_EQ(logs(), (Lines{"getPreDefaultXml|1|final default xml is /usr/config/config.default.enc\n.",
                             "getPreDefaultXml|1|final default xml is /usr/config/CN_WX.default.enc\n."}));
}

TEST_F(DefaultXml, FailingPlatformCallsLeaveEmptyCodes) {
    fault("device libqv_sys_getArea");
    fault("device libqv_sys_getProvince");
    place("/usr/config/_.default.enc");
    EXPECT_STREQ(getPreDefaultXml(), "/usr/config/_.default.enc");
}

TEST_F(DefaultXml, ALongPathIsCutTo95Characters) {
    const std::string longest(31, 'A');
    area(longest.c_str(), longest.c_str());
    const std::string full = "/userconfig/config/customized/" + longest + "_" + longest + ".default.enc";
    const std::string cut = full.substr(0, 95);
    // A file at the cut path is what the first candidate finds.
    ASSERT_EQ(std::system("mkdir -p /userconfig/config/customized"), 0);
    qvstest::write_file(cut, "x");
    EXPECT_EQ(std::string(getPreDefaultXml()), cut);
}

// ---- getAreaAndProvince -----------------------------------------------------

class AreaProvince : public SysinfoTest {};

TEST_F(AreaProvince, BothCodesFromThePlatform) {
    device("area", "CN");
    device("province", "WX");
    char area[32] = {};
    char province[32] = {};
    EXPECT_EQ(getAreaAndProvince(area, province), 0);
    EXPECT_STREQ(area, "CN");
    EXPECT_STREQ(province, "WX");
    EXPECT_EQ(effects(), (Lines{"device|libqv_sys_getArea", "device|libqv_sys_getProvince"}));
}

TEST_F(AreaProvince, TheProvinceResultWinsOverTheArea) {
    fault("device libqv_sys_getArea");
    char area[32] = {};
    char province[32] = {};
    EXPECT_EQ(getAreaAndProvince(area, province), 0);
    EXPECT_STREQ(province, "GD");
    qvsim_fault_clear();
    fault("device libqv_sys_getProvince");
    EXPECT_EQ(getAreaAndProvince(area, province), -1);
    EXPECT_STREQ(area, "CN");
}

TEST_F(AreaProvince, AreaOnlyGivesTheAreaResult) {
    char area[32] = {};
    EXPECT_EQ(getAreaAndProvince(area, nullptr), 0);
    EXPECT_STREQ(area, "CN");
    fault("device libqv_sys_getArea");
    EXPECT_EQ(getAreaAndProvince(area, nullptr), -1);
    EXPECT_EQ(effects(), (Lines{"device|libqv_sys_getArea", "device|libqv_sys_getArea"}));
}

TEST_F(AreaProvince, ProvinceOnly) {
    char province[32] = {};
    EXPECT_EQ(getAreaAndProvince(nullptr, province), 0);
    EXPECT_STREQ(province, "GD");
    EXPECT_EQ(effects(), Lines{"device|libqv_sys_getProvince"});
}

TEST_F(AreaProvince, NeitherBufferGivesZeroAndCallsNothing) {
    fault("device libqv_sys_getArea");
    fault("device libqv_sys_getProvince");
    EXPECT_EQ(getAreaAndProvince(nullptr, nullptr), 0);
    EXPECT_EQ(effects(), Lines{});
}

// ---- getCpuOccupy -----------------------------------------------------------

class CpuOccupy : public SysinfoTest {};

TEST_F(CpuOccupy, ThePlatformsUsage) {
    device("cpu_usage", "37");
    unsigned int percent = 999;
    EXPECT_EQ(getCpuOccupy(&percent), 0);
    EXPECT_EQ(percent, 37u);
    EXPECT_EQ(effects(), Lines{"device|libqv_sys_getCpuUsage"});
}

TEST_F(CpuOccupy, AFailedPlatformCallLeavesPercentUntouchedAndStillGivesZero) {
    fault("device libqv_sys_getCpuUsage");
    unsigned int percent = 999;
    EXPECT_EQ(getCpuOccupy(&percent), 0);
    EXPECT_EQ(percent, 999u);
    EXPECT_EQ(effects(), Lines{"device|libqv_sys_getCpuUsage"});
}

// ---- getRamOccupy -----------------------------------------------------------

class RamOccupy : public SysinfoTest {
protected:
    static long field(const std::string &text, const std::string &name) {
        auto at = text.find(name + ":");
        if (at == std::string::npos) return -1;
        return std::strtol(text.c_str() + at + name.size() + 1, nullptr, 10);
    }
};

TEST_F(RamOccupy, TheRealMeminfo) {
    const std::string before = qvstest::read_file("/proc/meminfo");
    unsigned int percent = 999;
    CaptureFd out(1);
    EXPECT_EQ(getRamOccupy(&percent), 0);
    EXPECT_EQ(out.text(), "");
    const std::string after = qvstest::read_file("/proc/meminfo");
    EXPECT_LE(percent, 100u);
    // MemAvailable moves while the test runs: the result lies between the
    // values of a reading just before and just after.
    const long total = field(before, "MemTotal");
    ASSERT_GT(total, 0);
    long lo = 100 * (total - field(before, "MemAvailable")) / total;
    long hi = 100 * (total - field(after, "MemAvailable")) / total;
    if (lo > hi) std::swap(lo, hi);
    EXPECT_GE(static_cast<long>(percent), lo - 1);
    EXPECT_LE(static_cast<long>(percent), hi + 1);
}

TEST_F(RamOccupy, TheArithmeticTruncates) {
    qvstest::present_file("/proc/meminfo",
                          "MemTotal:        1000 kB\nMemFree:          100 kB\nMemAvailable:     333 kB\n");
    unsigned int percent = 999;
    EXPECT_EQ(getRamOccupy(&percent), 0);
    EXPECT_EQ(percent, 66u);
}

TEST_F(RamOccupy, AllUsedAndAllFree) {
    qvstest::present_file("/proc/meminfo", "MemTotal: 262144 kB\nMemAvailable: 0 kB\n");
    unsigned int percent = 999;
    EXPECT_EQ(getRamOccupy(&percent), 0);
    EXPECT_EQ(percent, 100u);
    qvstest::present_file("/proc/meminfo", "MemTotal: 262144 kB\nMemAvailable: 262144 kB\n");
    EXPECT_EQ(getRamOccupy(&percent), 0);
    EXPECT_EQ(percent, 0u);
}

TEST_F(RamOccupy, AGatewaySizedMeminfo) {
    qvstest::present_file("/proc/meminfo",
                          "MemTotal:         244304 kB\nMemFree:           18876 kB\nMemAvailable:      87972 kB\n"
                          "Buffers:            4828 kB\nCached:            79260 kB\n");
    unsigned int percent = 999;
    EXPECT_EQ(getRamOccupy(&percent), 0);
    EXPECT_EQ(percent, 100u * (244304u - 87972u) / 244304u);  // 63
}

TEST_F(RamOccupy, WithoutMemAvailableItCannotParse) {
    qvstest::present_file("/proc/meminfo",
                          "MemTotal:        1000 kB\nMemFree:          100 kB\nBuffers:           50 kB\n");
    unsigned int percent = 999;
    CaptureFd out(1);
    EXPECT_EQ(getRamOccupy(&percent), -1);
    EXPECT_EQ(out.text(), "couln't parser, parameter error.\n");
    EXPECT_EQ(percent, 999u);
}

TEST_F(RamOccupy, WithoutMemTotalItCannotParse) {
    qvstest::present_file("/proc/meminfo", "MemFree: 100 kB\nMemAvailable: 333 kB\n");
    unsigned int percent = 999;
    CaptureFd out(1);
    EXPECT_EQ(getRamOccupy(&percent), -1);
    EXPECT_EQ(out.text(), "couln't parser, parameter error.\n");
    EXPECT_EQ(percent, 999u);
}

TEST_F(RamOccupy, MemAvailableIsLookedForAfterMemTotal) {
    qvstest::present_file("/proc/meminfo", "MemAvailable: 333 kB\nMemTotal: 1000 kB\nMemFree: 100 kB\n");
    unsigned int percent = 999;
    CaptureFd out(1);
    EXPECT_EQ(getRamOccupy(&percent), -1);
    EXPECT_EQ(out.text(), "couln't parser, parameter error.\n");
}

TEST_F(RamOccupy, AZeroTotalCannotBeDividedBy) {
    qvstest::present_file("/proc/meminfo", "MemTotal: 0 kB\nMemAvailable: 0 kB\n");
    unsigned int percent = 999;
    CaptureFd out(1);
    EXPECT_EQ(getRamOccupy(&percent), -1);
    EXPECT_EQ(out.text(), "couln't parser, parameter error.\n");
    EXPECT_EQ(percent, 999u);
}

TEST_F(RamOccupy, AnEmptyFileIsInvalid) {
    qvstest::present_file("/proc/meminfo", "");
    unsigned int percent = 999;
    CaptureFd out(1);
    EXPECT_EQ(getRamOccupy(&percent), -1);
    EXPECT_EQ(out.text(), "Invalid parameters.\n");
    EXPECT_EQ(percent, 999u);
}

TEST_F(RamOccupy, NoFileFailsSilently) {
    qvstest::hide_file("/proc/meminfo");
    unsigned int percent = 999;
    CaptureFd out(1);
    CaptureFd err(2);
    EXPECT_EQ(getRamOccupy(&percent), -1);
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(err.text(), "");
    EXPECT_EQ(percent, 999u);
    EXPECT_EQ(logs(), Lines{});
}

TEST_F(RamOccupy, OnlyTheFirst8192BytesAreRead) {
    // MemAvailable beyond the first 8192 bytes is not seen.
    std::string text = "MemTotal: 1000 kB\n";
    while (text.size() < 8200) text += "Filler:        1 kB\n";
    qvstest::present_file("/proc/meminfo", text + "MemAvailable: 500 kB\n");
    unsigned int percent = 999;
    CaptureFd out(1);
    EXPECT_EQ(getRamOccupy(&percent), -1);
    EXPECT_EQ(out.text(), "couln't parser, parameter error.\n");
    // Within them it is.
    std::string fits = "MemTotal: 1000 kB\n";
    while (fits.size() < 8150) fits += "Filler:        1 kB\n";
    qvstest::present_file("/proc/meminfo", fits + "MemAvailable: 500 kB\n");
    EXPECT_EQ(getRamOccupy(&percent), 0);
    EXPECT_EQ(percent, 50u);
}

// ---- getFLASHOccupy ---------------------------------------------------------

class FlashOccupy : public SysinfoTest {
protected:
    struct Blocks {
        long long size;
        long long avail;
    };
    // What df reports for a mount point, in 1K blocks.
    static Blocks blocks(const char *mount) {
        struct statvfs st {};
        EXPECT_EQ(::statvfs(mount, &st), 0) << mount;
        const auto frsize = static_cast<long long>(st.f_frsize);
        return {static_cast<long long>(st.f_blocks) * frsize / 1024, static_cast<long long>(st.f_bavail) * frsize / 1024};
    }
    static void mount_tmpfs(const char *dir, const char *size, const char *device = "qvstest") {
        ASSERT_EQ(std::system((std::string("mkdir -p ") + dir + " && mount -t tmpfs -o size=" + size + " " + device +
                               " " + dir)
                                  .c_str()),
                  0);
    }
    static void fill(const char *dir, int kib) {
        ASSERT_EQ(std::system(("dd if=/dev/zero of=" + std::string(dir) + "/fill bs=1024 count=" +
                               std::to_string(kib) + " 2>/dev/null")
                                  .c_str()),
                  0);
    }
    static int expected(long long sizes, long long avail) {
        return static_cast<int>((sizes + 50922 - avail) * 100 / 262144);
    }
};

TEST_F(FlashOccupy, BothMountsCounted) {
    mount_tmpfs("/userconfig/config", "8m");
    mount_tmpfs("/opt/sgw/apps", "64m");
    fill("/userconfig/config", 3000);
    fill("/opt/sgw/apps", 20000);
    const Blocks cfg = blocks("/userconfig/config");
    const Blocks apps = blocks("/opt/sgw/apps");
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), 0);
    EXPECT_EQ(percent, expected(cfg.size + apps.size, cfg.avail + apps.avail));
    // (8192 + 65536 + 50922 - (8192 - 3000) - (65536 - 20000)) * 100 / 262144
    EXPECT_EQ(percent, 28);
    EXPECT_FALSE(qvstest::exists("/tmp/flashsize"));
}

TEST_F(FlashOccupy, EmptyMountsCountOnlyTheFixedBlocks) {
    mount_tmpfs("/userconfig/config", "16m");
    mount_tmpfs("/opt/sgw/apps", "100m");
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), 0);
    EXPECT_EQ(percent, 50922 * 100 / 262144);  // 19
}

TEST_F(FlashOccupy, AFullFlashGoesPast100) {
    mount_tmpfs("/userconfig/config", "64m");
    mount_tmpfs("/opt/sgw/apps", "200m");
    fill("/userconfig/config", 65536);
    fill("/opt/sgw/apps", 204800);
    const Blocks cfg = blocks("/userconfig/config");
    const Blocks apps = blocks("/opt/sgw/apps");
    ASSERT_EQ(cfg.avail + apps.avail, 0);
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), 0);
    EXPECT_EQ(percent, (65536 + 204800 + 50922) * 100 / 262144);  // 122
}

TEST_F(FlashOccupy, OnlyTheConfigMountWritesPercentAndFails) {
    mount_tmpfs("/userconfig/config", "8m");
    fill("/userconfig/config", 4096);
    const Blocks cfg = blocks("/userconfig/config");
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), -1);
    EXPECT_EQ(percent, expected(cfg.size, cfg.avail));
    EXPECT_EQ(percent, (4096 + 50922) * 100 / 262144);  // 20
    EXPECT_FALSE(qvstest::exists("/tmp/flashsize"));
}

TEST_F(FlashOccupy, OnlyTheAppsMountWritesPercentAndFails) {
    mount_tmpfs("/opt/sgw/apps", "32m");
    fill("/opt/sgw/apps", 30000);
    const Blocks apps = blocks("/opt/sgw/apps");
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), -1);
    EXPECT_EQ(percent, expected(apps.size, apps.avail));
}

TEST_F(FlashOccupy, NeitherMountGivesTheFixedShareAndFails) {
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), -1);
    EXPECT_EQ(percent, 19);
}

TEST_F(FlashOccupy, OtherMountPointsDoNotCount) {
    // Mounts beside and below the watched ones are other mount points.
    mount_tmpfs("/userconfig/config/sub", "8m");
    mount_tmpfs("/opt/sgw", "8m");
    mount_tmpfs("/opt/sgw/apps2", "8m");
    fill("/opt/sgw/apps2", 4000);
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), -1);
    EXPECT_EQ(percent, 19);
}

TEST_F(FlashOccupy, AnOldListingIsReplaced) {
    qvstest::write_file("/tmp/flashsize", "x 1 1 1 1% /userconfig/config\nx 1 1 1 1% /opt/sgw/apps\n");
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), -1);
    EXPECT_EQ(percent, 19);
    EXPECT_FALSE(qvstest::exists("/tmp/flashsize"));
}

TEST_F(FlashOccupy, NoListingLeavesPercentUntouched) {
    mount_tmpfs("/userconfig/config", "8m");
    mount_tmpfs("/opt/sgw/apps", "8m");
    // df cannot write its listing on a read-only /tmp (a fresh, empty one:
    // remounting the sandbox's own fails while a tool holds a file open there).
    ASSERT_EQ(std::system("mount -t tmpfs -o ro qvs-ro-tmp /tmp"), 0);
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), -1);
    EXPECT_EQ(percent, -999);
}

// The gateway's df is busybox's: a device name longer than 20 characters
// stands on a line of its own, its figures on the next line; a mount point
// mounted over is listed once per mount. The sandbox's df (the suite's
// userland) and busybox's df named first on the search path both give the
// figures the file systems have.
class FlashListingForms : public FlashOccupy, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        FlashOccupy::SetUp();
        if (!GetParam()) return;
        busybox_ = std::make_unique<qvstest::BusyboxFirst>(std::initializer_list<const char *>{"df"});
        ASSERT_TRUE(busybox_->ok());
        ASSERT_NE(qvstest::run("df --help 2>&1").find("BusyBox"), std::string::npos);
    }
    void TearDown() override {
        busybox_.reset();
        FlashOccupy::TearDown();
    }
    // The device names longer than 20 characters that df printed alone on a line.
    static std::vector<std::string> lone_device_lines() {
        std::vector<std::string> out;
        for (const std::string &line : qvstest::split(qvstest::run("df"), '\n'))
            if (line.rfind("qvs-", 0) == 0 && line.find(' ') == std::string::npos) out.push_back(line);
        return out;
    }

private:
    std::unique_ptr<qvstest::BusyboxFirst> busybox_;
};

const char kLongConfigDevice[] = "qvs-userconfig-flash-partition";  // 30 characters
const char kLongAppsDevice[] = "qvs-sgw-apps-partition";            // 22 characters

TEST_P(FlashListingForms, LongDeviceNamesGiveTheMountsFigures) {
    mount_tmpfs("/userconfig/config", "8m", kLongConfigDevice);
    mount_tmpfs("/opt/sgw/apps", "64m", kLongAppsDevice);
    // Used blocks just past 28 %: read as the figures' line of its own, the
    // busybox listing would give the used blocks less the use% figures as
    // the used blocks, and 27.
    fill("/userconfig/config", 3000);
    fill("/opt/sgw/apps", 19480);
    if (GetParam()) {
        EXPECT_EQ(lone_device_lines(), (std::vector<std::string>{kLongConfigDevice, kLongAppsDevice}));
    }
    const Blocks cfg = blocks("/userconfig/config");
    const Blocks apps = blocks("/opt/sgw/apps");
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), 0);
    EXPECT_EQ(percent, expected(cfg.size + apps.size, cfg.avail + apps.avail));
    EXPECT_EQ(percent, 28);  // (3000 + 19480 + 50922) * 100 / 262144 = 28.0006
}

TEST_P(FlashListingForms, ALongDeviceNameBesideAShortOne) {
    mount_tmpfs("/userconfig/config", "8m", kLongConfigDevice);
    fill("/userconfig/config", 4096);
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), -1);
    EXPECT_EQ(percent, (4096 + 50922) * 100 / 262144);  // 20, as OnlyTheConfigMountWritesPercentAndFails
    mount_tmpfs("/opt/sgw/apps", "32m");
    fill("/opt/sgw/apps", 30000);
    EXPECT_EQ(getFLASHOccupy(&percent), 0);
    EXPECT_EQ(percent, (4096 + 30000 + 50922) * 100 / 262144);  // 30
}

TEST_P(FlashListingForms, ANameOfExactly20CharactersStaysOnItsLine) {
    mount_tmpfs("/userconfig/config", "8m", "qvs-config-partitio");  // 19
    mount_tmpfs("/opt/sgw/apps", "8m", "qvs-apps-partition-1");      // 20
    fill("/opt/sgw/apps", 8192);
    EXPECT_EQ(lone_device_lines(), std::vector<std::string>{});
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), 0);
    EXPECT_EQ(percent, (8192 + 50922) * 100 / 262144);  // 22
}

TEST_P(FlashListingForms, AMountPointMountedOverCountsOnceWithTheTopMount) {
    mount_tmpfs("/userconfig/config", "8m", "qvs-below");
    fill("/userconfig/config", 1000);
    mount_tmpfs("/userconfig/config", "16m", kLongConfigDevice);
    fill("/userconfig/config", 5000);
    mount_tmpfs("/opt/sgw/apps", "16m");
    int percent = -999;
    EXPECT_EQ(getFLASHOccupy(&percent), 0);
    EXPECT_EQ(percent, (5000 + 50922) * 100 / 262144);  // 21
}

INSTANTIATE_TEST_SUITE_P(Df, FlashListingForms, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool> &i) { return i.param ? "Busybox" : "Userland"; });

// ---- qvs_getSWVersion -------------------------------------------------------

class SwVersion : public SysinfoTest {};

TEST_F(SwVersion, CopiesTheVersionText) {
    set(3, "", "SoftwareVersion", "V3.1.4_QV_R9");
    char dst[64];
    std::memset(dst, 'x', sizeof dst);
    EXPECT_EQ(qvs_getSWVersion(dst), 0);
    EXPECT_STREQ(dst, "V3.1.4_QV_R9");
    EXPECT_EQ(logs(), Lines{"qvs_getSWVersion|5|xmlShm init success.\r\n"});
    EXPECT_EQ(count("attach"), 1);
    EXPECT_EQ(count("detach"), 1);
    EXPECT_EQ(count("set"), 0);
}

TEST_F(SwVersion, TheLongestVersionText) {
    const std::string v(63, 'V');
    set(3, "", "SoftwareVersion", v);
    char dst[64] = {};
    EXPECT_EQ(qvs_getSWVersion(dst), 0);
    EXPECT_EQ(std::string(dst), v);
}

TEST_F(SwVersion, AnEmptyVersionFails) {
    set(3, "", "SoftwareVersion", "");
    char dst[64] = "untouched";
    EXPECT_EQ(qvs_getSWVersion(dst), -1);
    EXPECT_STREQ(dst, "untouched");
    EXPECT_EQ(count("attach"), 1);
    EXPECT_EQ(count("detach"), 1);
}

TEST_F(SwVersion, AMissingObjectFails) {
    fault("object 3");
    char dst[64] = "untouched";
    EXPECT_EQ(qvs_getSWVersion(dst), -1);
    EXPECT_STREQ(dst, "untouched");
    expect_balanced();
    EXPECT_EQ(count("detach"), 1);
}

TEST_F(SwVersion, AFailedAttachLogsAndFails) {
    fault("attach");
    char dst[64] = "untouched";
    EXPECT_EQ(qvs_getSWVersion(dst), -1);
    EXPECT_STREQ(dst, "untouched");
    EXPECT_EQ(logs(), Lines{"qvs_getSWVersion|1|xmlShm init error.\r\n"});
    EXPECT_EQ(count("detach"), 0);
    EXPECT_EQ(count("attach"), 0);
}

}  // namespace
