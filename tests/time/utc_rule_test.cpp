// SPDX-License-Identifier: MIT
// Timer rules from local time to UTC: zone reading, the two conversion
// steps, the six ways of combining the start and end results, the fixed
// range ends and the diagnostic lines.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"
#include "time_test_support.hpp"

using qvstest::CaptureFd;
using timetest::LogLine;
using timetest::parse_log;

namespace {

constexpr size_t kTime = 16;
constexpr size_t kDays = 128;

// One call with caller buffers filled with `fill` (0: the zero-filled
// buffers the caller must give; 'X': shows exactly which bytes are written).
struct Rule {
    char utcStart[kTime], utcEnd[kTime], utcWeekdays[kDays];
    char nextStart[kTime], nextEnd[kTime], nextWeekdays[kDays];
    int result = 0;
    std::string out, err;
    std::vector<LogLine> log;

    Rule(const char *zone, const char *start, const char *end, const char *days, char fill = 0) {
        for (char *b : {utcStart, utcEnd, nextStart, nextEnd}) std::memset(b, fill, kTime);
        for (char *b : {utcWeekdays, nextWeekdays}) std::memset(b, fill, kDays);
        CaptureFd o(1), e(2);
        result = my_utctime(zone, start, end, days, utcStart, utcEnd, utcWeekdays, nextStart, nextEnd, nextWeekdays);
        out = o.text();
        err = e.text();
        log = parse_log(err);
    }
};

LogLine L(const char *function, const std::string &message) { return LogLine{function, message}; }

bool untouched(const char *b, size_t n, char fill) {
    for (size_t i = 0; i < n; ++i)
        if (b[i] != fill) return false;
    return true;
}

}  // namespace

// ---- case A: both ends on the same day ---------------------------------

TEST(UtcRuleCaseA, MinusZoneAddsTheOffset) {
    Rule r("-05:00", "08:00", "10:00", "1,2,3");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "13:00");
    EXPECT_STREQ(r.utcEnd, "15:00");
    EXPECT_STREQ(r.utcWeekdays, "1,2,3");
    EXPECT_STREQ(r.nextStart, "");
    EXPECT_STREQ(r.nextEnd, "");
    EXPECT_STREQ(r.nextWeekdays, "");
    EXPECT_EQ(r.log, (std::vector<LogLine>{L("my_utctime", "+zone minute 300\n"),
                                           L("my_utcChangeTime", "weekend do not change 13:00\n"),
                                           L("my_utcChangeTime", "weekend do not change 15:00\n"),
                                           L("my_utctime", "utc weekend 13:00 - 15:00 1,2,3\n")}));
    EXPECT_EQ(r.out, "");
}

TEST(UtcRuleCaseA, PlusZoneSubtractsTheOffset) {
    Rule r("+08:00", "10:00", "12:30", "1,2");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "02:00");
    EXPECT_STREQ(r.utcEnd, "04:30");
    EXPECT_STREQ(r.utcWeekdays, "1,2");
    EXPECT_STREQ(r.nextStart, "");
    EXPECT_EQ(r.log, (std::vector<LogLine>{L("my_utctime", "-zone minute 480\n"),
                                           L("my_utcChangeTime", "weekend do not change 02:00\n"),
                                           L("my_utcChangeTime", "weekend do not change 04:30\n"),
                                           L("my_utctime", "utc: time 02:00 - 04:30 weekend 1,2\n")}));
}

TEST(UtcRuleCaseA, ZeroOffsetReformatsAndAddsSecondsAsMinutes) {
    Rule r("+00:00", "07:05:30", "9:5", "3");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "07:35");
    EXPECT_STREQ(r.utcEnd, "09:05");
    EXPECT_STREQ(r.utcWeekdays, "3");
    EXPECT_EQ(r.log.front(), L("my_utctime", "-zone minute 0\n"));
    EXPECT_EQ(r.log.back(), L("my_utctime", "utc: time 07:35 - 09:05 weekend 3\n"));
}

// ---- case B: both ends on the next day ---------------------------------

