// SPDX-License-Identifier: MIT
#include "time_test_support.hpp"

#include <cstdlib>
#include <ctime>
#include <unistd.h>

namespace timetest {

std::string self_exe() {
    char buf[4096] = {};
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, static_cast<size_t>(n)).substr(0, 127) : std::string();
}

std::vector<LogLine> parse_log(const std::string &err) {
    std::vector<LogLine> lines;
    const std::string prefix = self_exe() + "[qvs_utils.cpp:";
    size_t pos = err.find(prefix);
    while (pos != std::string::npos) {
        size_t body = pos + prefix.size();
        size_t next = err.find(prefix, body);
        std::string rec = err.substr(body, next == std::string::npos ? std::string::npos : next - body);
        LogLine l;
        size_t colon = rec.find(':');
        size_t bracket = rec.find(']');
        if (colon != std::string::npos && bracket != std::string::npos) {
            l.function = rec.substr(0, colon);
            l.message = rec.substr(bracket + 1);
            if (!l.message.empty() && l.message.back() == '\n') l.message.pop_back();
        }
        lines.push_back(l);
        pos = next;
    }
    return lines;
}

void use_zone(const char *tz) {
    setenv("TZ", tz, 1);
    tzset();
}

long long utc(int y, int mo, int d, int h, int mi, int s) {
    struct tm tm {};
    tm.tm_year = y - 1900;
    tm.tm_mon = mo - 1;
    tm.tm_mday = d;
    tm.tm_hour = h;
    tm.tm_min = mi;
    tm.tm_sec = s;
    return static_cast<long long>(timegm(&tm));
}

}  // namespace timetest
