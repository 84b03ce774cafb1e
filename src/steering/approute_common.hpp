// Helpers shared by the application route and application filter lists:
// the directory step and the check of caller text.
#pragma once

#include "core/command.hpp"

namespace qvs::steering {

// Outcome of the directory step.
enum class DirStep {
    kPresent,  // the directory was writable already
    kCreated,  // it was missing and has just been created (mode 0755)
    kFailed,   // it could not be created; the message has been logged
};

// The two list directories and their messages when they cannot be created.
enum class ListDir {
    kAppRoute,   // "/userconfig/config/approute", "creat vpn route dir error.\n"
    kAppFilter,  // "/userconfig/config/appfilter", "creat appfilter dir error.\n"
};
inline constexpr char kAppRouteDir[] = "/userconfig/config/approute";
inline constexpr char kAppFilterDir[] = "/userconfig/config/appfilter";

// If the directory is not writable, creates it with mode 0755 (missing
// parents too, each with mode 0755). On failure logs its message at level 1
// under func.
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
