// SPDX-License-Identifier: MIT
// Runs the injection table: every row with every hostile text, on empty and
// on pre-filled lists. A refused call returns its refused result, logs one
// level-1 "refused unsafe text" line under the expected function, runs no
// command and changes no file.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "injection_table.hpp"
#include "family_registry.hpp"
#include "qvsim.h"
#include "test_support.hpp"

namespace injtest {

bool add_family(Family (*make)()) { return qvstest::FamilyRegistry<Family>::add(make); }

const std::vector<Family> &families() { return qvstest::FamilyRegistry<Family>::all(); }

namespace {

// Every refused character alone and in context, line ends, command
// substitutions and quote breaks.
std::vector<std::string> hostile_texts() {
    std::vector<std::string> out;
    for (char c : std::string(";&|`$<>()\\'\"#"))
        out.push_back(std::string("10.0.0.1") + c + "touch /tmp/pwned");
    for (const char *t : {"a.example\n", "\na.example", "a.example\nb.example vpn_domain9 1", "a\rb", "a\r\n",
                          "$(touch /tmp/pwned)", "`touch /tmp/pwned`", "x' ; touch /tmp/pwned ; '",
                          "x\" ; touch /tmp/pwned ; \"", "x > /tmp/pwned", "x # comment", "aa:bb:cc:dd:ee:ff;reboot"})
        out.push_back(t);
    return out;
}

// True when text ends in a line end and nothing before it would be refused.
bool harmless_without_one_trailing_line_end(const std::string &text) {
    return !text.empty() && text.back() == '\n' &&
           text.find_first_of(";&|`$<>()\\'\"#\n\r") == text.size() - 1;
}

// Every regular file (path and content) under the places the library writes.
std::map<std::string, std::string> snapshot() {
    std::map<std::string, std::string> out;
    std::string list = qvstest::run("find /userconfig /etc/dnsmasq /tmp /var -type f 2>/dev/null | sort");
    for (const std::string &path : qvstest::split(list, '\n')) {
        // The simulated gateway's own state (journal, store) changes by design.
        if (path.empty() || path.rfind("/var/qvsim", 0) == 0) continue;
        // Lock files are taken before the nested call refuses: no effect.
        if (path.rfind("/var/lock/qvs_utils/", 0) == 0) continue;
        out[path] = qvstest::read_file(path);
    }
    return out;
}

std::vector<std::string> commands() {
    std::vector<std::string> out;
    for (auto &f : qvstest::journal_fields())
        if (f.size() >= 3 && f[0] == "cmd") out.push_back(f[2]);
    return out;
}

int refusal_lines(const std::string &func, const std::string &text) {
    int n = 0;
    for (auto &f : qvstest::journal_fields())
        if (f.size() >= 6 && f[0] == "log" && f[2] == func && f[4] == "1" &&
            f[5] == "refused unsafe text [" + text + "]\n")
            ++n;
    return n;
}

class Injection : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        ASSERT_TRUE(qvstest::in_sandbox());
        ASSERT_EQ(qvsim_reset(), 0);
        ::mkdir("/userconfig/config", 0755);
    }
};

TEST_P(Injection, EveryHostileTextIsRefusedWithoutEffect) {
    const bool prefilled = GetParam();
    ASSERT_FALSE(families().empty());
    int calls = 0;
    for (const Family &family : families()) {
        family.prepare(prefilled);
        for (const Row &row : family.rows) {
            for (const std::string &hostile : hostile_texts()) {
                std::string text = row.prefix + hostile;
                if (row.drops_one_trailing_line_end && harmless_without_one_trailing_line_end(text)) text += "\n";
                SCOPED_TRACE(std::string(family.name) + ": " + row.func + " [" + text + "]");
                const auto before = snapshot();
                qvsim_journal_clear();
                std::vector<char> arg(text.begin(), text.end());
                arg.push_back('\0');
                EXPECT_EQ(row.call(arg.data()), row.refused);
                EXPECT_EQ(refusal_lines(row.logged_as, text), 1);
                EXPECT_EQ(commands(), std::vector<std::string>{});
                EXPECT_EQ(snapshot(), before);
                EXPECT_FALSE(qvstest::exists("/tmp/pwned"));
                ++calls;
            }
        }
    }
    EXPECT_GT(calls, 0);
}

INSTANTIATE_TEST_SUITE_P(Lists, Injection, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool> &i) { return i.param ? "Prefilled" : "Empty"; });

}  // namespace
}  // namespace injtest
