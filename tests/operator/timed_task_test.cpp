// SPDX-License-Identifier: MIT
// CMCC timed tasks (qvs_cmcc_timedTask_handler): the minute they name, the
// platform event, Wi-Fi off and on through the SSID objects, removal of
// once-only tasks, and the local clock around summer-time changes.
#include "clock_fixture.hpp"

using namespace optest;

namespace {

const std::string kTask = "7";

class TimedTask : public ClockTest {
protected:
    void SetUp() override {
        ClockTest::SetUp();
        // External SSIDs 1-4 on internal 1-4 (5 GHz), 5-8 on 9-12 (2.4 GHz).
        set(kWifiCommon, "", "X_QV_External_SSID_Map", "1,2,3,4,9,10,11,12,0,0,0,0,0,0,0,0");
        for (int i : {1, 2, 3, 4, 9, 10, 11, 12}) {
            ensure(kSsid, std::to_string(i));
            set(kSsid, std::to_string(i), "Enable", "1");
        }
        ensure(kTimedTask, kTask);
        clear_journal();
    }
    static void task(int repeat, int action, int ssid, int time, int end_time, int removable, int enable = 1) {
        set(kTimedTask, kTask, "Repeat", std::to_string(repeat));
        set(kTimedTask, kTask, "Action", std::to_string(action));
        set(kTimedTask, kTask, "SSIDIndex", std::to_string(ssid));
        set(kTimedTask, kTask, "Time", std::to_string(time));
        set(kTimedTask, kTask, "EndTime", std::to_string(end_time));
        set(kTimedTask, kTask, "Removable", std::to_string(removable));
        set(kTimedTask, kTask, "Enable", std::to_string(enable));
        clear_journal();
    }
    static int handle(std::string &out) {
        return printing([] { return qvs_cmcc_timedTask_handler(7); }, out);
    }
    static std::string ssid_enable(int internal, int value) {
        return set_line(kSsid, std::to_string(internal), "Enable", kBool, std::to_string(value));
    }
    static const std::string &event_line() {
        static const std::string line = "event|300|4|00000000";
        return line;
    }
    static std::string del_line() { return "del|566|" + kTask; }
};

// ---- action 1: the platform event ---------------------------------------------

TEST_F(TimedTask, EventAtMidnightRaisesEventThreeHundred) {
    task(1, 1, 0, 0, 0, 0);
    at(0, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(0, 0, 0, 0));
    EXPECT_EQ(effects(), Lines{event_line()});
    EXPECT_TRUE(exists(kTimedTask, kTask));
    expect_balanced();
}

TEST_F(TimedTask, TimeZeroStillMatchesAtFiftyNineSeconds) {
    task(1, 1, 0, 0, 0, 0);
    at(0, 0, 59);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(0, 0, 0, 0));
    EXPECT_EQ(effects(), Lines{event_line()});
}

TEST_F(TimedTask, AnEventTaskOutsideItsMinuteFails) {
    task(1, 1, 0, 0, 0, 0);
    at(0, 1, 0);
    std::string out;
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, now_line(0, 1, 0, 0));
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(TimedTask, TheLastSecondOfTheDayMatchesTwentyThreeFiftyNine) {
    task(1, 1, 0, 86399, 0, 0);
    at(23, 59, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(23, 59, 23, 59));
    at(23, 58, 59);
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, now_line(23, 58, 23, 59));
}

TEST_F(TimedTask, SecondsOfTheTaskTimeAreIgnored) {
    task(1, 1, 0, 3 * 3600 + 25 * 60 + 59, 0, 0);
    at(3, 25, 1);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(3, 25, 3, 25));
}

TEST_F(TimedTask, AOnceOnlyRemovableEventTaskIsDeletedAndSavedBeforeTheEvent) {
    task(0, 1, 0, 10800, 0, 1);
    at(3, 0, 30);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), (Lines{del_line(), save_line(), event_line()}));
    EXPECT_FALSE(exists(kTimedTask, kTask));
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_FALSE(exists(kTimedTask, kTask));
    expect_balanced();
}

TEST_F(TimedTask, AOnceOnlyTaskStaysUnlessRemovableIsOne) {
    for (int removable : {0, 2}) {
        task(0, 1, 0, 10800, 0, removable);
        at(3, 0, 0);
        std::string out;
        EXPECT_EQ(handle(out), 0);
        EXPECT_EQ(effects(), Lines{event_line()}) << removable;
        EXPECT_TRUE(exists(kTimedTask, kTask));
    }
}

