// SPDX-License-Identifier: MIT
#include "comma_list.hpp"

#include <string_view>

#include "command.hpp"
#include "log.hpp"

namespace qvs {

bool comma_list_gate(const char *func, int line, char *text, int room, LongItem long_item,
                     TrailingLineEnd line_end) {
    if (text == nullptr) return false;
    std::string_view t(text);
    const bool trailing = line_end == TrailingLineEnd::kRemoved && !t.empty() && t.back() == '\n';
    if (trailing) t.remove_suffix(1);
    if (!is_shell_safe(t)) {
        ::qvs_log_print(kSourceFile, func, line, kLogError, "refused unsafe text [%s]\n", text);
        return false;
    }
    if (long_item == LongItem::kRefuse) {
        std::size_t start = 0;
        while (start <= t.size()) {
            std::size_t end = t.find(',', start);
            if (end == std::string_view::npos) end = t.size();
            if (end - start > static_cast<std::size_t>(room < 0 ? 0 : room)) {
                ::qvs_log_print(kSourceFile, func, line, kLogError,
                                "refused text too long for its command line [%.*s]\n", static_cast<int>(end - start),
                                text + start);
                return false;
            }
            start = end + 1;
        }
    }
    if (trailing) text[t.size()] = '\0';
    return true;
}

void log_item_skipped(const char *func, const char *item, int length) {
    QVS_LOG_AS(func, kLogError, "refused text too long for its command line [%.*s]\n", length, item);
}

}  // namespace qvs
