// SPDX-License-Identifier: MIT
// The alarm definition table and the alarm entries: raising, refreshing,
// clearing, the level filter, the index scans and the entry counter.
#include <cstdint>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "libqv.h"
#include "qvsim.h"
#include "sim_journal.hpp"
#include "test_clock.h"
#include "test_support.hpp"

namespace {

constexpr std::time_t kT0 = 1780000000;  // 2026-05-28T20:26:40Z
constexpr const char *kNoTime = "0000-00-00T00:00:00";

struct Row {
    uint32_t code;
    int status;
    int severity;
    const char *detail;
};

// The table as the operator defines it, kept apart from the library's copy.
const std::vector<Row> kTable = {
    {104001, 2, 2, "Device reboot"},
    {104006, 1, 1, "Port unreachable"},
    {104012, 2, 1, "WLAN is unavailable due to a hardware fault"},
    {104030, 1, 2, "The CPU is above 95% for 5 consecutive minutes"},
    {104031, 1, 2, "Log space is limited"},
    {104032, 1, 3, "The number of consecutive login errors has exceeds 10"},
    {104033, 1, 3, "The bit error rate exceeds 1%"},
    {104034, 1, 3, "The encryption or decryption failed rate exceeds 1%"},
    {104035, 3, 2, "Insufficient available bandwidth"},
    {104050, 1, 1, "The file server is unreachable"},
    {104051, 1, 1, "The username or password of the file server is incorrect"},
    {104052, 1, 1, "File download time out (5 minutes)"},
    {104053, 1, 1, "There's no specified file on the server"},
    {104058, 1, 1, "The firmware upgrade failed"},
    {104059, 1, 1, "Insufficient Flash space"},
    {104060, 1, 1, "The self-service software upgrade is faulty"},
    {104061, 1, 1, "The syslog upload failed"},
    {104122, 1, 1, "The EPG Serve is unreachabler"},
    {104142, 1, 1, "The DDNS Server is unreachabler"},
    {104143, 1, 1, "The username or password of the DDNS is incorrect"},
    {104160, 1, 2, "The video device is not in the supported list"},
};

// Local time stamp of t in the test zone (+08:00, no summer time), by the C
// library's calendar.
std::string local_stamp(std::time_t t) {
    std::time_t shifted = t + 8 * 3600;
    struct tm tm {};
    gmtime_r(&shifted, &tm);
    char buf[96];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02dT%02d:%02d:%02d", tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday,
                  tm.tm_hour, tm.tm_min, tm.tm_sec);
    return buf;
}

std::string get(int oid, const std::string &instance, const char *param) {
    char buf[512] = {};
    EXPECT_EQ(qvsim_get(oid, instance.c_str(), param, buf, sizeof buf), 0) << oid << " " << instance << " " << param;
    return buf;
}

std::string entry(int index, const char *param) { return get(224, std::to_string(index), param); }

bool has_entry(int index) { return qvsim_exists(224, std::to_string(index).c_str()) != 0; }

int entry_count() {
    int n = 0;
    for (int i = 1; i <= 256; ++i) n += has_entry(i) ? 1 : 0;
    return n;
}

// An entry placed directly in the store.
void put_entry(int index, uint32_t code, int status = 1) {
    std::string in = std::to_string(index);
    if (!qvsim_exists(224, in.c_str())) {
        ASSERT_EQ(qvsim_add_instance(224, in.c_str()), 0) << index;
    }
    ASSERT_EQ(qvsim_set(224, in.c_str(), "AlarmID", in.c_str()), 0);
    ASSERT_EQ(qvsim_set(224, in.c_str(), "AlarmCode", std::to_string(code).c_str()), 0);
    ASSERT_EQ(qvsim_set(224, in.c_str(), "AlarmStatus", std::to_string(status).c_str()), 0);
}

void set_config(int enable, int level) {
    ASSERT_EQ(qvsim_set(223, "", "AlarmEnable", std::to_string(enable).c_str()), 0);
    ASSERT_EQ(qvsim_set(223, "", "AlarmLevel", std::to_string(level).c_str()), 0);
}

