#include "command.hpp"

namespace qvs {

bool refuse_unsafe_text(const char *func, int line, const char *text) {
    if (text == nullptr || is_shell_safe(text))
        return false;
    ::qvs_log_print(kSourceFile, func, line, kLogError, "refused unsafe text [%s]\n", text);
    return true;
}

}  // namespace qvs
