// SPDX-License-Identifier: MIT
#include "command.hpp"

#include <cstdarg>
#include <cstdio>

namespace qvs {

bool refuse_unsafe_text(const char *func, int line, const char *text) {
    if (text == nullptr || is_shell_safe(text))
        return false;
    ::qvs_log_print(kSourceFile, func, line, kLogError, "refused unsafe text [%s]\n", text);
    return true;
}

int formatted_length(const char *fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    int n = std::vsnprintf(nullptr, 0, fmt, ap);
    va_end(ap);
    return n;
}

bool refuse_long_text(const char *func, int line, const char *text, int length, std::size_t size) {
    if (length >= 0 && static_cast<std::size_t>(length) < size) return false;
    ::qvs_log_print(kSourceFile, func, line, kLogError, "refused text too long for its command line [%s]\n",
                    text != nullptr ? text : "");
    return true;
}

}  // namespace qvs
