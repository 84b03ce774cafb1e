// SPDX-License-Identifier: MIT
#include "steering/approute_common.hpp"

namespace qvs::steering {

DirStep dir_step(ListDir which, const char *func) {
    if (which == ListDir::kAppRoute) return list_dir_step(kAppRouteDir, func, "creat vpn route dir error.\n");
    return list_dir_step(kAppFilterDir, func, "creat appfilter dir error.\n");
}

}  // namespace qvs::steering
