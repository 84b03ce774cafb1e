// SPDX-License-Identifier: MIT
// CMCC device-limit tasks (qvs_cmcc_deviceLimit_handler): limits applied at
// the start minute, lifted (daily) or kept with the task removed (once-only)
// at the end minute, and every refusal.
#include "clock_fixture.hpp"

using namespace optest;

namespace {

const std::string kTask = "4";

class DeviceLimit : public ClockTest {
protected:
    void SetUp() override {
        ClockTest::SetUp();
        ensure(kDeviceLimit, kTask);
        task(1024, 4096, 1, 1, 20 * 3600, 22 * 3600, "00:1a:2b:3c:4d:02");
    }
    static void task(unsigned up, unsigned down, int enable, int repeat, int start, int end, const char *mac) {
        set(kDeviceLimit, kTask, "UpSpeedLimit", std::to_string(up));
        set(kDeviceLimit, kTask, "DownSpeedLimit", std::to_string(down));
        set(kDeviceLimit, kTask, "Enable", std::to_string(enable));
        set(kDeviceLimit, kTask, "Repeat", std::to_string(repeat));
        set(kDeviceLimit, kTask, "StartTime", std::to_string(start));
        set(kDeviceLimit, kTask, "EndTime", std::to_string(end));
        set(kDeviceLimit, kTask, "MACAddress", mac);
        clear_journal();
    }
    static int handle(std::string &out) {
        return printing([] { return qvs_cmcc_deviceLimit_handler(4); }, out);
    }
    static Lines limits(const std::string &device, const std::string &up, const std::string &down) {
        return {set_line(kLanHost, device, "UpSpeedLimit", kU32, up),
                set_line(kLanHost, device, "DownSpeedLimit", kU32, down), save_line()};
    }
    static std::string del_line() { return "del|568|" + kTask; }
};

TEST_F(DeviceLimit, TheStartMinuteAppliesBothLimits) {
    at(20, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(20, 0, 20, 0));
    EXPECT_EQ(effects(), limits("1,2", "1024", "4096"));  // each limit from a slot of its own
    EXPECT_EQ(get(kLanHost, "1,2", "UpSpeedLimit"), "1024");
    EXPECT_EQ(get(kLanHost, "1,2", "DownSpeedLimit"), "4096");
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_EQ(get(kLanHost, "1,2", "DownSpeedLimit"), "4096");
    expect_balanced();
}

TEST_F(DeviceLimit, TheStartMinuteWithTheClockPinnedIn2040And2105) {
    for (int year : {2040, 2105}) {
        SCOPED_TRACE(year);
        clear_journal();
        test_clock_pin(utc(year, 6, 1, 20, 0, 0) - 8 * 3600);  // 20:00 in China
        std::string out;
        EXPECT_EQ(handle(out), 0);
        EXPECT_EQ(out, now_line(20, 0, 20, 0));
        EXPECT_EQ(effects(), limits("1,2", "1024", "4096"));
        test_clock_advance(60);
        clear_journal();
        EXPECT_EQ(handle(out), -1);
        EXPECT_EQ(out, now_line(20, 1, 20, 0) + now_line(20, 1, 22, 0));
    }
}

TEST_F(DeviceLimit, TheEndMinuteOfADailyTaskLiftsTheLimits) {
    at(20, 0, 0);
    std::string out;
    ASSERT_EQ(handle(out), 0);
    clear_journal();
    at(22, 0, 59);
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(22, 0, 20, 0) + now_line(22, 0, 22, 0));
    EXPECT_EQ(effects(), limits("1,2", "0", "0"));
    EXPECT_EQ(get(kLanHost, "1,2", "UpSpeedLimit"), "0");
    EXPECT_TRUE(exists(kDeviceLimit, kTask));
    expect_balanced();
}

TEST_F(DeviceLimit, AOnceOnlyTaskGoesAtItsEndAndItsLimitsStay) {
    task(300, 600, 1, 0, 20 * 3600, 22 * 3600, "00:1a:2b:3c:4d:02");
    at(20, 0, 0);
    std::string out;
    ASSERT_EQ(handle(out), 0);
    clear_journal();
    at(22, 0, 0);
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), (Lines{del_line(), save_line()}));
    EXPECT_FALSE(exists(kDeviceLimit, kTask));
    EXPECT_EQ(get(kLanHost, "1,2", "UpSpeedLimit"), "300");
    EXPECT_EQ(get(kLanHost, "1,2", "DownSpeedLimit"), "600");
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_FALSE(exists(kDeviceLimit, kTask));
    EXPECT_EQ(get(kLanHost, "1,2", "DownSpeedLimit"), "600");
    expect_balanced();
}

