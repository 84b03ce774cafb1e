// SPDX-License-Identifier: MIT
// String helpers: character and substring replacement, WAN connection names,
// hexadecimal and MAC checks.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "qvs_utils.h"
#include "qvsctl.hpp"

namespace {

// A character argument: one character as it is, or a byte as 0xNN.
bool parse_char(const char *text, char &out) {
    if (text[0] != '\0' && text[1] == '\0') {
        out = text[0];
        return true;
    }
    long long v = 0;
    if (std::strncmp(text, "0x", 2) != 0 || !qvsctl::parse_int(text, 0, 255, v)) {
        std::fprintf(stderr, "qvsctl: '%s' is not one character or a byte 0xNN\n", text);
        return false;
    }
    out = static_cast<char>(static_cast<unsigned char>(v));
    return true;
}

int run_replace(char **argv) {
    char from = 0, to = 0;
    if (!parse_char(argv[1], from) || !parse_char(argv[2], to)) return qvsctl::kBadArgs;
    std::vector<char> text(argv[0], argv[0] + std::strlen(argv[0]) + 1);
    qvsReplace(text.data(), from, to);
    qvsctl::print_text("text", text.data());
    return qvsctl::kRan;
}

int run_generate(char **argv) {
    long long index = 0, vid = 0, mode = 0;
    if (!qvsctl::parse_int(argv[0], 0, 4294967295LL, index) ||
        !qvsctl::parse_int(argv[3], -2147483648LL, 2147483647LL, vid) ||
        !qvsctl::parse_int(argv[4], 0, 255, mode))
        return qvsctl::kBadArgs;
    char dst[QVS_GENERATE_NAME_SIZE] = {};
    int r = generateName(static_cast<unsigned int>(index), argv[1], argv[2], static_cast<int>(vid),
                         static_cast<uint8_t>(mode), dst);
    qvsctl::print_result(r);
    qvsctl::print_text("name", dst);
    return qvsctl::kRan;
}

int run_str_replace(char **argv) {
    long long size = 0;
    if (!qvsctl::parse_int(argv[1], 0, 65536, size)) return qvsctl::kBadArgs;
    // The buffer holds the whole text even when it is longer than size.
    std::size_t n = std::strlen(argv[0]) + 1;
    std::vector<char> buf(n > static_cast<std::size_t>(size) ? n : static_cast<std::size_t>(size), 0);
    std::memcpy(buf.data(), argv[0], n);
    char *r = str_replace(buf.data(), static_cast<size_t>(size), argv[2], argv[3]);
    qvsctl::print_result(r == buf.data() ? 0 : -1);
    qvsctl::print_text("text", buf.data());
    return qvsctl::kRan;
}

int run_is_hex(char **argv) {
    qvsctl::print_result(qvs_is_hex_string(argv[0]));
    return qvsctl::kRan;
}

int run_valid_mac(char **argv) {
    unsigned char mac[6];
    if (!qvsctl::parse_mac(argv[0], mac)) return qvsctl::kBadArgs;
    qvsctl::print_result(isValidMac(mac));
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"qvsReplace", "<text> <from-char|0xNN> <to-char|0xNN>", "replace every from character by to", 3, 3, run_replace},
    {"generateName", "<index> <name> <conn-type> <vid> <mode>", "display name of a WAN connection", 5, 5, run_generate},
    {"str_replace", "<text> <size> <from> <to>", "replace every from by to within a buffer of size bytes", 4, 4, run_str_replace},
    {"qvs_is_hex_string", "<text>", "1 when the text is all hexadecimal digits (or empty)", 1, 1, run_is_hex},
    {"isValidMac", "<mac>", "0 for all-zero or all-ones addresses, 1 otherwise", 1, 1, run_valid_mac},
};

}  // namespace

QVSCTL_FAMILY(g_strings, "strings", "string helpers", kCommands);
