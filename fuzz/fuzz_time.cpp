// SPDX-License-Identifier: MIT
// The timer-rule conversion and the local-time functions on arbitrary zone,
// time and weekday texts; outputs are sized exactly as documented, so any
// write past them is caught by AddressSanitizer.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "fuzz_check.hpp"
#include "qvs_utils.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 8 || size > 512) return 0;
    std::vector<std::string> t(1);
    for (size_t i = 8; i < size; ++i) {
        if (data[i] == 0 && t.size() < 4)
            t.emplace_back();
        else if (data[i] != 0)
            t.back() += static_cast<char>(data[i]);
    }
    while (t.size() < 4) t.emplace_back();
    const std::string &zone = t[0], &start = t[1], &end = t[2], &days = t[3];

    std::vector<char> us(9), ue(9), uw(days.size() + 1), ns(9), ne(9), nw(days.size() + 1);
    const int r = my_utctime(zone.c_str(), start.c_str(), end.c_str(), days.c_str(), us.data(), ue.data(), uw.data(),
                             ns.data(), ne.data(), nw.data());
    FUZZ_CHECK(r == 0 || r == -1);

    std::vector<char> out(20);
    const int l = my_localtime(data[0] & 1, zone.c_str(), out.data());
    FUZZ_CHECK(l == 0 || l == -1);
    if (l == 0) FUZZ_CHECK(std::strlen(out.data()) == 19);

    int32_t secs = 0;
    std::memcpy(&secs, data + 1, sizeof secs);
    const time_t shifted = qvsTimeToDST(static_cast<time_t>(secs));
    FUZZ_CHECK(shifted == secs || shifted == static_cast<time_t>(secs) + 3600);
    const int dst = qvsCheckDST(1900 + data[1] * 2, data[2] % 14, data[3] % 33, data[4] % 25, data[5] % 61, data[6] % 61);
    FUZZ_CHECK(dst == 0 || dst == 1);

    struct tm tm {};
    tm.tm_year = data[1];
    tm.tm_mon = data[2] % 12;
    tm.tm_mday = 1 + data[3] % 28;
    tm.tm_hour = data[4] % 24;
    tm.tm_min = data[5] % 60;
    tm.tm_sec = data[6] % 60;
    tm.tm_isdst = 0;
    std::vector<char> set(20);
    const int s = my_settime(tm, zone.c_str(), set.data());
    FUZZ_CHECK(s == 0 || s == -1);
    return 0;
}