std::string counter() { return get(223, "", "NumberOfAlarmInfo"); }

class AlarmTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        ASSERT_EQ(qvsim_reset(), 0);
        for (int i = 1; i <= 255; ++i)
            if (has_entry(i)) {
                ASSERT_EQ(qvsim_delete_instance(224, std::to_string(i).c_str()), 0);
            }
        set_config(1, 3);
        ASSERT_EQ(qvsim_set(223, "", "NumberOfAlarmInfo", "0"), 0);
        ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "+08:00"), 0);
        ASSERT_EQ(qvsim_set(85, "", "DaylightSavingsUsed", "0"), 0);
        test_clock_pin(kT0);
        simjournal::clear();
    }
    void TearDown() override { test_clock_release(); }

    // One self-attaching call: attach and detach balance on every path.
    template <typename F>
    int balanced(F f) {
        int a = simjournal::count("attach"), d = simjournal::count("detach");
        int r = f();
        EXPECT_EQ(simjournal::count("attach") - a, 1) << simjournal::text();
        EXPECT_EQ(simjournal::count("detach") - d, 1) << simjournal::text();
        return r;
    }
    int raise(uint32_t code) {
        return balanced([&] { return CU_add_AlarmID(code); });
    }
    int clear(uint32_t code) {
        return balanced([&] { return CU_clear_AlarmID(code); });
    }

    void expect_new_entry(int index, const Row &row, std::time_t when) {
        SCOPED_TRACE("entry " + std::to_string(index) + " code " + std::to_string(row.code));
        EXPECT_EQ(entry(index, "AlarmID"), std::to_string(index));
        EXPECT_EQ(entry(index, "AlarmCode"), std::to_string(row.code));
        EXPECT_EQ(entry(index, "AlarmStatus"), std::to_string(row.status));
        EXPECT_EQ(entry(index, "PerceivedSeverity"), std::to_string(row.severity));
        EXPECT_EQ(entry(index, "AlarmRaisedTime"), local_stamp(when));
        EXPECT_EQ(entry(index, "AlarmDetail"), row.detail);
    }
};

// ---- the table ---------------------------------------------------------------

TEST(AlarmTable, HoldsTheTwentyOneRowsLetterForLetterInOrder) {
    ASSERT_EQ(CU_ALARM_INFO_COUNT, 21);
    ASSERT_EQ(sizeof cu_alarmInfo / sizeof cu_alarmInfo[0], kTable.size());
    for (std::size_t k = 0; k < kTable.size(); ++k) {
        SCOPED_TRACE(k);
        EXPECT_EQ(cu_alarmInfo[k].alarmCode, kTable[k].code);
        EXPECT_EQ(cu_alarmInfo[k].alarmStatus, kTable[k].status);
        EXPECT_EQ(cu_alarmInfo[k].perceivedSeverity, kTable[k].severity);
        EXPECT_STREQ(cu_alarmInfo[k].alarmDetail, kTable[k].detail);
    }
}

// ---- store and configuration -------------------------------------------------------

TEST_F(AlarmTest, AttachFailureRaisingGivesMinusOne) {
    ASSERT_EQ(qvsim_fault_add("attach"), 0);
    EXPECT_EQ(CU_add_AlarmID(104001), -1);
    EXPECT_EQ(simjournal::logs("CU_add_AlarmID"), std::vector<std::string>{"1 xmlShm init error.\r\n"});
    EXPECT_EQ(simjournal::count("detach"), 0);
    EXPECT_EQ(simjournal::count("set") + simjournal::count("add"), 0);
}

TEST_F(AlarmTest, AttachFailureClearingGivesMinusOne) {
    put_entry(1, 104001);
    simjournal::clear();
    ASSERT_EQ(qvsim_fault_add("attach"), 0);
    EXPECT_EQ(CU_clear_AlarmID(104001), -1);
    EXPECT_EQ(simjournal::logs("CU_clear_AlarmID"), std::vector<std::string>{"1 xmlShm init error.\r\n"});
    EXPECT_EQ(simjournal::count("set"), 0);
    EXPECT_EQ(entry(1, "AlarmStatus"), "1");
}

