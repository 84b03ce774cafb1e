// SPDX-License-Identifier: MIT
// The injection table: every exported function that builds a command line
// or writes a configuration file from caller text, called with every
// hostile text. Each family adds its rows in one file of its own,
// rows_<family>.cpp (see README.md).
#pragma once

#include <string>
#include <vector>

namespace injtest {

struct Row {
    const char *func;       // the exported function called
    const char *logged_as;  // the function whose refusal line is expected (a dispatcher logs its callee's)
    int (*call)(char *text);  // calls func with text in the argument under test
    int refused;            // result of a refused call (-1, or the function's own fixed result)
    // Put before every hostile text, in the argument and in the expected
    // refusal line, for an argument that must begin a certain way before its
    // text is looked at (an Ethernet interface name begins with "eth").
    const char *prefix;
    // The argument loses one trailing line end before it is looked at (the
    // application-route list variants): a hostile text that is harmless
    // without it is called with a second line end, which is refused.
    bool drops_one_trailing_line_end;

    Row(const char *func_, const char *logged_as_, int (*call_)(char *), int refused_, const char *prefix_ = "",
        bool drops_one_trailing_line_end_ = false)
        : func(func_), logged_as(logged_as_), call(call_), refused(refused_), prefix(prefix_),
          drops_one_trailing_line_end(drops_one_trailing_line_end_) {}
};

struct Family {
    const char *name;
    // Sets up the family's state before each call: the empty case (lists
    // absent, their directories present) and the pre-filled case.
    void (*prepare)(bool prefilled);
    std::vector<Row> rows;
};

// Registers a family's rows (at static initialisation); returns true.
bool add_family(Family (*make)());
// Every registered family, in name order.
const std::vector<Family> &families();

}  // namespace injtest

// In rows_<family>.cpp:
//   INJECTION_FAMILY(steering) { return {"steering", prepare, {...rows...}}; }
#define INJECTION_FAMILY(id)                                                              \
    static ::injtest::Family injection_family_##id();                                     \
    static const bool injection_registered_##id = ::injtest::add_family(&injection_family_##id); \
    static ::injtest::Family injection_family_##id()
