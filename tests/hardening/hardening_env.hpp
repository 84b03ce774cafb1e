// SPDX-License-Identifier: MIT
// Shared helpers of the hardening suites: a small flash that can be filled
// to the last byte, read-only flash, the journal's commands and log lines.
#pragma once

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qvsim.h"
#include "test_support.hpp"

namespace hardtest {

inline const std::string kVpnDir = "/userconfig/config/qvvpn";
inline const std::string kRouteDir = "/userconfig/config/approute";
inline const std::string kFilterDir = "/userconfig/config/appfilter";

inline long page_size() { return ::sysconf(_SC_PAGESIZE); }

// A fresh tmpfs of pages pages on /userconfig (inside the sandbox only) with
// the three list directories.
inline void small_flash(int pages = 16) {
    ASSERT_TRUE(qvstest::in_sandbox());
    int status = -1;
    qvstest::run("umount /userconfig 2>&1", &status);
    qvstest::run("mount -t tmpfs -o mode=0755,size=" + std::to_string(pages * page_size()) +
                     " qvs-small-flash /userconfig 2>&1",
                 &status);
    ASSERT_EQ(status, 0) << "cannot mount a small tmpfs on /userconfig";
    for (const std::string &d : {std::string("/userconfig/config"), kVpnDir, kRouteDir, kFilterDir})
        ASSERT_EQ(::mkdir(d.c_str(), 0755), 0) << d;
}

// Takes every free page of /userconfig.
inline void fill_flash() {
    FILE *f = std::fopen("/userconfig/filler", "wb");
    ASSERT_NE(f, nullptr);
    std::setvbuf(f, nullptr, _IONBF, 0);
    std::vector<char> block(static_cast<std::size_t>(page_size()), 'F');
    while (std::fwrite(block.data(), 1, block.size(), f) == block.size()) {
    }
    std::fclose(f);
    // Nothing more fits, not even one byte in a new page.
    FILE *probe = std::fopen("/userconfig/probe", "wb");
    ASSERT_NE(probe, nullptr);
    std::setvbuf(probe, nullptr, _IONBF, 0);
    EXPECT_EQ(std::fwrite("x", 1, 1, probe), 0u);
    std::fclose(probe);
    ::unlink("/userconfig/probe");
}

inline void read_only_flash() {
    int status = -1;
    qvstest::run("mount -o remount,ro /userconfig 2>&1", &status);
    ASSERT_EQ(status, 0) << "cannot make /userconfig read-only";
}

// Names in a directory (no "." and "..").
inline std::set<std::string> dir_names(const std::string &dir) {
    std::set<std::string> out;
    DIR *d = ::opendir(dir.c_str());
    if (d == nullptr) return out;
    while (dirent *e = ::readdir(d)) {
        std::string n = e->d_name;
        if (n != "." && n != "..") out.insert(n);
    }
    ::closedir(d);
    return out;
}

// Every regular file under the given roots (recursive), with its content.
inline std::vector<std::string> files_under(const std::string &root) {
    std::vector<std::string> out;
    int status = -1;
    std::string text = qvstest::run("find " + root + " -type f 2>/dev/null | sort", &status);
    for (const std::string &line : qvstest::split(text, '\n'))
        if (!line.empty()) out.push_back(line);
    return out;
}

// Command lines run since the last journal clear (any runner).
inline std::vector<std::string> commands() {
    std::vector<std::string> out;
    for (auto &f : qvstest::journal_fields())
        if (f.size() >= 3 && f[0] == "cmd") out.push_back(f[2]);
    return out;
}

struct LogLine {
    std::string func;
    int level;
    std::string message;
};

inline std::vector<LogLine> logs() {
    std::vector<LogLine> out;
    for (auto &f : qvstest::journal_fields())
        if (f.size() >= 6 && f[0] == "log") out.push_back({f[2], std::atoi(f[4].c_str()), f[5]});
    return out;
}

// True when a level-1 line of func starts with message.
inline bool logged(const std::string &func, const std::string &message) {
    for (const LogLine &l : logs())
        if (l.func == func && l.level == 1 && l.message.compare(0, message.size(), message) == 0) return true;
    return false;
}

// Lines "z...z\n" of at most 60 characters, size bytes in all (size >= 2).
inline std::string filler_lines(std::size_t size) {
    std::string out;
    while (size - out.size() > 61) out += std::string(59, 'z') + "\n";
    std::size_t rest = size - out.size();
    if (rest > 0) out += std::string(rest - 1, 'y') + "\n";
    return out;
}

// A writable copy of a text for the functions that change their argument.
class Text {
public:
    explicit Text(const std::string &s) : buf_(s.begin(), s.end()) { buf_.push_back('\0'); }
    char *get() { return buf_.data(); }

private:
    std::vector<char> buf_;
};

}  // namespace hardtest