TEST_F(DeviceLimit, NeitherMinuteDoesNothing) {
    at(21, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, now_line(21, 0, 20, 0) + now_line(21, 0, 22, 0));
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(DeviceLimit, EqualStartAndEndTimesApplyTheLimits) {
    task(5, 6, 1, 0, 3600, 3600, "00:1a:2b:3c:4d:02");
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(1, 0, 1, 0));
    EXPECT_EQ(effects(), limits("1,2", "5", "6"));
    EXPECT_TRUE(exists(kDeviceLimit, kTask));
}

TEST_F(DeviceLimit, MidnightAndTheLastMinute) {
    task(5, 6, 1, 1, 0, 86399, "00:1a:2b:3c:4d:02");
    std::string out;
    at(0, 0, 59);
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), limits("1,2", "5", "6"));
    clear_journal();
    at(23, 59, 30);
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(23, 59, 0, 0) + now_line(23, 59, 23, 59));
    EXPECT_EQ(effects(), limits("1,2", "0", "0"));
}

TEST_F(DeviceLimit, OneLimitAloneIsEnough) {
    task(0, 700, 1, 1, 3600, 7200, "00:1a:2b:3c:4d:02");
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), limits("1,2", "0", "700"));
}

TEST_F(DeviceLimit, BothLimitsZeroIsRefusedBeforeAnyDeviceLookup) {
    task(0, 0, 1, 1, 3600, 7200, "00:1a:2b:3c:4d:02");
    fault("object 156");
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(DeviceLimit, ADisabledTaskIsRefused) {
    for (int enable : {0, 2}) {
        task(1, 2, enable, 1, 3600, 7200, "00:1a:2b:3c:4d:02");
        at(1, 0, 0);
        std::string out;
        EXPECT_EQ(handle(out), -1);
        EXPECT_EQ(out, "");
        EXPECT_EQ(effects(), Lines{});
    }
}

TEST_F(DeviceLimit, DevicesWithGapsAreAllSearched) {
    ASSERT_EQ(qvsim_delete_instance(kLanHost, "1,3"), 0);
    ensure(kLanHost, "1,5");
    set(kLanHost, "1,5", "MACAddress", "02:00:00:00:00:05");
    task(1, 2, 1, 1, 3600, 7200, "02:00:00:00:00:05");
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), limits("1,5", "1", "2"));
}

TEST_F(DeviceLimit, AMacHeldOnlyByDeviceTwoHundredFiftySixIsNotFound) {
    ensure(kLanHost, "1,256");
    set(kLanHost, "1,256", "MACAddress", "02:00:00:00:01:00");
    task(1, 2, 1, 1, 3600, 7200, "02:00:00:00:01:00");
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(DeviceLimit, AMissingTaskFails) {
    at(20, 0, 0);
    std::string out;
    EXPECT_EQ(printing([] { return qvs_cmcc_deviceLimit_handler(5); }, out), -1);
    fault("object 568");
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(DeviceLimit, AttachFailureIsLogged) {
    fault("attach");
    at(20, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(logs(), Lines{"qvs_cmcc_deviceLimit_handler|1|XMLSHMINIT fail\n"});
    EXPECT_EQ(effects(), Lines{"attach-refused"});
}

TEST_F(DeviceLimit, NoParameterListFailsBeforeTheClockIsRead) {
    fault("paramlist");
    at(20, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(DeviceLimit, AFailedAddAtTheStartWritesNothing) {
    fault("listadd UpSpeedLimit");
    at(20, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), -1 | 0);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(get(kLanHost, "1,2", "DownSpeedLimit"), "0");
    expect_balanced();
}

TEST_F(DeviceLimit, AFailedAddAtTheEndOfADailyTaskWritesNothing) {
    set(kLanHost, "1,2", "UpSpeedLimit", "9");
    fault("listadd DownSpeedLimit");
    clear_journal();
    at(22, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0 | -1);
    EXPECT_EQ(effects(), Lines{});
    EXPECT_EQ(get(kLanHost, "1,2", "UpSpeedLimit"), "9");
    expect_balanced();
}

TEST_F(DeviceLimit, TheLocalClockOfTheZoneDecides) {
    zone(kEurope);
    std::string out;
    test_clock_pin(utc(2026, 7, 1, 18, 0, 0));  // 20:00 CEST
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(20, 0, 20, 0));
    clear_journal();
    test_clock_pin(utc(2026, 12, 1, 18, 0, 0));  // 19:00 CET
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, now_line(19, 0, 20, 0) + now_line(19, 0, 22, 0));
}

}  // namespace
