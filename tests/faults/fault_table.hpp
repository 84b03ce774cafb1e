// SPDX-License-Identifier: MIT
// The fault table: every exported function that attaches to the store by
// itself, under each store fault. Each family adds its rows in one file of
// its own, rows_<family>.cpp (see README.md).
#pragma once

#include <string>
#include <vector>

namespace faulttest {

struct Row {
    const char *func;
    void (*call)();                    // one call with ordinary arguments
    std::vector<int> objects;          // OIDs it looks up ("object <oid>" faults)
    std::vector<std::string> params;   // parameters it reads or writes by name ("read <p>", "write <p>")
};

struct Family {
    const char *name;
    void (*prepare)();  // state the calls need beyond the default model (may do nothing)
    std::vector<Row> rows;
};

bool add_family(Family (*make)());
const std::vector<Family> &families();

}  // namespace faulttest

// In rows_<family>.cpp:
//   FAULT_FAMILY(alarm) { return {"alarm", prepare, {...rows...}}; }
#define FAULT_FAMILY(id)                                                                   \
    static ::faulttest::Family fault_family_##id();                                         \
    static const bool fault_registered_##id = ::faulttest::add_family(&fault_family_##id); \
    static ::faulttest::Family fault_family_##id()
