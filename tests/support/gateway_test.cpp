// SPDX-License-Identifier: MIT
#include "gateway_test.hpp"

namespace qvstest {

Lines journal_joined(std::initializer_list<std::string> skip) {
    Lines out;
    for (const auto &f : journal_fields()) {
        bool skipped = false;
        for (const auto &k : skip) skipped = skipped || f[0] == k;
        if (skipped) continue;
        std::string s;
        for (std::size_t i = 0; i < f.size(); ++i) s += (i ? "|" : "") + f[i];
        out.push_back(s);
    }
    return out;
}

Lines journal_logs() {
    Lines out;
    for (const auto &f : journal_fields()) {
        if (f[0] != "log") continue;
        EXPECT_EQ(f.size(), 6u);
        if (f.size() < 6) continue;
        EXPECT_EQ(f[1], "qvs_utils.cpp");
        out.push_back(f[2] + "|" + f[4] + "|" + f[5]);
    }
    return out;
}

}  // namespace qvstest
