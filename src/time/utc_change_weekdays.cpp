// SPDX-License-Identifier: MIT
// A weekday list moved one day forward or back.
#include <cstring>

#include "core/log.hpp"
#include "time/utc_rule.hpp"

namespace qvs::time {

void my_utcChangeWeekend(const char *weekdays, char *out, int direction) {
    std::size_t n = std::strlen(weekdays);
    for (std::size_t i = 0; i < n; ++i) {
        char c = weekdays[i];
        char d;
        if (c == ',')
            d = ',';
        else if (direction > 0)
            d = (c == '7') ? '1' : (c == '1') ? '2' : static_cast<char>(c + 1);
        else
            d = (c == '7') ? '6' : (c == '1') ? '7' : static_cast<char>(c - 1);
        out[i] = d;
    }
    out[n] = '\0';
    if (direction > 0)
        QVS_UTIL_PRINTF("day + 1: weekdend %s utc weekend %s\n", weekdays, out);
    else
        QVS_UTIL_PRINTF("day - 1: weekdend %s utc weekend %s\n", weekdays, out);
}

}  // namespace qvs::time
