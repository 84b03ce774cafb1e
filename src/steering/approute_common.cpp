#include "steering/approute_common.hpp"

#include <string_view>

namespace qvs::steering {

DirStep dir_step(ListDir which, const char *func) {
    if (which == ListDir::kAppRoute) return list_dir_step(kAppRouteDir, func, "creat vpn route dir error.\n");
    return list_dir_step(kAppFilterDir, func, "creat appfilter dir error.\n");
}

bool safe_but_trailing_line_end(const char *text) {
    if (text == nullptr) return true;
    std::string_view t(text);
    if (!t.empty() && t.back() == '\n') t.remove_suffix(1);
    return is_shell_safe(t);
}

}  // namespace qvs::steering
