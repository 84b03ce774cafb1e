// SPDX-License-Identifier: MIT
// The platform logger: prints file, function, line, level and message to
// standard error, and records the same fields in the simulated gateway's
// journal ("log <file> <func> <line> <level> <message>").
#include <cstdarg>
#include <cstdio>
#include <string>

#include "liblog.h"
#include "sim_journal.hpp"

extern "C" __attribute__((visibility("default"))) void qvs_log_print(const char *file, const char *func, int line,
                                                                     int level, const char *format, ...) {
    char message[2048];
    message[0] = '\0';
    if (format != nullptr) {
        va_list ap;
        va_start(ap, format);
        std::vsnprintf(message, sizeof message, format, ap);
        va_end(ap);
    }
    std::fprintf(stderr, "[%s:%s:%d][%d] %s", file != nullptr ? file : "", func != nullptr ? func : "", line, level,
                 message);
    std::fflush(stderr);
    qvsim_common::journal("log", file != nullptr ? file : "", func != nullptr ? func : "", std::to_string(line),
                          std::to_string(level), message);
}
