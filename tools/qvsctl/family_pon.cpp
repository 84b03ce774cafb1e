// SPDX-License-Identifier: MIT
// PON family: getzeroconfigeponstate, getzeroconfiggponstate.
#include "qvs_utils.h"
#include "qvsctl.hpp"

namespace {

const char *meaning(int code) {
    static const char *const kMeanings[] = {
        "undetermined",
        "OLT link starting",
        "OLT: not registered, within 180 s",
        "OLT: not registered for more than 180 s, known failure state",
        "OLT: not registered for more than 180 s, other state",
        "WAN: no up TR-069 connection yet, within 120 s",
        "WAN: no up TR-069 connection for more than 120 s",
        "management: more than 10 attempts",
        "management: registration under way, within 120 s",
        "management: registration under way for more than 120 s",
        "management: indicator 97 or status 1",
        "management: status 4",
        "management: status 5",
        "service: status 0, result 0 for more than 120 s",
        "service: status 0, result 0, within 120 s",
        "service: status 0, result 1",
        "service: status 0, result 2",
        "service: status 0, result 99",
    };
    return code >= 0 && code < 18 ? kMeanings[code] : "?";
}

int run_epon(char **) {
    int r = getzeroconfigeponstate();
    qvsctl::print_result(r);
    qvsctl::print_text("meaning", meaning(r));
    return qvsctl::kRan;
}

int run_gpon(char **) {
    int r = getzeroconfiggponstate();
    qvsctl::print_result(r);
    qvsctl::print_text("meaning", meaning(r));
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"getzeroconfigeponstate", "", "zero-configuration state code (0-17) of an EPON uplink", 0, 0, run_epon},
    {"getzeroconfiggponstate", "", "zero-configuration state code (0-17) of a GPON uplink", 0, 0, run_gpon},
};

}  // namespace

QVSCTL_FAMILY(g_pon, "pon", "PON zero-configuration state", kCommands);