TEST_F(AlarmTest, MissingAlarmObjectGivesMinusOne) {
    ASSERT_EQ(qvsim_fault_add("object 223"), 0);
    EXPECT_EQ(raise(104001), -1);
    EXPECT_EQ(simjournal::logs("CU_add_AlarmID"), std::vector<std::string>{"5 xmlShm init success.\r\n"});
    EXPECT_EQ(entry_count(), 0);
}

TEST_F(AlarmTest, DisabledAlarmsAreRefused) {
    for (auto c : {std::vector<int>{0, 3}, {1, 0}, {0, 0}}) {
        set_config(c[0], c[1]);
        simjournal::clear();
        EXPECT_EQ(raise(104006), -1) << c[0] << " " << c[1];
        EXPECT_EQ(simjournal::logs("CU_add_AlarmID"),
                  (std::vector<std::string>{"5 xmlShm init success.\r\n", "1 Alarm is disabled.\r\n"}));
        EXPECT_EQ(simjournal::count("set") + simjournal::count("add"), 0);
    }
    set_config(0, 3);
    EXPECT_EQ(raise(999), -1) << "unknown codes too";
    EXPECT_EQ(entry_count(), 0);
}

// ---- the level filter -----------------------------------------------------------------

TEST_F(AlarmTest, LevelTwoRefuses104032AndLogs104006) {
    set_config(1, 2);
    EXPECT_EQ(raise(104032), -1);
    EXPECT_EQ(simjournal::logs("CU_add_AlarmID"),
              (std::vector<std::string>{"5 xmlShm init success.\r\n", "5 alarm_code=104032\n",
                                        "1 current Alarm severity is below AlarmLevel!\n"}));
    EXPECT_EQ(simjournal::count("set") + simjournal::count("add"), 0);
    EXPECT_EQ(entry_count(), 0);

    EXPECT_EQ(raise(104006), 0);
    expect_new_entry(1, kTable[1], kT0);
}

TEST_F(AlarmTest, EveryRowAgainstEveryLevel) {
    for (int level = 1; level <= 4; ++level) {
        for (const Row &row : kTable) {
            for (int i = 1; i <= 255; ++i)
                if (has_entry(i)) {
                    ASSERT_EQ(qvsim_delete_instance(224, std::to_string(i).c_str()), 0);
                }
            set_config(1, level);
            int r = raise(row.code);
            if (row.severity > level) {
                EXPECT_EQ(r, -1) << row.code << " level " << level;
                EXPECT_FALSE(has_entry(1));
            } else {
                EXPECT_EQ(r, 0) << row.code << " level " << level;
                expect_new_entry(1, row, kT0);
            }
        }
    }
}

TEST_F(AlarmTest, LevelAboveEveryseverityAcceptsAll) {
    set_config(1, 255);
    for (const Row &row : kTable) EXPECT_EQ(raise(row.code), 0);
    EXPECT_EQ(entry_count(), 21);
}

// ---- raising -----------------------------------------------------------------------------

TEST_F(AlarmTest, EveryRowCreatesItsEntryWithTheTablesFields) {
    for (std::size_t k = 0; k < kTable.size(); ++k) {
        test_clock_pin(kT0 + static_cast<std::time_t>(k) * 61);
        EXPECT_EQ(raise(kTable[k].code), 0);
    }
    for (std::size_t k = 0; k < kTable.size(); ++k) {
        int index = static_cast<int>(k) + 1;
        expect_new_entry(index, kTable[k], kT0 + static_cast<std::time_t>(k) * 61);
    }
    EXPECT_EQ(counter(), "21");
}

