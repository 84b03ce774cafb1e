// SPDX-License-Identifier: MIT
// Zone text and decimal fields.
#include "time/zone_text.hpp"

#include <array>
#include <cstring>

namespace qvs::time {

namespace {

constexpr long long kDecimalLimit = 999999999999LL;

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }

}  // namespace

long long read_decimal(const char *text) {
    if (text == nullptr) return 0;
    const char *p = text;
    while (is_blank(*p)) ++p;
    bool negative = false;
    if (*p == '+' || *p == '-') {
        negative = (*p == '-');
        ++p;
    }
    long long value = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        if (value < kDecimalLimit) value = value * 10 + (*p - '0');
        if (value > kDecimalLimit) value = kDecimalLimit;
    }
    return negative ? -value : value;
}

Zone read_zone(const char *zone) {
    Zone z;
    if (zone == nullptr) return z;

    std::array<char, kZoneBufferSize> buf{};
    std::strncpy(buf.data(), zone, kZoneBufferSize - 1);

    char sep;
    if (std::strchr(buf.data(), '-') != nullptr) {
        z.sign = ZoneSign::kMinus;
        sep = '-';
    } else if (std::strchr(buf.data(), '+') != nullptr) {
        z.sign = ZoneSign::kPlus;
        sep = '+';
    } else {
        return z;
    }

    // First token: skip separators at the start, stop at the next one.
    char *token = buf.data();
    while (*token == sep) ++token;
    if (*token == '\0') {
        z.empty = true;
        return z;
    }
    char *token_end = std::strchr(token, sep);
    if (token_end != nullptr) *token_end = '\0';

    char *colon = std::strchr(token, ':');
    if (colon != nullptr) {
        *colon = '\0';
        z.minutes = read_decimal(colon + 1);
    }
    z.hours = read_decimal(token);
    return z;
}

}  // namespace qvs::time
