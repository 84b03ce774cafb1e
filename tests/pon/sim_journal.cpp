// SPDX-License-Identifier: MIT
#include "sim_journal.hpp"

#include <cstdlib>
#include <cstring>

#include "qvsim.h"
#include "test_support.hpp"

namespace simjournal {

std::string text() {
    char *t = qvsim_journal_text();
    std::string s = t != nullptr ? t : "";
    std::free(t);
    return s;
}

std::vector<Line> lines() { return qvstest::journal_fields(); }

void clear() { qvsim_journal_clear(); }

std::vector<Line> of_kind(const std::string &kind) {
    std::vector<Line> out;
    for (auto &l : lines())
        if (!l.empty() && l[0] == kind) out.push_back(l);
    return out;
}

std::vector<std::string> commands(const std::string &runner) {
    std::vector<std::string> out;
    for (auto &l : of_kind("cmd"))
        if (l.size() >= 3 && l[1] == runner) out.push_back(l[2]);
    return out;
}

std::vector<std::string> logs(const std::string &func) {
    std::vector<std::string> out;
    for (auto &l : of_kind("log"))
        if (l.size() >= 6 && l[2] == func) out.push_back(l[4] + " " + l[5]);
    return out;
}

int count(const std::string &kind) { return static_cast<int>(of_kind(kind).size()); }

std::vector<std::string> sets() {
    std::vector<std::string> out;
    for (auto &l : of_kind("set")) {
        std::string s;
        for (std::size_t i = 1; i < l.size(); ++i) s += (i > 1 ? " " : "") + l[i];
        out.push_back(s);
    }
    return out;
}

}  // namespace simjournal
