// SPDX-License-Identifier: MIT
#include "list_commands.hpp"

namespace qvsctl {

bool parse_index(const char *text, int &n) {
    long long v = 0;
    if (!parse_int(text, -2147483648LL, 2147483647LL, v)) return false;
    n = static_cast<int>(v);
    return true;
}

bool parse_type(const char *text, unsigned &type) {
    long long v = 0;
    if (!parse_int(text, 0, 4294967295LL, v)) return false;
    type = static_cast<unsigned>(v);
    return true;
}

}  // namespace qvsctl
