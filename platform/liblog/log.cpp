// Minimal logger: prints file, function, line, level and message to stderr.
#include <cstdarg>
#include <cstdio>

#include "liblog.h"

extern "C" void qvs_log_print(const char *file, const char *func, int line, int level, const char *format, ...) {
    std::fprintf(stderr, "[%s:%s:%d][%d] ", file, func, line, level);
    va_list ap;
    va_start(ap, format);
    std::vfprintf(stderr, format, ap);
    va_end(ap);
}
