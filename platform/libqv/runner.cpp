// SPDX-License-Identifier: MIT
// Command runners: each line is journaled as received ("cmd <runner> <line>"),
// handed to the simulated kernel modules first (writes into their control
// files), and otherwise run with /bin/sh, as the gateway does.
#include <cstdlib>
#include <cstring>

#include "kernel_modules.hpp"
#include "libqv.h"
#include "sim_journal.hpp"

namespace {

int run(const char *runner, const char *cmd) {
    if (cmd == nullptr) return -1;
    qvsim_common::journal("cmd", runner, cmd);
    if (qvsim::run_module_command(cmd)) return 0;
    return std::system(cmd);
}

}  // namespace

extern "C" {

int qv_do_cmd(const char *cmd) { return run("qv_do_cmd", cmd); }
int qvs_system(const char *cmd) { return run("qvs_system", cmd); }
int libqv_dosystem(const char *cmd) { return run("libqv_dosystem", cmd); }

char *libqv_safe_strncpy(char *dst, const char *src, size_t size) {
    if (dst == nullptr || size == 0) return dst;
    std::strncpy(dst, src != nullptr ? src : "", size - 1);
    dst[size - 1] = '\0';
    return dst;
}

}  // extern "C"
