// SPDX-License-Identifier: MIT
// qvsctl: `qvsctl <family> <function> [arguments...]` calls one exported
// function and prints its result code and every output it fills.
// Each family lives in its own family_<name>.cpp and registers itself with
// a static qvsctl::Family object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qvsctl {

inline constexpr int kRan = 0;      // the call ran, whatever its result code
inline constexpr int kBadArgs = 2;  // arguments did not parse

struct Command {
    const char *name;   // the exported function's name
    const char *usage;  // argument synopsis, e.g. "<ext-index> <int-index>"
    const char *help;   // one line
    int min_args;
    int max_args;
    int (*run)(char **argv);  // argv holds exactly the arguments given
};

class Family {
public:
    Family(const char *name, const char *summary, const Command *commands, std::size_t count);
    const char *name;
    const char *summary;
    const Command *commands;
    std::size_t count;
    Family *next;
};

// Argument parsers: each returns false (and prints why) on bad input.
bool parse_int(const char *text, long long min, long long max, long long &out);
bool parse_mac(const char *text, unsigned char mac[6]);
bool parse_hex(const char *text, std::vector<unsigned char> &out);

// Output helpers, one "name: value" line each.
void print_result(long long result);
void print_text(const char *name, const char *value);
void print_hex(const char *name, const unsigned char *bytes, std::size_t n);
void print_int(const char *name, long long value);

}  // namespace qvsctl

#define QVSCTL_FAMILY(var, name, summary, table) \
    static ::qvsctl::Family var(name, summary, table, sizeof(table) / sizeof(table[0]))