TEST_F(TimedTask, ADailyRemovableTaskStays) {
    task(1, 1, 0, 10800, 0, 1);
    at(3, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), Lines{event_line()});
}

// ---- action 2: Wi-Fi off and on ----------------------------------------------------

TEST_F(TimedTask, SwitchOffWithSsidZeroDisablesSsidsOneAndFive) {
    task(1, 2, 0, 82800, 25200, 0);
    at(23, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(23, 0, 23, 0));
    EXPECT_EQ(effects(), (Lines{ssid_enable(1, 0), ssid_enable(9, 0)}));  // not saved
    EXPECT_EQ(get(kSsid, "1", "Enable"), "0");
    EXPECT_EQ(get(kSsid, "9", "Enable"), "0");
    EXPECT_EQ(get(kSsid, "2", "Enable"), "1");
    expect_balanced();
}

TEST_F(TimedTask, SwitchOnWithSsidZeroEnablesSsidsOneAndFive) {
    task(1, 2, 0, 82800, 25200, 0);
    set(kSsid, "1", "Enable", "0");
    set(kSsid, "9", "Enable", "0");
    clear_journal();
    at(7, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(7, 0, 23, 0) + now_line(7, 0, 7, 0));
    EXPECT_EQ(effects(), (Lines{ssid_enable(1, 1), ssid_enable(9, 1)}));
    EXPECT_EQ(get(kSsid, "1", "Enable"), "1");
    EXPECT_EQ(get(kSsid, "9", "Enable"), "1");
    EXPECT_TRUE(exists(kTimedTask, kTask));
    expect_balanced();
}

TEST_F(TimedTask, OneSsidIsSwitchedByItsExternalNumber) {
    task(1, 2, 6, 3600, 7200, 0);
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), Lines{ssid_enable(10, 0)});
    at(2, 0, 0);
    clear_journal();
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), Lines{ssid_enable(10, 1)});
}

TEST_F(TimedTask, AnSsidOutsideOneToEightSwitchesNothing) {
    task(1, 2, 9, 3600, 7200, 0);
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(TimedTask, AOnceOnlyRemovableTaskGoesAtItsEndTimeAfterSwitchingOn) {
    task(0, 2, 3, 3600, 7200, 1);
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), Lines{ssid_enable(3, 0)});  // never removed at switch-off time
    EXPECT_TRUE(exists(kTimedTask, kTask));
    clear_journal();
    at(2, 0, 0);
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), (Lines{ssid_enable(3, 1), del_line(), save_line()}));
    EXPECT_FALSE(exists(kTimedTask, kTask));
    ASSERT_EQ(qvsim_restart(), 0);
    EXPECT_FALSE(exists(kTimedTask, kTask));
    EXPECT_EQ(get(kSsid, "3", "Enable"), "1");
}

TEST_F(TimedTask, AOnceOnlyTaskNotRemovableStaysAtItsEndTime) {
    task(0, 2, 3, 3600, 7200, 0);
    at(2, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(effects(), Lines{ssid_enable(3, 1)});
    EXPECT_TRUE(exists(kTimedTask, kTask));
}

TEST_F(TimedTask, EqualSwitchOffAndEndTimesOnlySwitchOff) {
    task(0, 2, 0, 3600, 3600, 1);
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(1, 0, 1, 0));
    EXPECT_EQ(effects(), (Lines{ssid_enable(1, 0), ssid_enable(9, 0)}));
    EXPECT_TRUE(exists(kTimedTask, kTask));
}

TEST_F(TimedTask, AWifiTaskOutsideItsMinutesGivesZero) {
    task(0, 2, 0, 3600, 7200, 1);
    at(1, 1, 0);
    std::string out;
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(1, 1, 1, 0) + now_line(1, 1, 2, 0));
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

// ---- other cases -------------------------------------------------------------------

TEST_F(TimedTask, OtherActionsDoNothing) {
    for (int action : {0, 3}) {
        task(0, action, 0, 3600, 3600, 1);
        at(1, 0, 0);
        std::string out;
        EXPECT_EQ(handle(out), 0);
        EXPECT_EQ(out, "");
        EXPECT_EQ(effects(), Lines{});
    }
}