TEST_F(AlarmTest, NewEntryWritesAndLogsExactly) {
    EXPECT_EQ(raise(104001), 0);
    std::string t = local_stamp(kT0);
    EXPECT_EQ(simjournal::logs("CU_add_AlarmID"),
              (std::vector<std::string>{"5 xmlShm init success.\r\n", "5 alarm_code=104001\n",
                                        "5 AlarmCode=104001, AlarmRaisedTime=" + t + "\n"}));
    EXPECT_EQ(simjournal::logs("add_AlarmInfo_Index"),
              (std::vector<std::string>{"5 alarm_code = 104001, alarmStatus=2\n", "5 Add new addindex = 1\n"}));
    EXPECT_EQ(simjournal::logs("update_numberofAlarmInfo"),
              std::vector<std::string>{"5 Update NumberOfAlarmInfo=1\n"});
    auto adds = simjournal::of_kind("add");
    ASSERT_EQ(adds.size(), 1u) << simjournal::text();
    EXPECT_EQ(adds[0], (simjournal::Line{"add", "224", "1"}));
    EXPECT_EQ(counter(), "1");
    EXPECT_EQ(simjournal::count("save"), 0) << "persisting is the caller's business";
    expect_new_entry(1, kTable[0], kT0);
}

TEST_F(AlarmTest, NewEntryParametersCarryTheirTypeCodes) {
    EXPECT_EQ(raise(104001), 0);
    std::string t = local_stamp(kT0);
    auto sets = simjournal::sets();
    // The new entry's values (by type code), then the counter.
    std::vector<std::string> want = {"224 1 AlarmID 4 1",
                                     "224 1 AlarmCode 4 104001",
                                     "224 1 AlarmStatus 1 2",
                                     "224 1 PerceivedSeverity 1 2",
                                     "224 1 AlarmRaisedTime 27 " + t,
                                     "224 1 AlarmDetail 0xc0000000 Device reboot",
                                     "223  NumberOfAlarmInfo 4 1"};
    EXPECT_EQ(sets, want) << simjournal::text();
}

TEST_F(AlarmTest, NewEntryLeavesTheClearedTimeUnset) {
    EXPECT_EQ(raise(104030), 0);
    for (auto &s : simjournal::sets()) EXPECT_EQ(s.find("AlarmClearedTime"), std::string::npos) << s;
}

TEST_F(AlarmTest, UnknownCodeIsLoggedWithSeverityZeroWhateverTheLevel) {
    for (int level : {1, 2, 3}) {
        for (int i = 1; i <= 255; ++i)
            if (has_entry(i)) {
                ASSERT_EQ(qvsim_delete_instance(224, std::to_string(i).c_str()), 0);
            }
        set_config(1, level);
        simjournal::clear();
        EXPECT_EQ(raise(999), 0);
        expect_new_entry(1, Row{999, 0, 0, ""}, kT0);
        EXPECT_EQ(simjournal::logs("add_AlarmInfo_Index")[0], "5 alarm_code = 999, alarmStatus=0\n");
    }
}

TEST_F(AlarmTest, RaisingTwiceRefreshesAndCreatesNothingNew) {
    EXPECT_EQ(raise(104001), 0);
    ASSERT_EQ(counter(), "1");
    test_clock_advance(3600);
    simjournal::clear();
    EXPECT_EQ(raise(104001), 0);
    EXPECT_EQ(entry_count(), 1);
    EXPECT_EQ(simjournal::count("add"), 0);
    EXPECT_EQ(entry(1, "AlarmRaisedTime"), local_stamp(kT0 + 3600));
    EXPECT_EQ(entry(1, "AlarmClearedTime"), kNoTime);
    EXPECT_EQ(entry(1, "AlarmStatus"), "2");
    for (auto &s : simjournal::sets()) EXPECT_EQ(s.find("NumberOfAlarmInfo"), std::string::npos) << s;
    EXPECT_TRUE(simjournal::logs("update_numberofAlarmInfo").empty());
    EXPECT_EQ(simjournal::sets(), (std::vector<std::string>{"224 1 AlarmStatus 1 2",
                                                            "224 1 AlarmRaisedTime 27 " + local_stamp(kT0 + 3600),
                                                            "224 1 AlarmClearedTime 27 0000-00-00T00:00:00"}));
    // No second "AlarmCode=..., AlarmRaisedTime" line: the refresh ends the raise.
    EXPECT_EQ(simjournal::logs("CU_add_AlarmID"),
              (std::vector<std::string>{"5 xmlShm init success.\r\n", "5 alarm_code=104001\n"}));
    EXPECT_EQ(simjournal::logs("add_AlarmInfo_Index"),
              std::vector<std::string>{"5 alarm_code = 104001, alarmStatus=2\n"});
}

