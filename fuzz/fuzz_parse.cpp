// SPDX-License-Identifier: MIT
// parseRepData on arbitrary reply texts: every output is as large as the
// reply (a value is a piece of it), so a copy past its value is caught.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_check.hpp"
#include "qvs_utils.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size > 4096) return 0;
    std::vector<char> reply(data, data + size);
    reply.push_back('\0');
    const size_t n = size + 1;
    std::vector<char> addr(n), port(n), user(n), pwd(n), timeout(n);
    const int r = parseRepData(reply.data(), addr.data(), port.data(), user.data(), pwd.data(), timeout.data());
    FUZZ_CHECK(r == 0 || r == -1);
    if (r == 0) {
        for (const std::vector<char> *v : {&addr, &port, &user, &pwd, &timeout}) {
            FUZZ_CHECK(std::memchr(v->data(), 0, n) != nullptr);
            FUZZ_CHECK(v->at(0) != '\0');
        }
    }
    return 0;
}
