// SPDX-License-Identifier: MIT
// util_getPidname and util_printf: the library's own stderr diagnostics.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "log.hpp"

extern "C" {

// Nothing in the library reads it; platform tools may set it.
__attribute__((weak)) int allow_direct_write_xmlShm = 0;

char *util_getPidname(void) {
    char path[128];
    std::memset(path, 0, sizeof path);
    ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
    if (n < 1)
        return nullptr;
    return ::strdup(path);
}

int util_printf(const char *file, const char *function, int line, const char *format, ...) {
    char *exe = util_getPidname();
    std::fprintf(stderr, "%s[%s:%s:%d]", exe != nullptr ? exe : "", file, function, line);
    std::free(exe);
    va_list ap;
    va_start(ap, format);
    std::vfprintf(stderr, format, ap);
    va_end(ap);
    return std::fputc('\n', stderr);
}

}  // extern "C"
