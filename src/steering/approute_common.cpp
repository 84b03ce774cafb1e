#include "steering/approute_common.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "core/log.hpp"

namespace qvs::steering {

namespace {

// mkdir with mode 0755, creating missing parents first.
bool make_dir_0755(const char *dir) {
    if (::mkdir(dir, 0755) == 0) return true;
    if (errno != ENOENT) return false;
    char path[128] = {};
    std::size_t len = std::strlen(dir);
    if (len == 0 || len >= sizeof path) return false;
    std::memcpy(path, dir, len);
    for (std::size_t i = 1; i < len; ++i) {
        if (path[i] != '/') continue;
        path[i] = '\0';
        if (::mkdir(path, 0755) != 0 && errno != EEXIST) return false;
        path[i] = '/';
    }
    return ::mkdir(path, 0755) == 0;
}

}  // namespace

DirStep dir_step(ListDir which, const char *func) {
    const char *dir = which == ListDir::kAppRoute ? kAppRouteDir : kAppFilterDir;
    if (::access(dir, W_OK) == 0) return DirStep::kPresent;
    if (make_dir_0755(dir)) return DirStep::kCreated;
    if (which == ListDir::kAppRoute)
        QVS_LOG_AS(func, kLogError, "creat vpn route dir error.\n");
    else
        QVS_LOG_AS(func, kLogError, "creat appfilter dir error.\n");
    return DirStep::kFailed;
}

bool safe_but_trailing_line_end(const char *text) {
    if (text == nullptr) return true;
    std::string_view t(text);
    if (!t.empty() && t.back() == '\n') t.remove_suffix(1);
    return is_shell_safe(t);
}

}  // namespace qvs::steering
