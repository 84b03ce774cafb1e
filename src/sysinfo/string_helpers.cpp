// SPDX-License-Identifier: MIT
// Small text and byte helpers shared with the gateway's other processes:
// character replacement, WAN connection display names, substring
// replacement in a fixed-size buffer, hexadecimal and MAC checks.
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "qvs_utils.h"

namespace qvs::strings {

// Longest name copied into a generated connection name.
inline constexpr std::size_t kNameBuffer = 48;

}  // namespace qvs::strings

extern "C" {

void qvsReplace(char *str, char from, char to) {
    if (str == nullptr)
        return;
    // Compared as signed bytes whatever the platform's plain char is.
    const auto wanted = static_cast<signed char>(from);
    for (char *p = str; *p != '\0'; ++p) {
        if (static_cast<signed char>(*p) == wanted)
            *p = to;
    }
}

int generateName(unsigned int index, const char *name, const char *connType, int vid,
                 uint8_t mode, char *dst) {
    char copy[qvs::strings::kNameBuffer];
    std::memset(copy, 0, sizeof copy);
    if (name != nullptr)
        std::strncpy(copy, name, sizeof copy - 1);
    if (std::strchr(copy, ',') != nullptr)
        qvsReplace(copy, ',', '_');
    const char *letter = (connType != nullptr && std::strstr(connType, "Routed") != nullptr) ? "R" : "B";
    if (dst == nullptr)
        return 0;
    // The index is printed as a signed decimal number, as the name's format
    // has always done.
    const int shown = static_cast<int>(index);
    switch (mode) {
    case 0:
        std::snprintf(dst, QVS_GENERATE_NAME_SIZE, "%d_%s_%s_VID_", shown, copy, letter);
        break;
    case 1:
        std::snprintf(dst, QVS_GENERATE_NAME_SIZE, "%d_%s_%s_VID_0", shown, copy, letter);
        break;
    case 2:
        std::snprintf(dst, QVS_GENERATE_NAME_SIZE, "%d_%s_%s_VID_%d", shown, copy, letter, vid);
        break;
    default:
        break;
    }
    return 0;
}

char *str_replace(char *str, size_t size, const char *from, const char *to) {
    if (str == nullptr || from == nullptr || to == nullptr || from[0] == '\0')
        return str;
    const std::size_t from_len = std::strlen(from);
    const std::size_t to_len = std::strlen(to);
    // The limit below must not wrap: a buffer that cannot hold one
    // replacement and its terminator is left as it is.
    if (size == 0 || size < to_len + 1)
        return str;
    const std::size_t limit = size - to_len - 1;
    char *work = static_cast<char *>(std::calloc(size, 1));
    if (work == nullptr)
        return str;
    // Each step appends at most to_len characters while len < limit, or runs
    // once from len 0: the work buffer never receives more than size - 1.
    std::size_t len = 0;
    const char *p = str;
    while (*p != '\0') {
        if (std::strncmp(p, from, from_len) == 0) {
            std::memcpy(work + len, to, to_len);
            len += to_len;
            p += from_len;
        } else {
            work[len++] = *p++;
        }
        if (len >= limit)
            break;
    }
    // Back into the caller's buffer, zero-padded, last byte cleared.
    const std::size_t n = len < size - 1 ? len : size - 1;
    std::memset(str, 0, size);
    std::memcpy(str, work, n);
    str[size - 1] = '\0';
    std::free(work);
    return str;
}

int qvs_is_hex_string(const char *str) {
    if (str == nullptr)
        return 0;
    for (const char *p = str; *p != '\0'; ++p) {
        if (std::isxdigit(static_cast<unsigned char>(*p)) == 0)
            return 0;
    }
    return 1;
}

int isValidMac(const unsigned char *mac) {
    static constexpr unsigned char kZero[6] = {0, 0, 0, 0, 0, 0};
    static constexpr unsigned char kOnes[6] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    if (mac == nullptr)
        return 0;
    if (std::memcmp(mac, kZero, sizeof kZero) == 0)
        return 0;
    if (std::memcmp(mac, kOnes, sizeof kOnes) == 0)
        return 0;
    return 1;
}

}  // extern "C"
