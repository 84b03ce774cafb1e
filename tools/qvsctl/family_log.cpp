// SPDX-License-Identifier: MIT
// Logging family: util_getPidname, util_printf.
#include <cstdio>
#include <cstdlib>

#include "qvs_utils.h"
#include "qvsctl.hpp"

namespace {

int run_getPidname(char **) {
    char *p = util_getPidname();
    qvsctl::print_result(p != nullptr ? 0 : -1);
    qvsctl::print_text("path", p);
    std::free(p);
    return qvsctl::kRan;
}

int run_printf(char **argv) {
    long long line = 0;
    if (!qvsctl::parse_int(argv[2], -2147483648LL, 2147483647LL, line)) return qvsctl::kBadArgs;
    std::fflush(stdout);
    int r = util_printf(argv[0], argv[1], static_cast<int>(line), "%s", argv[3]);
    qvsctl::print_result(r);
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"util_getPidname", "", "path of the running executable", 0, 0, run_getPidname},
    {"util_printf", "<file> <function> <line> <message>", "one diagnostic line on standard error", 4, 4, run_printf},
};

}  // namespace

QVSCTL_FAMILY(g_log, "log", "logging and diagnostics", kCommands);
