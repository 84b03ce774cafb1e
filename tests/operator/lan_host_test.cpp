// SPDX-License-Identifier: MIT
// LAN host hardware entries (qvsTask_LanDeviceHost_exec): add, keep, re-add,
// delete, refusals, and the write-back of BucketID and CounterID.
#include <cstdint>
#include <cstring>
#include <regex>

#include "operator_fixture.hpp"

using namespace optest;

namespace {


class LanHost : public OperatorTest {
protected:
    std::uint32_t h = 0;

    void SetUp() override {
        OperatorTest::SetUp();
        h = qvs_xmlShmInit();
        ASSERT_NE(h, 0u);
        clear_journal();
    }
    void TearDown() override {
        OperatorTest::TearDown();
        if (h != 0) qvs_xmlShmDeInit(&h);
    }
    const QVS_LAN_HOST_REC *record(int n) const {
        QVS_IA ia = qvsXml_ConstructIAValue("lan_host_test.cpp", "record", __LINE__, 2, "1,%d", n);
        return static_cast<const QVS_LAN_HOST_REC *>(qvsXml_GetObjectByOID(h, kLanHost, ia, 1));
    }
    static void seed(int n, const char *active, const char *up, const char *down, const char *bucket,
                     const char *counter) {
        std::string in = "1," + std::to_string(n);
        set(kLanHost, in, "Active", active);
        set(kLanHost, in, "UpSpeedLimit", up);
        set(kLanHost, in, "DownSpeedLimit", down);
        set(kLanHost, in, "BucketID", bucket);
        set(kLanHost, in, "CounterID", counter);
    }
    static Lines write_back(int n, const std::string &bucket, const std::string &counter) {
        std::string in = "1," + std::to_string(n);
        return {set_line(kLanHost, in, "BucketID", kHostValue, bucket),
                set_line(kLanHost, in, "CounterID", kHostValue, counter)};
    }
    // The util_printf lines written to standard error, without the prefix
    // "<process>[qvs_utils.cpp:<function>:<line>]", checked on the way.
    static Lines messages(const std::string &err) {
        Lines out;
        static const std::regex prefix(R"(^[^\[]*\[qvs_utils\.cpp:qvsTask_LanDeviceHost_exec:[0-9]+\])");
        for (const auto &line : qvstest::split(err, '\n')) {
            if (line.empty()) continue;
            std::smatch m;
            EXPECT_TRUE(std::regex_search(line, m, prefix)) << line;
            out.push_back(m.suffix());
        }
        return out;
    }
    int run(int index, const void *now, const void *old, std::string *err_out = nullptr) {
        qvstest::CaptureFd err(2);
        int r = qvsTask_LanDeviceHost_exec(h, index, now, old);
        std::string text = err.text();
        if (err_out != nullptr) *err_out = text;
        return r;
    }
};

TEST_F(LanHost, AnActiveDeviceWithoutAnOldRecordGetsAnEntry) {
    seed(2, "1", "512", "2048", "0", "0");
    clear_journal();
    std::string err;
    EXPECT_EQ(run(7, record(2), nullptr, &err), 0);
    EXPECT_EQ(messages(err), Lines{"LAN HostEntry add index:7  p_old=0x0 mac=00:1a:2b:3c:4d:02"});
    Lines expected = {"device|libqv_qos_hostEntryAdd|7|00:1a:2b:3c:4d:02|1|512|2048"};
    for (const auto &l : write_back(2, "1", "1")) expected.push_back(l);
    EXPECT_EQ(effects(), expected);  // not saved
    EXPECT_EQ(device("qos.7"), "00:1a:2b:3c:4d:02 1 1 512 2048");
    EXPECT_EQ(get(kLanHost, "1,2", "BucketID"), "1");
    EXPECT_EQ(get(kLanHost, "1,2", "CounterID"), "1");
    EXPECT_EQ(count("attach"), 0);
}

TEST_F(LanHost, TheNumbersHandedOutAreWrittenBack) {
    seed(1, "1", "10", "20", "0", "0");
    seed(2, "1", "30", "40", "0", "0");
    EXPECT_EQ(run(1, record(1), nullptr), 0);
    EXPECT_EQ(run(2, record(2), nullptr), 0);
    EXPECT_EQ(get(kLanHost, "1,2", "BucketID"), "2");
    EXPECT_EQ(get(kLanHost, "1,2", "CounterID"), "2");
    EXPECT_EQ(device("qos.2"), "00:1a:2b:3c:4d:02 2 2 30 40");
}

TEST_F(LanHost, AnOldActiveRecordWithTheSameLimitsKeepsTheEntry) {
    seed(2, "1", "512", "2048", "3", "4");
    QVS_LAN_HOST_REC old = *record(2);
    clear_journal();
    std::string err;
    EXPECT_EQ(run(7, record(2), &old, &err), 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(effects(), write_back(2, "3", "4"));
}

TEST_F(LanHost, AChangedDownLimitAddsAgainWithoutADelete) {
    seed(2, "1", "512", "2048", "0", "0");
    ASSERT_EQ(run(7, record(2), nullptr), 0);
    QVS_LAN_HOST_REC old = *record(2);
    set(kLanHost, "1,2", "DownSpeedLimit", "4096");
    clear_journal();
    std::string err;
    EXPECT_EQ(run(7, record(2), &old, &err), 0);
    char expected_log[128];
    std::snprintf(expected_log, sizeof expected_log, "LAN HostEntry add index:7  p_old=0x%X mac=00:1a:2b:3c:4d:02",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(&old)));
    EXPECT_EQ(messages(err), Lines{expected_log});
    Lines expected = {"device|libqv_qos_hostEntryAdd|7|00:1a:2b:3c:4d:02|1|512|4096"};
    for (const auto &l : write_back(2, "1", "1")) expected.push_back(l);
    EXPECT_EQ(effects(), expected);
    EXPECT_EQ(device("qos.7"), "00:1a:2b:3c:4d:02 1 1 512 4096");
}

TEST_F(LanHost, AChangedUpLimitAddsAgain) {
    seed(2, "1", "512", "2048", "5", "6");
    QVS_LAN_HOST_REC old = *record(2);
    set(kLanHost, "1,2", "UpSpeedLimit", "1");
    clear_journal();
    EXPECT_EQ(run(7, record(2), &old), 0);
    ASSERT_FALSE(effects().empty());
    EXPECT_EQ(effects()[0], "device|libqv_qos_hostEntryAdd|7|00:1a:2b:3c:4d:02|1|1|2048");
}

TEST_F(LanHost, AnInactiveOldRecordAddsAgain) {
    seed(2, "0", "512", "2048", "0", "0");
    QVS_LAN_HOST_REC old = *record(2);
    set(kLanHost, "1,2", "Active", "1");
    clear_journal();
    EXPECT_EQ(run(7, record(2), &old), 0);
    ASSERT_FALSE(effects().empty());
    EXPECT_EQ(effects()[0], "device|libqv_qos_hostEntryAdd|7|00:1a:2b:3c:4d:02|1|512|2048");
}

TEST_F(LanHost, AnInactiveDeviceLosesItsEntry) {
    seed(2, "1", "512", "2048", "0", "0");
    ASSERT_EQ(run(7, record(2), nullptr), 0);
    set(kLanHost, "1,2", "Active", "0");
    clear_journal();
    std::string err;
    EXPECT_EQ(run(7, record(2), nullptr, &err), 0);
    EXPECT_EQ(messages(err), Lines{"LAN HostEntry del index:7 mac=00:1a:2b:3c:4d:02"});
    Lines expected = {"device|libqv_qos_hostEntryDel|7|00:1a:2b:3c:4d:02|1|1"};
    for (const auto &l : write_back(2, "0", "0")) expected.push_back(l);
    EXPECT_EQ(effects(), expected);
    EXPECT_EQ(device("qos.7"), "(none)");
    EXPECT_EQ(get(kLanHost, "1,2", "BucketID"), "0");
}

TEST_F(LanHost, AnInactiveDeviceWithOnlyACounterStillLosesItsEntry) {
    seed(2, "0", "0", "0", "0", "9");
    clear_journal();
    EXPECT_EQ(run(7, record(2), nullptr), 0);
    ASSERT_FALSE(effects().empty());
    EXPECT_EQ(effects()[0], "device|libqv_qos_hostEntryDel|7|00:1a:2b:3c:4d:02|0|9");
}

TEST_F(LanHost, AnInactiveDeviceWithoutAnEntryOnlyWritesZeros) {
    seed(3, "0", "0", "0", "0", "0");
    clear_journal();
    std::string err;
    EXPECT_EQ(run(9, record(3), nullptr, &err), 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(effects(), write_back(3, "0", "0"));
}

TEST_F(LanHost, AllZeroAndBroadcastMacsAreRefused) {
    for (const char *mac : {"00:00:00:00:00:00", "ff:ff:ff:ff:ff:ff"}) {
        set(kLanHost, "1,2", "MACAddress", mac);
        seed(2, "1", "1", "2", "0", "0");
        clear_journal();
        std::string err;
        EXPECT_EQ(run(4, record(2), nullptr, &err), -1);
        EXPECT_EQ(messages(err), Lines{"Invalid Host. index:4"}) << mac;
        EXPECT_EQ(effects(), Lines{}) << mac;
    }
}

TEST_F(LanHost, AMulticastMacIsAccepted) {
    set(kLanHost, "1,2", "MACAddress", "01:00:5e:00:00:01");
    seed(2, "1", "1", "2", "0", "0");
    clear_journal();
    EXPECT_EQ(run(4, record(2), nullptr), 0);
    EXPECT_EQ(device("qos.4"), "01:00:5e:00:00:01 1 1 1 2");
}

TEST_F(LanHost, ANullRecordIsRefused) {
    std::string err;
    EXPECT_EQ(run(5, nullptr, nullptr, &err), -1);
    EXPECT_EQ(messages(err), Lines{"Invalid Host. index:5"});
    EXPECT_EQ(effects(), Lines{});
}

TEST_F(LanHost, AZeroHandleIsRefusedAtOnce) {
    std::uint32_t saved = h;
    h = 0;
    std::string err;
    EXPECT_EQ(run(5, nullptr, nullptr, &err), -1);
    EXPECT_EQ(err, "");
    h = saved;
    EXPECT_EQ(qvstest::journal_fields().size(), 0u);
}

TEST_F(LanHost, NoParameterListLeavesTheOldNumbersAfterTheHardwareChange) {
    seed(2, "1", "512", "2048", "0", "0");
    fault("paramlist");
    clear_journal();
    std::string err;
    EXPECT_EQ(run(7, record(2), nullptr, &err), -1);
    EXPECT_EQ(messages(err), (Lines{"LAN HostEntry add index:7  p_old=0x0 mac=00:1a:2b:3c:4d:02",
                                    "newParameterList() failed!!!"}));
    EXPECT_EQ(effects(), Lines{"device|libqv_qos_hostEntryAdd|7|00:1a:2b:3c:4d:02|1|512|2048"});
    EXPECT_EQ(device("qos.7"), "00:1a:2b:3c:4d:02 1 1 512 2048");
    EXPECT_EQ(get(kLanHost, "1,2", "BucketID"), "0");
}

TEST_F(LanHost, AQosFailureWritesBackWhatTheSlotsHold) {
    seed(2, "1", "512", "2048", "8", "9");
    fault("device libqv_qos_hostEntryAdd");
    clear_journal();
    EXPECT_EQ(run(7, record(2), nullptr), 0);
    Lines expected = {"device|libqv_qos_hostEntryAdd|7|00:1a:2b:3c:4d:02|1|512|2048"};
    for (const auto &l : write_back(2, "8", "9")) expected.push_back(l);
    EXPECT_EQ(effects(), expected);
}

TEST_F(LanHost, AllTwoHundredFiftyFiveDevicesHoldingEntriesStillLeaveRoomForAnAdd) {
    for (int n = 1; n <= 255; ++n) {
        std::string in = "1," + std::to_string(n);
        ensure(kLanHost, in);
        set(kLanHost, in, "BucketID", std::to_string(n));
    }
    set(kLanHost, "1,2", "Active", "1");
    set(kLanHost, "1,2", "UpSpeedLimit", "5");
    clear_journal();
    std::string err;
    EXPECT_EQ(run(2, record(2), nullptr, &err), 0);
    EXPECT_EQ(messages(err), Lines{"LAN HostEntry add index:2  p_old=0x0 mac=00:1a:2b:3c:4d:02"});
}

}  // namespace
