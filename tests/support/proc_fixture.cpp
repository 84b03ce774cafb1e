// SPDX-License-Identifier: MIT
#include "proc_fixture.hpp"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "test_support.hpp"

namespace qvstest {
namespace {

constexpr const char *kRealProc = "/run/qvstest-realproc";

bool under_proc(const std::string &path) { return path.rfind("/proc/", 0) == 0; }

// Fills dir with links to every entry of target.
void link_entries(const std::string &dir, const std::string &target) {
    DIR *d = ::opendir(target.c_str());
    ASSERT_NE(d, nullptr) << target << ": " << std::strerror(errno);
    while (dirent *e = ::readdir(d)) {
        std::string n = e->d_name;
        if (n == "." || n == "..") continue;
        EXPECT_EQ(::symlink((target + "/" + n).c_str(), (dir + "/" + n).c_str()), 0) << n << ": " << std::strerror(errno);
    }
    ::closedir(d);
}

// /proc becomes a tmpfs of links into a second, real procfs mount.
void take_over_proc() {
    struct stat st {};
    if (::stat(kRealProc, &st) == 0) return;  // done already
    ASSERT_TRUE(in_sandbox()) << "proc fixtures only inside the sandbox";
    ASSERT_EQ(::mkdir(kRealProc, 0755), 0) << std::strerror(errno);
    ASSERT_EQ(::mount("proc", kRealProc, "proc", 0, nullptr), 0) << std::strerror(errno);
    ASSERT_EQ(::mount("qvstest-proc", "/proc", "tmpfs", 0, "mode=0555"), 0) << std::strerror(errno);
    link_entries("/proc", kRealProc);
}

// Turns every linked directory on the way to path's parent into a real
// directory of links, so that path's own entry can be changed.
void open_up_parents(const std::string &path) {
    std::string dir = "/proc";
    std::size_t pos = std::strlen("/proc/");
    for (;;) {
        std::size_t slash = path.find('/', pos);
        if (slash == std::string::npos) return;
        std::string name = path.substr(pos, slash - pos);
        std::string here = dir + "/" + name;
        std::string real = std::string(kRealProc) + here.substr(std::strlen("/proc"));
        struct stat st {};
        if (::lstat(here.c_str(), &st) == 0 && S_ISLNK(st.st_mode)) {
            ::unlink(here.c_str());
            ASSERT_EQ(::mkdir(here.c_str(), 0555), 0) << here << ": " << std::strerror(errno);
            link_entries(here, real);
        } else if (::lstat(here.c_str(), &st) != 0) {
            ASSERT_EQ(::mkdir(here.c_str(), 0555), 0) << here << ": " << std::strerror(errno);
        }
        dir = here;
        pos = slash + 1;
    }
}

void make_parents(const std::string &path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        ::mkdir(path.substr(0, slash).c_str(), 0755);
}

}  // namespace

void present_file(const std::string &path, const std::string &content) {
    if (under_proc(path)) {
        take_over_proc();
        open_up_parents(path);
        ::unlink(path.c_str());
    } else {
        make_parents(path);
    }
    write_file(path, content);
    ASSERT_TRUE(exists(path)) << path;
}

void hide_file(const std::string &path) {
    if (under_proc(path)) {
        take_over_proc();
        open_up_parents(path);
    }
    ::unlink(path.c_str());
    ASSERT_FALSE(exists(path)) << path;
}

}  // namespace qvstest
