// Helpers shared by the application route and application filter lists:
// the directory step and the check of caller text.
#pragma once

#include "core/command.hpp"
#include "steering/list_file.hpp"

namespace qvs::steering {

// The two list directories and their messages when they cannot be created.
enum class ListDir {
    kAppRoute,   // "/userconfig/config/approute", "creat vpn route dir error.\n"
    kAppFilter,  // "/userconfig/config/appfilter", "creat appfilter dir error.\n"
};
inline constexpr char kAppRouteDir[] = "/userconfig/config/approute";
inline constexpr char kAppFilterDir[] = "/userconfig/config/appfilter";

// The directory step of list_dir_step for one of the two directories, with
// its own message.
DirStep dir_step(ListDir which, const char *func);

// True when text is shell-safe once one trailing line end is set aside
// (the echo helpers of the route lists remove that line end before the text
// reaches a command line). A null text counts as safe here.
bool safe_but_trailing_line_end(const char *text);

}  // namespace qvs::steering

// Refuses caller text of the route lists: unsafe apart from one trailing
// line end -> logs under the caller's name and yields true.
#define QVS_REFUSE_UNSAFE_LINE(text) \
    (!::qvs::steering::safe_but_trailing_line_end(text) && QVS_REFUSE_UNSAFE(text))
