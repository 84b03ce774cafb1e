// SPDX-License-Identifier: MIT
// Process PID records: find a process by name, record its PID, read it back.
#include <cstdio>

#include "qvs_utils.h"
#include "qvsctl.hpp"

namespace {

int run_get(char **argv) {
    int r = qvs_util_get_process_pid(argv[0]);
    std::fflush(stdout);
    qvsctl::print_result(r);
    return qvsctl::kRan;
}

int run_record(char **argv) {
    int r = qvs_util_recordProcessPid(argv[0]);
    std::fflush(stdout);
    qvsctl::print_result(r);
    return qvsctl::kRan;
}

int run_read(char **argv) {
    int r = qvs_util_getPidFromRecord(argv[0]);
    std::fflush(stdout);
    qvsctl::print_result(r);
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"qvs_util_get_process_pid", "<name>", "PID of the first listed process whose line contains the name", 1, 1, run_get},
    {"qvs_util_recordProcessPid", "<name>", "look the name up and record the PID in /tmp/process_pid_<name>.pid", 1, 1, run_record},
    {"qvs_util_getPidFromRecord", "<name>", "the PID recorded for the name", 1, 1, run_read},
};

}  // namespace

QVSCTL_FAMILY(g_pid, "pid", "process PID records", kCommands);