TEST(UtcRuleCaseB, MinusZoneMovesWeekdaysForward) {
    Rule r("-05:00", "20:00", "22:30", "5,6,7");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "01:00");
    EXPECT_STREQ(r.utcEnd, "03:30");
    EXPECT_STREQ(r.utcWeekdays, "6,7,1");
    EXPECT_STREQ(r.nextStart, "");
    EXPECT_STREQ(r.nextEnd, "");
    EXPECT_STREQ(r.nextWeekdays, "");
    EXPECT_EQ(r.log, (std::vector<LogLine>{L("my_utctime", "+zone minute 300\n"),
                                           L("my_utcChangeTime", "next weekend time 01:00\n"),
                                           L("my_utcChangeTime", "next weekend time 03:30\n"),
                                           L("my_utcChangeWeekend", "day + 1: weekdend 5,6,7 utc weekend 6,7,1\n"),
                                           L("my_utctime", "utc weekend + 1 01:00 - 03:30 6,7,1\n")}));
}

TEST(UtcRuleCaseB, PlusZoneWithTimesPastMidnight) {
    Rule r("+01:00", "25:30", "26:00", "1,2");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "00:30");
    EXPECT_STREQ(r.utcEnd, "01:00");
    EXPECT_STREQ(r.utcWeekdays, "2,3");
    EXPECT_STREQ(r.nextStart, "");
    EXPECT_EQ(r.log.back(), L("my_utctime", "utc: time 00:30 - 01:00 weekend + 1 2,3\n"));
}

// ---- case C: both ends on the previous day -----------------------------

TEST(UtcRuleCaseC, PlusZoneMovesWeekdaysBack) {
    Rule r("+08:00", "02:00", "06:00", "1,7");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "18:00");
    EXPECT_STREQ(r.utcEnd, "22:00");
    EXPECT_STREQ(r.utcWeekdays, "7,6");
    EXPECT_STREQ(r.nextStart, "");
    EXPECT_STREQ(r.nextWeekdays, "");
    EXPECT_EQ(r.log, (std::vector<LogLine>{L("my_utctime", "-zone minute 480\n"),
                                           L("my_utcChangeTime", "previous weekend time 18:00\n"),
                                           L("my_utcChangeTime", "previous weekend time 22:00\n"),
                                           L("my_utcChangeWeekend", "day - 1: weekdend 1,7 utc weekend 7,6\n"),
                                           L("my_utctime", "utc: time 18:00 - 22:00 weekend - 1 7,6\n")}));
}

TEST(UtcRuleCaseC, MinusZoneWithNegativeTimes) {
    Rule r("-01:00", "-5:00", "-2:00", "4");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "20:00");
    EXPECT_STREQ(r.utcEnd, "23:00");
    EXPECT_STREQ(r.utcWeekdays, "3");
    EXPECT_EQ(r.log.back(), L("my_utctime", "utc weekend - 1 20:00 - 23:00 3\n"));
}

// ---- case D: the end crosses into the next day: split ------------------

TEST(UtcRuleCaseD, MinusZoneSplitsAtMidnight) {
    Rule r("-05:00", "15:00", "20:00", "1,7");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "20:00");
    EXPECT_STREQ(r.utcEnd, "23:59:59");
    EXPECT_STREQ(r.utcWeekdays, "1,7");
    EXPECT_STREQ(r.nextStart, "00:00:00");
    EXPECT_STREQ(r.nextEnd, "01:00");
    EXPECT_STREQ(r.nextWeekdays, "2,1");
    EXPECT_EQ(r.log,
              (std::vector<LogLine>{L("my_utctime", "+zone minute 300\n"),
                                    L("my_utcChangeTime", "weekend do not change 20:00\n"),
                                    L("my_utcChangeTime", "next weekend time 01:00\n"),
                                    L("my_utcChangeWeekend", "day + 1: weekdend 1,7 utc weekend 2,1\n"),
                                    L("my_utctime",
                                      "utc weekend: 20:00 - 23:59:59 1,7, local weekend: 00:00:00 - 01:00 2,1\n")}));
}

TEST(UtcRuleCaseD, PlusZoneLineHasTwoBlanksBeforeWeekend) {
    Rule r("+01:00", "22:00", "25:30", "3");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "21:00");
    EXPECT_STREQ(r.utcEnd, "23:59:59");
    EXPECT_STREQ(r.utcWeekdays, "3");
    EXPECT_STREQ(r.nextStart, "00:00:00");
    EXPECT_STREQ(r.nextEnd, "00:30");
    EXPECT_STREQ(r.nextWeekdays, "4");
    EXPECT_EQ(r.log.back(),
              L("my_utctime", "utc: time 21:00 - 23:59:59 weekend 3, local: time 00:00:00 - 00:30  weekend 4\n"));
}

