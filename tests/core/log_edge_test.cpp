// SPDX-License-Identifier: MIT
// util_getPidname / util_printf at their edges: no readable executable
// link, executable paths of 127 bytes and more, formats ending in a newline.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "qvs_utils.h"
#include "test_support.hpp"

using qvstest::CaptureFd;
using qvstest::read_file;
using qvstest::run;

namespace {

std::string self_exe() {
    char buf[4096] = {};
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, static_cast<size_t>(n)) : std::string();
}

std::string dir_of(const std::string &path) { return path.substr(0, path.rfind('/')); }

// How a program of this build is started (under the emulator when cross
// compiled).
std::string launcher() {
#ifdef QVS_TEST_EMULATOR
    return std::string(QVS_TEST_EMULATOR) + " ";
#else
    return "";
#endif
}

// A copy of this build's qvsctl at a path of exactly `length` characters
// under /tmp. Returns the path.
std::string qvsctl_at_length(size_t length) {
    std::string qvsctl = dir_of(self_exe()) + "/qvsctl";
    std::string path = "/tmp/qvslong";
    ::mkdir(path.c_str(), 0755);
    while (length - path.size() > 80) {
        path += "/" + std::string(60, 'd');
        ::mkdir(path.c_str(), 0755);
    }
    path += "/qvsctl-";
    path += std::string(length - path.size(), 'x');
    EXPECT_EQ(path.size(), length);
    int status = -1;
    run("cp '" + qvsctl + "' '" + path + "' && chmod 755 '" + path + "'", &status);
    EXPECT_EQ(status, 0) << "copy of " << qvsctl;
    return path;
}

class LogEdges : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(qvstest::in_sandbox()); }
};

// In a child with its own mount namespace, /proc is covered by an empty
// file system (and the executable's own folder too, since an emulator answers
// for "/proc/self/exe" from the program's path); the child then writes one
// line with util_printf to a file. Returns what it wrote; *pidname tells
// whether util_getPidname found a path there.
std::string printf_without_exe_link(bool *pidname) {
    const std::string exe_dir = dir_of(self_exe());
    const std::string out_path = "/tmp/qvs-noexe.txt";
    std::fflush(nullptr);
    pid_t child = ::fork();
    if (child == 0) {
        if (::unshare(CLONE_NEWNS) != 0) ::_exit(10);
        // Source and type mean nothing to a propagation change or a remount;
        // they are named all the same, since memcheck checks every string.
        if (::mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0) ::_exit(11);
        if (::mount("none", "/proc", "tmpfs", 0, nullptr) != 0) ::_exit(12);
        if (::mount("none", exe_dir.c_str(), "tmpfs", 0, nullptr) != 0) ::_exit(13);
        int fd = ::open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd < 0) ::_exit(14);
        char *p = util_getPidname();
        bool found = p != nullptr;
        std::free(p);
        ::dup2(fd, 2);
        util_printf("qvs_utils.cpp", "my_utcChangeWeekend", 321, "weekday=%d", 3);
        std::fflush(stderr);
        ::_exit(found ? 1 : 0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    int code = WEXITSTATUS(status);
    EXPECT_TRUE(code == 0 || code == 1) << "child set-up step " << code << " failed";
    *pidname = code == 1;
    return read_file(out_path);
}

}  // namespace

TEST_F(LogEdges, UnreadableExecutableLinkGivesBarePrefix) {
    bool pidname = true;
    std::string line = printf_without_exe_link(&pidname);
    EXPECT_FALSE(pidname) << "util_getPidname still found a path";
    EXPECT_EQ(line, "[qvs_utils.cpp:my_utcChangeWeekend:321]weekday=3\n");
}

TEST_F(LogEdges, PathOf127BytesIsKeptWhole) {
    std::string path = qvsctl_at_length(127);
    EXPECT_EQ(run(launcher() + path + " log util_getPidname"), "result: 0\npath: " + path + "\n");
}

TEST_F(LogEdges, PathOf128BytesIsCutTo127) {
    std::string path = qvsctl_at_length(128);
    EXPECT_EQ(run(launcher() + path + " log util_getPidname"), "result: 0\npath: " + path.substr(0, 127) + "\n");
}

TEST_F(LogEdges, LongPathIsCutTo127InThePrefix) {
    std::string path = qvsctl_at_length(200);
    std::string out = run(launcher() + path + " log util_printf qvs_utils.cpp __setSSIDEnable 77 hello 2>&1 >/dev/null");
    EXPECT_EQ(out, path.substr(0, 127) + "[qvs_utils.cpp:__setSSIDEnable:77]hello\n");
}

TEST_F(LogEdges, ShortPathIsWholeInThePrefix) {
    std::string path = qvsctl_at_length(40);
    std::string out = run(launcher() + path + " log util_printf f.cpp fn 1 hi 2>&1 >/dev/null");
    EXPECT_EQ(out, path + "[f.cpp:fn:1]hi\n");
}

TEST_F(LogEdges, FormatEndingInNewlineYieldsAnEmptyLine) {
    CaptureFd err(2);
    util_printf("qvs_utils.cpp", "qvsTimeToDST", 9, "second=%lu\n", 5UL);
    EXPECT_EQ(err.text(), self_exe().substr(0, 127) + "[qvs_utils.cpp:qvsTimeToDST:9]second=5\n\n");
}

TEST_F(LogEdges, NewlineOnlyFormatGivesTwoLineEnds) {
    CaptureFd err(2);
    util_printf("a", "b", -1, "\n");
    EXPECT_EQ(err.text(), self_exe().substr(0, 127) + "[a:b:-1]\n\n");
}

TEST_F(LogEdges, EmptyMessageStillEndsTheLine) {
    CaptureFd err(2);
    EXPECT_EQ(util_printf("a", "b", 2147483647, "%s", ""), '\n');
    EXPECT_EQ(err.text(), self_exe().substr(0, 127) + "[a:b:2147483647]\n");
}

TEST_F(LogEdges, EachCallReturnsAFreshCopy) {
    char *a = util_getPidname();
    char *b = util_getPidname();
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_NE(a, b);
    EXPECT_STREQ(a, b);
    a[0] = 'X';
    EXPECT_EQ(b[0], '/');
    std::free(a);
    std::free(b);
}

TEST_F(LogEdges, NothingGoesToStandardOutput) {
    CaptureFd out(1);
    util_printf("f", "g", 3, "to stderr only");
    EXPECT_EQ(out.text(), "");
}
