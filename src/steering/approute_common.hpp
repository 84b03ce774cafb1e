// SPDX-License-Identifier: MIT
// Helpers shared by the application route and application filter lists:
// their directories and directory step.
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

}  // namespace qvs::steering