TEST(UtcRuleCaseD, EndOfExactlyOneDayGivesMidnightNextDay) {
    Rule r("-01:00", "20:00", "23:00", "6");
    EXPECT_STREQ(r.utcStart, "21:00");
    EXPECT_STREQ(r.utcEnd, "23:59:59");
    EXPECT_STREQ(r.nextStart, "00:00:00");
    EXPECT_STREQ(r.nextEnd, "00:00");
    EXPECT_STREQ(r.nextWeekdays, "7");
    EXPECT_EQ(r.log[2], L("my_utcChangeTime", "next weekend time 00:00\n"));
}

// ---- case E: the start falls on the previous day: split ----------------

TEST(UtcRuleCaseE, PlusZoneExampleRule) {
    Rule r("+08:00", "06:00", "10:00", "1,2");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "22:00");
    EXPECT_STREQ(r.utcEnd, "23:59:59");
    EXPECT_STREQ(r.utcWeekdays, "7,1");
    EXPECT_STREQ(r.nextStart, "00:00:00");
    EXPECT_STREQ(r.nextEnd, "02:00");
    EXPECT_STREQ(r.nextWeekdays, "1,2");
    EXPECT_EQ(r.log,
              (std::vector<LogLine>{L("my_utctime", "-zone minute 480\n"),
                                    L("my_utcChangeTime", "previous weekend time 22:00\n"),
                                    L("my_utcChangeTime", "weekend do not change 02:00\n"),
                                    L("my_utcChangeWeekend", "day - 1: weekdend 1,2 utc weekend 7,1\n"),
                                    L("my_utctime",
                                      "utc: time 22:00 - 23:59:59 weekend 7,1, local: time 00:00:00 - 02:00 weekend 1,2\n")}));
}

TEST(UtcRuleCaseE, StartAtMidnightWithPlusZoneIsPreviousDay) {
    Rule r("+00:30", "00:00", "01:00", "1");
    EXPECT_STREQ(r.utcStart, "23:30");
    EXPECT_STREQ(r.utcEnd, "23:59:59");
    EXPECT_STREQ(r.utcWeekdays, "7");
    EXPECT_STREQ(r.nextStart, "00:00:00");
    EXPECT_STREQ(r.nextEnd, "00:30");
    EXPECT_STREQ(r.nextWeekdays, "1");
    EXPECT_EQ(r.log[1], L("my_utcChangeTime", "previous weekend time 23:30\n"));
}

TEST(UtcRuleCaseE, MinusZoneWithNegativeStart) {
    Rule r("-01:00", "-2:00", "03:00", "2,3");
    EXPECT_STREQ(r.utcStart, "23:00");
    EXPECT_STREQ(r.utcEnd, "23:59:59");
    EXPECT_STREQ(r.utcWeekdays, "1,2");
    EXPECT_STREQ(r.nextStart, "00:00:00");
    EXPECT_STREQ(r.nextEnd, "04:00");
    EXPECT_STREQ(r.nextWeekdays, "2,3");
    EXPECT_EQ(r.log.back(),
              L("my_utctime", "utc weekend: 23:00 - 23:59:59 1,2, local weekend: 00:00:00 - 04:00 2,3\n"));
}

// ---- case F: the local range wraps past midnight itself -----------------

TEST(UtcRuleCaseF, NextThenSameDayLeavesWeekdaysAndLogsNoSummary) {
    Rule r("-03:00", "22:00", "20:00", "1,2", 'X');
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "01:00");
    EXPECT_STREQ(r.utcEnd, "23:00");
    EXPECT_TRUE(untouched(r.utcWeekdays, kDays, 'X'));
    EXPECT_TRUE(untouched(r.nextStart, kTime, 'X'));
    EXPECT_TRUE(untouched(r.nextEnd, kTime, 'X'));
    EXPECT_TRUE(untouched(r.nextWeekdays, kDays, 'X'));
    EXPECT_EQ(r.log, (std::vector<LogLine>{L("my_utctime", "+zone minute 180\n"),
                                           L("my_utcChangeTime", "next weekend time 01:00\n"),
                                           L("my_utcChangeTime", "weekend do not change 23:00\n")}));
}

