// SPDX-License-Identifier: MIT
// The gateway's tools are busybox applets. A suite that checks a parser
// against busybox's own output in every userland puts the applets it needs
// first on the search path of the test process (and so of the commands the
// library runs through the shell) while the object lives.
#pragma once

#include <initializer_list>
#include <string>

namespace qvstest {

class BusyboxFirst {
public:
    // Links each named applet to busybox in a directory under /tmp and puts
    // that directory first on PATH. ok() tells whether it worked.
    explicit BusyboxFirst(std::initializer_list<const char *> applets);
    ~BusyboxFirst();
    BusyboxFirst(const BusyboxFirst &) = delete;
    BusyboxFirst &operator=(const BusyboxFirst &) = delete;
    bool ok() const { return ok_; }

private:
    std::string saved_path_;
    bool had_path_ = false;
    bool ok_ = false;
};

}  // namespace qvstest