TEST_F(AlarmTest, RefreshKeepsSeverityAndDetail) {
    put_entry(4, 104001, 3);
    ASSERT_EQ(qvsim_set(224, "4", "PerceivedSeverity", "7"), 0);
    ASSERT_EQ(qvsim_set(224, "4", "AlarmDetail", "old text"), 0);
    EXPECT_EQ(raise(104001), 0);
    EXPECT_EQ(entry(4, "AlarmStatus"), "2");
    EXPECT_EQ(entry(4, "PerceivedSeverity"), "7");
    EXPECT_EQ(entry(4, "AlarmDetail"), "old text");
    EXPECT_EQ(entry_count(), 1);
}

TEST_F(AlarmTest, TheCounterHoldsTheLastCreatedIndex) {
    EXPECT_EQ(raise(104001), 0);
    EXPECT_EQ(raise(104006), 0);
    EXPECT_EQ(raise(104012), 0);
    EXPECT_EQ(counter(), "3");
    ASSERT_EQ(qvsim_delete_instance(224, "2"), 0);
    EXPECT_EQ(raise(104030), 0);
    EXPECT_EQ(entry(2, "AlarmCode"), "104030");
    EXPECT_EQ(counter(), "2") << "the index of the newest entry, not a count";
}

TEST_F(AlarmTest, FirstFreeIndexFillsGaps) {
    put_entry(1, 5);
    put_entry(2, 6);
    put_entry(4, 7);
    EXPECT_EQ(raise(104006), 0);
    EXPECT_EQ(entry(3, "AlarmCode"), "104006");
    EXPECT_EQ(entry(3, "AlarmID"), "3");
    EXPECT_EQ(counter(), "3");
}

TEST_F(AlarmTest, FullTableDropsTheNewAlarmSilently) {
    for (int i = 1; i <= 255; ++i) put_entry(i, 1000 + i);
    simjournal::clear();
    EXPECT_EQ(raise(104006), 0);
    EXPECT_EQ(simjournal::count("add"), 0);
    EXPECT_EQ(simjournal::count("set"), 0);
    EXPECT_EQ(simjournal::logs("add_AlarmInfo_Index"),
              (std::vector<std::string>{"5 alarm_code = 104006, alarmStatus=1\n", "5 Add new addindex = -1\n"}));
    EXPECT_TRUE(simjournal::logs("update_numberofAlarmInfo").empty());
}

TEST_F(AlarmTest, FullTableStillRefreshesAnExistingCode) {
    for (int i = 1; i <= 255; ++i) put_entry(i, i == 200 ? 104006 : 1000 + i, 3);
    EXPECT_EQ(raise(104006), 0);
    EXPECT_EQ(entry(200, "AlarmStatus"), "1");
    EXPECT_EQ(entry(200, "AlarmRaisedTime"), local_stamp(kT0));
}

TEST_F(AlarmTest, RaisingFindsAnEntryAt254) {
    put_entry(254, 104006, 3);
    EXPECT_EQ(raise(104006), 0);
    EXPECT_EQ(entry_count(), 1);
    EXPECT_EQ(entry(254, "AlarmStatus"), "1");
}

