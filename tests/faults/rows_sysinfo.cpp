// SPDX-License-Identifier: MIT
// Fault rows of the system facts: the software version. The other facts read
// files and device calls; the WAN helpers take the caller's store handle.
#include "fault_table.hpp"
#include "libqv.h"
#include "qvs_utils.h"

namespace {

void nothing() {}

}  // namespace

FAULT_FAMILY(sysinfo) {
    return {"sysinfo",
            nothing,
            {
                {"qvs_getSWVersion",
                 [] {
                     char version[64] = {};
                     (void)qvs_getSWVersion(version);
                 },
                 {QVS_OID_DEVICE_INFO},
                 {}},
            }};
}