TEST_F(TimedTask, ADisabledTaskDoesNothing) {
    for (int enable : {0, 2}) {
        task(0, 1, 0, 3600, 0, 1, enable);
        at(1, 0, 0);
        std::string out;
        EXPECT_EQ(handle(out), 0);
        EXPECT_EQ(out, "");
        EXPECT_EQ(effects(), Lines{});
        EXPECT_TRUE(exists(kTimedTask, kTask));
    }
}

TEST_F(TimedTask, AMissingTaskFails) {
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(printing([] { return qvs_cmcc_timedTask_handler(8); }, out), -1);
    EXPECT_EQ(out, "");
    fault("object 566");
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(effects(), Lines{});
    expect_balanced();
}

TEST_F(TimedTask, AttachFailureIsLogged) {
    task(1, 1, 0, 3600, 0, 0);
    fault("attach");
    at(1, 0, 0);
    std::string out;
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(logs(), Lines{"qvs_cmcc_timedTask_handler|1|XMLSHMINIT fail\n"});
    EXPECT_EQ(effects(), Lines{"attach-refused"});
}

// ---- local time across summer-time changes ----------------------------------------

TEST_F(TimedTask, SpringForwardSkipsTheMissingHour) {
    zone(kEurope);
    task(1, 1, 0, 2 * 3600 + 30 * 60, 0, 0);  // 02:30, which 2026-03-29 lacks
    std::string out;
    test_clock_pin(utc(2026, 3, 29, 0, 59, 59));  // 01:59:59 CET
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, now_line(1, 59, 2, 30));
    test_clock_advance(1);  // 03:00:00 CEST
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, now_line(3, 0, 2, 30));
    task(1, 1, 0, 3 * 3600, 0, 0);
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(3, 0, 3, 0));
}

TEST_F(TimedTask, FallBackMatchesTheRepeatedHourTwice) {
    zone(kEurope);
    task(1, 1, 0, 2 * 3600 + 30 * 60, 0, 0);
    std::string out;
    test_clock_pin(utc(2026, 10, 25, 0, 30, 0));  // 02:30 CEST
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(2, 30, 2, 30));
    test_clock_pin(utc(2026, 10, 25, 1, 30, 0));  // 02:30 CET, an hour later
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(2, 30, 2, 30));
    EXPECT_EQ(effects(), (Lines{event_line(), event_line()}));
}

TEST_F(TimedTask, TheZoneDecidesTheLocalMinute) {
    task(1, 1, 0, 0, 0, 0);
    test_clock_pin(utc(2026, 6, 1, 0, 0, 0));  // 08:00 in China, midnight in UTC
    std::string out;
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, now_line(8, 0, 0, 0));
    zone("UTC0");
    EXPECT_EQ(handle(out), 0);
    EXPECT_EQ(out, now_line(0, 0, 0, 0));
}

// ---- past 2038 -----------------------------------------------------------------

TEST_F(TimedTask, TheClockPinnedIn2040And2105) {
    task(1, 1, 0, 3 * 3600 + 25 * 60, 0, 0);
    for (int year : {2040, 2105}) {
        SCOPED_TRACE(year);
        std::string out;
        clear_journal();
        test_clock_pin(utc(year, 6, 1, 3, 25, 30) - 8 * 3600);  // 03:25:30 in China
        EXPECT_EQ(handle(out), 0);
        EXPECT_EQ(out, now_line(3, 25, 3, 25));
        EXPECT_EQ(effects(), Lines{event_line()});
        test_clock_advance(30);
        EXPECT_EQ(handle(out), -1);
        EXPECT_EQ(out, now_line(3, 26, 3, 25));
    }
    // Summer time in 2040 (last Sunday of March: the 25th) still skips 02:30.
    zone(kEurope);
    task(1, 1, 0, 2 * 3600 + 30 * 60, 0, 0);
    std::string out;
    test_clock_pin(utc(2040, 3, 25, 0, 59, 59));  // 01:59:59 CET
    EXPECT_EQ(handle(out), -1);
    test_clock_advance(1);  // 03:00:00 CEST
    EXPECT_EQ(handle(out), -1);
    EXPECT_EQ(out, now_line(3, 0, 2, 30));
}

}  // namespace