TEST_F(AlarmTest, EntryAt255IsFoundByClearingButNotByRaising) {
    put_entry(255, 104006, 1);
    EXPECT_EQ(clear(104006), 0);
    EXPECT_EQ(entry(255, "AlarmStatus"), "3");
    EXPECT_EQ(entry(255, "AlarmClearedTime"), local_stamp(kT0));

    EXPECT_EQ(raise(104006), 0);
    EXPECT_EQ(entry(1, "AlarmCode"), "104006") << "a second entry at a free index";
    EXPECT_EQ(entry(255, "AlarmStatus"), "3");
    EXPECT_EQ(entry_count(), 2);
    EXPECT_EQ(counter(), "1");
}

TEST_F(AlarmTest, RaisingRefreshesTheFirstOfTwoEntriesWithTheCode) {
    put_entry(3, 104001, 3);
    put_entry(7, 104001, 3);
    EXPECT_EQ(raise(104001), 0);
    EXPECT_EQ(entry(3, "AlarmStatus"), "2");
    EXPECT_EQ(entry(7, "AlarmStatus"), "3");
}

// ---- clearing ------------------------------------------------------------------------------

TEST_F(AlarmTest, ClearingStampsStatusThreeAndTheClearedTime) {
    EXPECT_EQ(raise(104001), 0);
    test_clock_advance(125);
    simjournal::clear();
    EXPECT_EQ(clear(104001), 0);
    EXPECT_EQ(entry(1, "AlarmStatus"), "3");
    EXPECT_EQ(entry(1, "AlarmClearedTime"), local_stamp(kT0 + 125));
    EXPECT_EQ(entry(1, "AlarmRaisedTime"), local_stamp(kT0));
    EXPECT_EQ(entry(1, "AlarmCode"), "104001");
    EXPECT_EQ(simjournal::sets(), (std::vector<std::string>{"224 1 AlarmStatus 1 3",
                                                            "224 1 AlarmClearedTime 27 " + local_stamp(kT0 + 125)}));
    EXPECT_EQ(simjournal::logs("CU_clear_AlarmID"), std::vector<std::string>{"5 xmlShm init success.\r\n"});
    EXPECT_EQ(simjournal::count("del") + simjournal::count("add") + simjournal::count("save"), 0);
    EXPECT_EQ(entry_count(), 1) << "the entry stays";
}

TEST_F(AlarmTest, ClearingANeverRaisedCodeWritesNothing) {
    put_entry(1, 104006);
    simjournal::clear();
    EXPECT_EQ(clear(104001), 0);
    EXPECT_EQ(simjournal::count("set"), 0);
    EXPECT_EQ(entry(1, "AlarmStatus"), "1");
}

TEST_F(AlarmTest, ClearingWorksWhenAlarmsAreDisabled) {
    put_entry(2, 104006);
    set_config(0, 0);
    EXPECT_EQ(clear(104006), 0);
    EXPECT_EQ(entry(2, "AlarmStatus"), "3");
}

TEST_F(AlarmTest, ClearingTouchesOnlyTheFirstEntryWithTheCode) {
    put_entry(5, 104001);
    put_entry(9, 104001);
    EXPECT_EQ(clear(104001), 0);
    EXPECT_EQ(entry(5, "AlarmStatus"), "3");
    EXPECT_EQ(entry(9, "AlarmStatus"), "1");
}

TEST_F(AlarmTest, EntryLifeRaiseClearRaiseAgain) {
    EXPECT_EQ(raise(104012), 0);
    expect_new_entry(1, kTable[2], kT0);
    test_clock_advance(60);
    EXPECT_EQ(clear(104012), 0);
    EXPECT_EQ(entry(1, "AlarmStatus"), "3");
    EXPECT_EQ(entry(1, "AlarmClearedTime"), local_stamp(kT0 + 60));
    test_clock_advance(60);
    EXPECT_EQ(raise(104012), 0);
    EXPECT_EQ(entry(1, "AlarmStatus"), "2");
    EXPECT_EQ(entry(1, "AlarmRaisedTime"), local_stamp(kT0 + 120));
    EXPECT_EQ(entry(1, "AlarmClearedTime"), kNoTime);
    EXPECT_EQ(entry_count(), 1);
    EXPECT_EQ(counter(), "1");
}

