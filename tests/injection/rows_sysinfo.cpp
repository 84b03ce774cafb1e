// SPDX-License-Identifier: MIT
// Injection rows of the bridge helpers: the Ethernet interface name that
// qvsUtil_setEthToLan puts into its "ifconfig" command lines. Only names
// beginning with "eth" are looked at, so every hostile text follows "eth".
#include "injection_table.hpp"
#include "qvs_utils.h"

namespace {

// The function writes no file: nothing to empty or fill.
void prepare(bool) {}

}  // namespace

INJECTION_FAMILY(sysinfo) {
    return {"sysinfo",
            prepare,
            {
                {"qvsUtil_setEthToLan", "qvsUtil_setEthToLan", [](char *t) { return qvsUtil_setEthToLan(t, 100); }, -1,
                 "eth"},
            }};
}
