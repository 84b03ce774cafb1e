// SPDX-License-Identifier: MIT
// Injection rows of the core frame: the process records (the name reaches a
// "ps | grep" command line and a record file name).
#include "injection_table.hpp"
#include "qvs_utils.h"

namespace {

void prepare(bool) {}

}  // namespace

INJECTION_FAMILY(core) {
    return {"core",
            prepare,
            {
                {"qvs_util_get_process_pid", "qvs_util_get_process_pid",
                 [](char *t) { return qvs_util_get_process_pid(t); }, -1},
                {"qvs_util_recordProcessPid", "qvs_util_recordProcessPid",
                 [](char *t) { return qvs_util_recordProcessPid(t); }, -1},
            }};
}
