// SPDX-License-Identifier: MIT
// Helpers of the time suites: the diagnostic lines written through
// util_printf, split into (function, message) records.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace timetest {

// Path of the running test program, as util_printf prints it.
std::string self_exe();

struct LogLine {
    std::string function;
    std::string message;  // the formatted text, without the final newline util_printf adds
    bool operator==(const LogLine &o) const { return function == o.function && message == o.message; }
};

// Splits captured standard error into util_printf records of "qvs_utils.cpp".
std::vector<LogLine> parse_log(const std::string &err);

// Seconds since 1970 of a UTC calendar time (timegm).
long long utc(int y, int mo, int d, int h, int mi, int s);

// The process's own zone for the calendar functions (mktime, localtime).
void use_zone(const char *tz);

}  // namespace timetest