TEST_F(AlarmTest, StampsFollowTheStoresZoneAndSummerTime) {
    ASSERT_EQ(qvsim_set(85, "", "DaylightSavingsUsed", "1"), 0);  // kT0 lies in summer time
    EXPECT_EQ(raise(104001), 0);
    EXPECT_EQ(entry(1, "AlarmRaisedTime"), local_stamp(kT0 + 3600));
    ASSERT_EQ(qvsim_set(85, "", "DaylightSavingsUsed", "0"), 0);
    ASSERT_EQ(qvsim_set(85, "", "LocalTimeZone", "-03:30"), 0);
    EXPECT_EQ(clear(104001), 0);
    EXPECT_EQ(entry(1, "AlarmClearedTime"), local_stamp(kT0 - 8 * 3600 - 3 * 3600 - 30 * 60));
}

TEST_F(AlarmTest, RealClockStampsLieBetweenBeforeAndAfter) {
    test_clock_release();
    std::string before = local_stamp(test_clock_real_now());
    EXPECT_EQ(raise(104001), 0);
    EXPECT_EQ(clear(104001), 0);
    std::string after = local_stamp(test_clock_real_now());
    EXPECT_GE(entry(1, "AlarmRaisedTime"), before);
    EXPECT_LE(entry(1, "AlarmRaisedTime"), after);
    EXPECT_GE(entry(1, "AlarmClearedTime"), entry(1, "AlarmRaisedTime"));
    EXPECT_LE(entry(1, "AlarmClearedTime"), after);
}

// ---- store failures ------------------------------------------------------------------------

TEST_F(AlarmTest, NoParameterListForANewEntry) {
    ASSERT_EQ(qvsim_fault_add("paramlist"), 0);
    EXPECT_EQ(raise(104001), -1);
    EXPECT_EQ(simjournal::count("add"), 0);
    EXPECT_EQ(entry_count(), 0);
}

TEST_F(AlarmTest, NoParameterListForARefreshOrAClear) {
    put_entry(1, 104001, 3);
    ASSERT_EQ(qvsim_fault_add("paramlist"), 0);
    EXPECT_EQ(raise(104001), 0);
    EXPECT_EQ(clear(104001), 0);
    EXPECT_EQ(simjournal::count("set"), 0);
    EXPECT_EQ(entry(1, "AlarmStatus"), "3");
}

TEST_F(AlarmTest, AFailedAddStillUpdatesTheCounterAndGivesZero) {
    ASSERT_EQ(qvsim_fault_add("write AlarmDetail"), 0);
    EXPECT_EQ(raise(104001), 0);
    EXPECT_FALSE(has_entry(1)) << "the whole list failed";
    EXPECT_EQ(simjournal::logs("update_numberofAlarmInfo"),
              std::vector<std::string>{"5 Update NumberOfAlarmInfo=1\n"});
    EXPECT_EQ(counter(), "1");
}

TEST_F(AlarmTest, FailedWritesDoNotChangeTheResult) {
    put_entry(1, 104001, 3);
    ASSERT_EQ(qvsim_fault_add("write"), 0);
    EXPECT_EQ(raise(104001), 0);
    EXPECT_EQ(clear(104001), 0);
    EXPECT_EQ(entry(1, "AlarmStatus"), "3");
}

// ---- the two handle functions ------------------------------------------------------------------

class AlarmHandleTest : public AlarmTest {
protected:
    void SetUp() override {
        AlarmTest::SetUp();
        h_ = qvs_xmlShmInit();
        ASSERT_NE(h_, 0u);
        simjournal::clear();
    }
    void TearDown() override {
        qvs_xmlShmDeInit(&h_);
        AlarmTest::TearDown();
    }
    QVS_XMLSHM_HANDLE h_ = 0;
};