TEST(UtcRuleCaseF, SameThenPreviousDay) {
    Rule r("+02:00", "10:00", "01:00", "5");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "08:00");
    EXPECT_STREQ(r.utcEnd, "23:00");
    EXPECT_STREQ(r.utcWeekdays, "");
    EXPECT_STREQ(r.nextStart, "");
    EXPECT_EQ(r.log.size(), 3u);
}

TEST(UtcRuleCaseF, NextThenPreviousDay) {
    Rule r("+01:00", "25:00", "00:30", "5");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "00:00");
    EXPECT_STREQ(r.utcEnd, "23:30");
    EXPECT_STREQ(r.utcWeekdays, "");
    EXPECT_STREQ(r.nextStart, "");
    EXPECT_EQ(r.log.size(), 3u);
}

TEST(UtcRuleCaseF, PreviousThenNextDay) {
    Rule r("+01:00", "00:30", "25:30", "5");
    EXPECT_EQ(r.result, 0);
    EXPECT_STREQ(r.utcStart, "23:30");
    EXPECT_STREQ(r.utcEnd, "00:30");
    EXPECT_STREQ(r.utcWeekdays, "");
    EXPECT_STREQ(r.nextStart, "");
    EXPECT_STREQ(r.nextEnd, "");
    EXPECT_EQ(r.log.size(), 3u);
}

// ---- what exactly is written into the caller's buffers -------------------

TEST(UtcRuleBuffers, FixedEndsAndWeekdaysCarryNoTerminator) {
    Rule r("+08:00", "06:00", "10:00", "1,2", 'X');
    EXPECT_EQ(std::string(r.utcStart, 7), std::string("22:00\0X", 7));
    EXPECT_EQ(std::string(r.utcEnd, 9), "23:59:59X");
    EXPECT_EQ(std::string(r.utcWeekdays, 4), "7,1X");
    EXPECT_EQ(std::string(r.nextStart, 9), "00:00:00X");
    EXPECT_EQ(std::string(r.nextEnd, 7), std::string("02:00\0X", 7));
    EXPECT_EQ(std::string(r.nextWeekdays, 4), "1,2X");
}

TEST(UtcRuleBuffers, CaseDWritesTheSameWay) {
    Rule r("-05:00", "15:00", "20:00", "1,7", 'X');
    EXPECT_EQ(std::string(r.utcEnd, 9), "23:59:59X");
    EXPECT_EQ(std::string(r.utcWeekdays, 4), "1,7X");
    EXPECT_EQ(std::string(r.nextStart, 9), "00:00:00X");
    EXPECT_EQ(std::string(r.nextEnd, 7), std::string("01:00\0X", 7));
    EXPECT_EQ(std::string(r.nextWeekdays, 4), "2,1X");
}

TEST(UtcRuleBuffers, SameDayRuleCopiesWeekdaysWithoutTerminator) {
    Rule r("+08:00", "10:00", "12:30", "1,2", 'X');
    EXPECT_EQ(std::string(r.utcStart, 7), std::string("02:00\0X", 7));
    EXPECT_EQ(std::string(r.utcEnd, 7), std::string("04:30\0X", 7));
    EXPECT_EQ(std::string(r.utcWeekdays, 4), "1,2X");
    EXPECT_TRUE(untouched(r.nextStart, kTime, 'X'));
    EXPECT_TRUE(untouched(r.nextWeekdays, kDays, 'X'));
}

TEST(UtcRuleBuffers, UnsplitRuleLeavesTheSecondRangeAlone) {
    Rule r("-05:00", "20:00", "22:30", "5,6,7", 'X');
    EXPECT_EQ(std::string(r.utcWeekdays, 6), "6,7,1X");
    EXPECT_TRUE(untouched(r.nextStart, kTime, 'X'));
    EXPECT_TRUE(untouched(r.nextEnd, kTime, 'X'));
    EXPECT_TRUE(untouched(r.nextWeekdays, kDays, 'X'));
}

