// SPDX-License-Identifier: MIT
// Zone text ("+HH:MM" / "-HH:MM") and the decimal fields of time texts.
#pragma once

#include <cstddef>

namespace qvs::time {

// Working copy of a zone text: 7 bytes, so at most 6 characters are looked
// at; longer zone texts are cut to their first 6 characters.
inline constexpr std::size_t kZoneBufferSize = 7;

enum class ZoneSign { kNone, kMinus, kPlus };

struct Zone {
    ZoneSign sign = ZoneSign::kNone;
    bool empty = false;     // a sign, but no text after it
    long long hours = 0;    // the decimal number before the first ":"
    long long minutes = 0;  // the decimal number after it (0 without ":")
};

// Reads a zone text. A "-" anywhere makes a "-" zone (tested first), else a
// "+" anywhere a "+" zone, else no sign. The offset comes from the first
// token when the copy is split on the sign character (separators at the
// start are skipped, so any text before the sign becomes the hour field).
// A null zone reads as a zone without sign.
Zone read_zone(const char *zone);

// Decimal number at the start of text, the way atoi reads it (leading
// blanks, an optional sign, digits up to the first non-digit; nothing
// gives 0), but saturating at +-999999999999 instead of overflowing.
long long read_decimal(const char *text);

}  // namespace qvs::time
