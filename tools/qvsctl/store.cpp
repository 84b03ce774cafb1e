// SPDX-License-Identifier: MIT
#include "store.hpp"

#include <cstdio>

#include "libqv.h"

namespace qvsctl {

Store::Store() : handle_(qvs_xmlShmInit()) {
    if (handle_ == 0) std::fprintf(stderr, "qvsctl: the configuration store cannot be attached, calling with handle 0\n");
}

Store::~Store() {
    if (handle_ != 0) qvs_xmlShmDeInit(&handle_);
}

}  // namespace qvsctl
