// SPDX-License-Identifier: MIT
// Time family: timer rules in UTC, local time stamps, summer time, UTC texts
// from local times. get_currentTime gets a store handle attached here for
// the call.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

#include "qvs_utils.h"
#include "qvsctl.hpp"
#include "store.hpp"

namespace {

using qvsctl::Store;

// my_utctime <zone> <start> <end> <weekdays>: every output from zero-filled buffers.
int run_utctime(char **argv) {
    std::size_t days = std::strlen(argv[3]) + 1;
    std::vector<char> utc_days(days, 0), next_days(days, 0);
    char utc_start[16] = {}, utc_end[16] = {}, next_start[16] = {}, next_end[16] = {};
    std::fflush(stdout);
    int r = my_utctime(argv[0], argv[1], argv[2], argv[3], utc_start, utc_end, utc_days.data(), next_start,
                       next_end, next_days.data());
    qvsctl::print_result(r);
    qvsctl::print_text("utcStart", utc_start);
    qvsctl::print_text("utcEnd", utc_end);
    qvsctl::print_text("utcWeekdays", utc_days.data());
    qvsctl::print_text("nextStart", next_start);
    qvsctl::print_text("nextEnd", next_end);
    qvsctl::print_text("nextWeekdays", next_days.data());
    return qvsctl::kRan;
}

// my_localtime <dstEnable> <zone>
int run_localtime(char **argv) {
    long long dst = 0;
    if (!qvsctl::parse_int(argv[0], -2147483648LL, 2147483647LL, dst)) return qvsctl::kBadArgs;
    char out[26] = {};
    std::fflush(stdout);
    int r = my_localtime(static_cast<int>(dst), argv[1], out);
    qvsctl::print_result(r);
    qvsctl::print_text("time", out);
    return qvsctl::kRan;
}

// qvsTimeToDST <seconds>
int run_time_to_dst(char **argv) {
    long long s = 0;
    long long max = sizeof(time_t) == 4 ? 2147483647LL : 9223372036854775807LL;
    if (!qvsctl::parse_int(argv[0], -max - 1, max, s)) return qvsctl::kBadArgs;
    std::fflush(stdout);
    qvsctl::print_result(static_cast<long long>(qvsTimeToDST(static_cast<time_t>(s))));
    return qvsctl::kRan;
}

// qvsCheckDST <year> <month> <day> <hour> <minute> <second>
int run_check_dst(char **argv) {
    int v[6];
    for (int i = 0; i < 6; ++i) {
        long long x = 0;
        if (!qvsctl::parse_int(argv[i], -2147483648LL, 2147483647LL, x)) return qvsctl::kBadArgs;
        v[i] = static_cast<int>(x);
    }
    qvsctl::print_result(qvsCheckDST(v[0], v[1], v[2], v[3], v[4], v[5]));
    return qvsctl::kRan;
}

// my_settime <YYYY-MM-DDTHH:MM:SS> <zone>: the local time goes in with no
// summer time (tm_isdst 0).
int run_settime(char **argv) {
    struct tm tm {};
    char sep = 0, tail = 0;
    if (std::sscanf(argv[0], "%d-%d-%d%c%d:%d:%d%c", &tm.tm_year, &tm.tm_mon, &tm.tm_mday, &sep, &tm.tm_hour,
                    &tm.tm_min, &tm.tm_sec, &tail) != 7 ||
        (sep != 'T' && sep != ' ')) {
        std::fprintf(stderr, "qvsctl: '%s' is not a time (YYYY-MM-DDTHH:MM:SS)\n", argv[0]);
        return qvsctl::kBadArgs;
    }
    tm.tm_year -= 1900;
    tm.tm_mon -= 1;
    tm.tm_isdst = 0;
    char out[26] = {};
    std::fflush(stdout);
    int r = my_settime(tm, argv[1], out);
    qvsctl::print_result(r);
    qvsctl::print_text("utc", out);
    return qvsctl::kRan;
}

// get_currentTime
int run_current_time(char **) {
    Store store;
    char out[26] = {};
    std::fflush(stdout);
    char *r = get_currentTime(store.handle(), out);
    qvsctl::print_result(r == out ? 0 : -1);
    qvsctl::print_text("time", out);
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"my_utctime", "<zone> <start> <end> <weekdays>", "a local timer rule (HH:MM range, weekday list) in UTC", 4, 4,
     run_utctime},
    {"my_localtime", "<dstEnable> <zone>", "the current local time stamp for a zone (+HH:MM / -HH:MM)", 2, 2,
     run_localtime},
    {"qvsTimeToDST", "<seconds>", "seconds, plus 3600 inside summer time", 1, 1, run_time_to_dst},
    {"qvsCheckDST", "<year> <month> <day> <hour> <minute> <second>", "1 inside the summer-time window, else 0", 6, 6,
     run_check_dst},
    {"my_settime", "<YYYY-MM-DDTHH:MM:SS> <zone>", "a local time in a zone as UTC text", 2, 2, run_settime},
    {"get_currentTime", "", "the alarm time stamp from the store's time object", 0, 0, run_current_time},
};

}  // namespace

QVSCTL_FAMILY(g_time, "time", "timer rules in UTC, local time stamps, summer time", kCommands);