TEST(UtcRuleBuffers, ConvertedTimeIsCutAtEightCharacters) {
    Rule r("+00:00", "9999999999:00", "12:00", "1", 'X');
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(strnlen(r.utcStart, kTime), 8u);
    EXPECT_TRUE(untouched(r.utcStart + 9, kTime - 9, 'X'));
    EXPECT_STREQ(r.utcEnd, "12:00");
}

// ---- weekday shifting -----------------------------------------------------

TEST(UtcRuleWeekdays, SevenForwardIsOneAndCommasStay) {
    Rule r("-05:00", "20:00", "21:00", "1,2,3,4,5,6,7");
    EXPECT_STREQ(r.utcWeekdays, "2,3,4,5,6,7,1");
}

TEST(UtcRuleWeekdays, OneBackIsSevenAndCommasStay) {
    Rule r("+08:00", "01:00", "02:00", "1,2,3,4,5,6,7");
    EXPECT_STREQ(r.utcWeekdays, "7,1,2,3,4,5,6");
}

TEST(UtcRuleWeekdays, OtherCharactersMoveByCharacterCode) {
    Rule f("-05:00", "20:00", "21:00", "0a8");
    EXPECT_STREQ(f.utcWeekdays, "1b9");
    Rule b("+08:00", "01:00", "02:00", "0a8");
    EXPECT_STREQ(b.utcWeekdays, "/`7");
}

TEST(UtcRuleWeekdays, EmptyListWritesNothingAndStillLogs) {
    Rule r("-05:00", "20:00", "21:00", "", 'X');
    EXPECT_EQ(r.result, 0);
    EXPECT_TRUE(untouched(r.utcWeekdays, kDays, 'X'));
    EXPECT_EQ(r.log[3], L("my_utcChangeWeekend", "day + 1: weekdend  utc weekend \n"));
    EXPECT_EQ(r.log[4], L("my_utctime", "utc weekend + 1 01:00 - 02:00 \n"));
}

TEST(UtcRuleWeekdays, LongListIsShiftedWhole) {
    std::string days, shifted;
    for (int i = 0; i < 60; ++i) {
        days += std::to_string(i % 7 + 1) + ",";
        shifted += std::to_string((i + 1) % 7 + 1) + ",";
    }
    days += "7";
    shifted += "1";
    Rule r("-05:00", "20:00", "21:00", days.c_str());
    EXPECT_EQ(std::string(r.utcWeekdays), shifted);
    EXPECT_EQ(r.log[3].message, "day + 1: weekdend " + days + " utc weekend " + shifted + "\n");
}

// ---- zones --------------------------------------------------------------

TEST(UtcRuleZone, NoSignCopiesEverythingUnchanged) {
    for (const char *zone : {"UTC", "0", ""}) {
        Rule r(zone, "07:05:30", "9:5", "1,3", 'X');
        EXPECT_EQ(r.result, 0) << zone;
        EXPECT_STREQ(r.utcStart, "07:05:30") << zone;
        EXPECT_STREQ(r.utcEnd, "9:5") << zone;
        EXPECT_EQ(std::string(r.utcWeekdays, 4), "1,3X") << zone;
        EXPECT_TRUE(untouched(r.nextStart, kTime, 'X')) << zone;
        EXPECT_EQ(r.log, (std::vector<LogLine>{L("my_utctime", std::string("time do not change zone ") + zone + "\n")}))
            << zone;
    }
}

TEST(UtcRuleZone, MinusAloneIsRefused) {
    Rule r("-", "08:00", "10:00", "1", 'X');
    EXPECT_EQ(r.result, -1);
    EXPECT_EQ(r.out, "ntp ptr is NULL!\n");
    EXPECT_EQ(r.err, "");
    for (const char *b : {r.utcStart, r.utcEnd, r.nextStart, r.nextEnd}) EXPECT_TRUE(untouched(b, kTime, 'X'));
    EXPECT_TRUE(untouched(r.utcWeekdays, kDays, 'X'));
    EXPECT_TRUE(untouched(r.nextWeekdays, kDays, 'X'));
}

TEST(UtcRuleZone, PlusAloneIsRefused) {
    Rule r("+", "08:00", "10:00", "1", 'X');
    EXPECT_EQ(r.result, -1);
    EXPECT_EQ(r.out, "localtime ptr is NULL!\n");
    EXPECT_EQ(r.err, "");
    EXPECT_TRUE(untouched(r.utcStart, kTime, 'X'));
    EXPECT_TRUE(untouched(r.utcWeekdays, kDays, 'X'));
}

