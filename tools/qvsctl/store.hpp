// SPDX-License-Identifier: MIT
// The store handle that qvsctl passes to functions taking one: attached for
// the call, detached after it. qvsctl links the platform library (the
// maker's libqv on the device, the simulated one on a PC).
#pragma once

#include <cstdint>

namespace qvsctl {

class Store {
public:
    Store();
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;
    std::uint32_t handle() const { return handle_; }

private:
    std::uint32_t handle_ = 0;
};

}  // namespace qvsctl
