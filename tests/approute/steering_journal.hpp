// SPDX-License-Identifier: MIT
// Test helpers for the application route and filter suites: the platform's
// journal (command lines, log lines), the simulated modules, writable texts.
#pragma once

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "qvsim.h"
#include "test_support.hpp"

namespace steertest {

using qvstest::split;

inline std::vector<std::vector<std::string>> journal_records(const char *kind) {
    std::vector<std::vector<std::string>> out;
    for (auto &fields : qvstest::journal_fields())
        if (fields[0] == kind) out.push_back(fields);
    return out;
}

// The command lines run, in order, with the runner that ran them.
struct Cmd {
    std::string runner;
    std::string line;
};

inline std::vector<Cmd> commands() {
    std::vector<Cmd> out;
    for (auto &f : journal_records("cmd"))
        if (f.size() >= 3) out.push_back({f[1], f[2]});
    return out;
}

// Only the lines, each checked to come from the given runner.
inline std::vector<std::string> command_lines(const std::string &runner, bool *all_by_runner = nullptr) {
    std::vector<std::string> out;
    bool ok = true;
    for (const Cmd &c : commands()) {
        out.push_back(c.line);
        if (c.runner != runner) ok = false;
    }
    if (all_by_runner != nullptr) *all_by_runner = ok;
    return out;
}

struct Log {
    std::string func;
    int level;
    std::string message;
};

inline std::vector<Log> logs() {
    std::vector<Log> out;
    for (auto &f : journal_records("log"))
        if (f.size() >= 6) out.push_back({f[2], std::atoi(f[4].c_str()), f[5]});
    return out;
}

// What the simulated module holds for rule index n, module type t.
inline std::string held(const char *module, int n, int t) {
    char *s = qvsim_module_list(module, n, t);
    std::string out = s != nullptr ? s : "(null)";
    std::free(s);
    return out;
}

// A writable copy of a text for the functions that change their argument.
class Text {
public:
    explicit Text(const std::string &s) : buf_(s.begin(), s.end()) { buf_.push_back('\0'); }
    char *get() { return buf_.data(); }
    std::string str() const { return std::string(buf_.data()); }

private:
    std::vector<char> buf_;
};

// Makes /userconfig read-only (inside the sandbox only).
inline bool userconfig_read_only() {
    int status = -1;
    qvstest::run("mount -o remount,ro /userconfig 2>&1", &status);
    return status == 0;
}

}  // namespace steertest
