// SPDX-License-Identifier: MIT
#include "busybox_first.hpp"

#include <cstdlib>

#include "test_support.hpp"

namespace qvstest {

namespace {
const char kAppletDir[] = "/tmp/qvs-busybox-applets";
}  // namespace

BusyboxFirst::BusyboxFirst(std::initializer_list<const char *> applets) {
    if (!in_sandbox()) return;
    int status = -1;
    std::string links = std::string("mkdir -p ") + kAppletDir + " && bb=$(command -v busybox)";
    for (const char *a : applets) links += std::string(" && ln -sf \"$bb\" ") + kAppletDir + "/" + a;
    run(links, &status);
    if (status != 0) return;
    const char *path = std::getenv("PATH");
    had_path_ = path != nullptr;
    if (had_path_) saved_path_ = path;
    const std::string rest = had_path_ ? saved_path_ : "/usr/sbin:/usr/bin:/sbin:/bin";
    ok_ = ::setenv("PATH", (std::string(kAppletDir) + ":" + rest).c_str(), 1) == 0;
}

BusyboxFirst::~BusyboxFirst() {
    if (had_path_)
        ::setenv("PATH", saved_path_.c_str(), 1);
    else
        ::unsetenv("PATH");
}

}  // namespace qvstest