TEST_F(AlarmHandleTest, ZeroHandleGivesMinusOneAndNothingElse) {
    EXPECT_EQ(add_AlarmInfo_Index(0, 104001, 2), -1);
    EXPECT_TRUE(simjournal::lines().empty()) << simjournal::text();
}

TEST_F(AlarmHandleTest, FirstFreeIndexIsReturnedAndNothingWritten) {
    put_entry(1, 1);
    put_entry(2, 2);
    simjournal::clear();
    EXPECT_EQ(add_AlarmInfo_Index(h_, 104001, 2), 3);
    EXPECT_EQ(simjournal::count("set") + simjournal::count("add"), 0);
    EXPECT_EQ(simjournal::count("attach") + simjournal::count("detach"), 0) << "works on the caller's handle";
    EXPECT_EQ(simjournal::logs("add_AlarmInfo_Index"),
              (std::vector<std::string>{"5 alarm_code = 104001, alarmStatus=2\n", "5 Add new addindex = 3\n"}));
}

TEST_F(AlarmHandleTest, MatchingEntryIsRefreshedWithTheGivenStatus) {
    put_entry(6, 104001, 3);
    ASSERT_EQ(qvsim_set(224, "6", "AlarmClearedTime", "2026-01-01T00:00:00"), 0);
    simjournal::clear();
    EXPECT_EQ(add_AlarmInfo_Index(h_, 104001, 9), -1);
    EXPECT_EQ(entry(6, "AlarmStatus"), "9");
    EXPECT_EQ(entry(6, "AlarmRaisedTime"), local_stamp(kT0));
    EXPECT_EQ(entry(6, "AlarmClearedTime"), kNoTime);
}

TEST_F(AlarmHandleTest, AllIndicesTakenGivesMinusOne) {
    for (int i = 1; i <= 255; ++i) put_entry(i, 1);
    simjournal::clear();
    EXPECT_EQ(add_AlarmInfo_Index(h_, 2, 1), -1);
    EXPECT_EQ(simjournal::logs("add_AlarmInfo_Index").back(), "5 Add new addindex = -1\n");
    EXPECT_EQ(simjournal::count("set"), 0);
}

TEST_F(AlarmHandleTest, EntryAt255IsNotMatchedButIndex255IsNotFree) {
    for (int i = 1; i <= 254; ++i) put_entry(i, 1);
    put_entry(255, 104001);
    simjournal::clear();
    EXPECT_EQ(add_AlarmInfo_Index(h_, 104001, 2), -1);
    EXPECT_EQ(simjournal::count("set"), 0) << "not refreshed: the table is merely full";
    EXPECT_EQ(simjournal::logs("add_AlarmInfo_Index").back(), "5 Add new addindex = -1\n");
}

TEST_F(AlarmHandleTest, Index255IsGivenWhenItIsTheOnlyFreeOne) {
    for (int i = 1; i <= 254; ++i) put_entry(i, 1);
    simjournal::clear();
    EXPECT_EQ(add_AlarmInfo_Index(h_, 104001, 2), 255);
}

TEST_F(AlarmHandleTest, UpdateWritesTheCounter) {
    const void *config = qvsXml_GetObjectByOID(h_, 223, 0, 1);
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(update_numberofAlarmInfo(h_, config, 42), 0);
    EXPECT_EQ(counter(), "42");
    EXPECT_EQ(simjournal::sets(), std::vector<std::string>{"223  NumberOfAlarmInfo 4 42"});
    EXPECT_EQ(simjournal::logs("update_numberofAlarmInfo"),
              std::vector<std::string>{"5 Update NumberOfAlarmInfo=42\n"});
}

TEST_F(AlarmHandleTest, UpdateWithoutObjectOrHandleStillGivesZero) {
    EXPECT_EQ(update_numberofAlarmInfo(h_, nullptr, 5), 0);
    EXPECT_EQ(update_numberofAlarmInfo(0, nullptr, 6), 0);
    EXPECT_EQ(simjournal::count("set"), 0);
    EXPECT_EQ(counter(), "0");
}

}  // namespace
