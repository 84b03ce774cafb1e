// SPDX-License-Identifier: MIT
// Command shapes shared by the per-index list families (VPN routes,
// application routes and filters): a rule or tunnel index, a list type,
// and texts that the library may change in place (shown after the call).
#pragma once

#include "qvsctl.hpp"

namespace qvsctl {

bool parse_index(const char *text, int &n);        // any 32-bit signed value
bool parse_type(const char *text, unsigned &type);  // any 32-bit unsigned value

inline constexpr char kShowText[] = "text";
inline constexpr char kShowMac[] = "mac";

// F(n)
template <int (*F)(int)>
int run_index(char **argv) {
    int n = 0;
    if (!parse_index(argv[0], n)) return kBadArgs;
    print_result(F(n));
    return kRan;
}

// F(n, text) where text is not changed.
template <int (*F)(int, const char *)>
int run_index_text(char **argv) {
    int n = 0;
    if (!parse_index(argv[0], n)) return kBadArgs;
    print_result(F(n, argv[1]));
    return kRan;
}

// F(n, text) where text may be changed in place: shown as <Label> afterwards.
template <int (*F)(int, char *), const char *Label = kShowText>
int run_index_text_shown(char **argv) {
    int n = 0;
    if (!parse_index(argv[0], n)) return kBadArgs;
    print_result(F(n, argv[1]));
    print_text(Label, argv[1]);
    return kRan;
}

// F(n, type)
template <int (*F)(int, unsigned int)>
int run_typed(char **argv) {
    int n = 0;
    unsigned type = 0;
    if (!parse_index(argv[0], n) || !parse_type(argv[1], type)) return kBadArgs;
    print_result(F(n, type));
    return kRan;
}

// F(n, type, list) where the list is split in place: shown afterwards.
template <int (*F)(int, unsigned int, char *)>
int run_typed_list(char **argv) {
    int n = 0;
    unsigned type = 0;
    if (!parse_index(argv[0], n) || !parse_type(argv[1], type)) return kBadArgs;
    print_result(F(n, type, argv[2]));
    print_text(kShowText, argv[2]);
    return kRan;
}

}  // namespace qvsctl