TEST(UtcRuleZone, RepeatedSignsOnlyAreRefused) {
    Rule m("---", "08:00", "10:00", "1");
    EXPECT_EQ(m.result, -1);
    EXPECT_EQ(m.out, "ntp ptr is NULL!\n");
    Rule p("++", "08:00", "10:00", "1");
    EXPECT_EQ(p.result, -1);
    EXPECT_EQ(p.out, "localtime ptr is NULL!\n");
}

TEST(UtcRuleZone, MinutesAreOptional) {
    Rule r("+8", "10:00", "12:00", "1");
    EXPECT_EQ(r.log.front(), L("my_utctime", "-zone minute 480\n"));
    EXPECT_STREQ(r.utcStart, "02:00");
}

TEST(UtcRuleZone, HalfHourZone) {
    Rule r("-05:30", "08:00", "10:15", "1");
    EXPECT_EQ(r.log.front(), L("my_utctime", "+zone minute 330\n"));
    EXPECT_STREQ(r.utcStart, "13:30");
    EXPECT_STREQ(r.utcEnd, "15:45");
}

TEST(UtcRuleZone, BothSignsMakeAMinusZone) {
    // The text before the "-" is the hour field: "+8" reads as 8.
    Rule r("+8:00-", "08:00", "10:00", "1");
    EXPECT_EQ(r.log.front(), L("my_utctime", "+zone minute 480\n"));
    EXPECT_STREQ(r.utcStart, "16:00");
}

TEST(UtcRuleZone, TextBeforeTheSignReadsAsZeroHours) {
    Rule r("UTC+8", "08:00", "10:00", "1");
    EXPECT_EQ(r.result, 0);
    EXPECT_EQ(r.log.front(), L("my_utctime", "-zone minute 0\n"));
    EXPECT_STREQ(r.utcStart, "08:00");
}

TEST(UtcRuleZone, OnlyTheFirstSixCharactersAreRead) {
    // "+08:00-" would be a "-" zone; cut to "+08:00" it is a "+" zone.
    Rule a("+08:00-", "10:00", "12:00", "1");
    EXPECT_EQ(a.log.front(), L("my_utctime", "-zone minute 480\n"));
    EXPECT_STREQ(a.utcStart, "02:00");
    // "-0000001": the copy "-00000" reads as no offset.
    Rule b("-0000001", "10:00", "12:00", "1");
    EXPECT_EQ(b.log.front(), L("my_utctime", "+zone minute 0\n"));
    EXPECT_STREQ(b.utcStart, "10:00");
    // The no-sign line shows the copy too.
    Rule c("GMTABCDEF", "10:00", "12:00", "1");
    EXPECT_EQ(c.log.front(), L("my_utctime", "time do not change zone GMTABC\n"));
}

TEST(UtcRuleTimes, NonNumericFieldsReadAsZero) {
    Rule r("+00:00", "ab:cd", "1x:2y", "1");
    EXPECT_STREQ(r.utcStart, "00:00");
    EXPECT_STREQ(r.utcEnd, "01:02");
}

TEST(UtcRuleTimes, OnlyTheFirstNineteenCharactersAreRead) {
    // Twenty characters: the last field digit is cut away.
    Rule r("+00:00", "00:00:00:00:00:0001", "00:00:00:00:00:00012", "1");
    EXPECT_STREQ(r.utcStart, "00:01");
    EXPECT_STREQ(r.utcEnd, "00:01");
}

TEST(UtcRuleArguments, NullArgumentsAreRefused) {
    char a[16] = {}, b[16] = {}, c[16] = {}, d[16] = {}, e[16] = {}, f[16] = {};
    EXPECT_EQ(my_utctime(nullptr, "08:00", "10:00", "1", a, b, c, d, e, f), -1);
    EXPECT_EQ(my_utctime("+08:00", nullptr, "10:00", "1", a, b, c, d, e, f), -1);
    EXPECT_EQ(my_utctime("+08:00", "08:00", "10:00", nullptr, a, b, c, d, e, f), -1);
    EXPECT_EQ(my_utctime("+08:00", "08:00", "10:00", "1", a, b, c, d, e, nullptr), -1);
    EXPECT_STREQ(a, "");
}
