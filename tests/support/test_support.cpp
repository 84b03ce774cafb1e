#include "test_support.hpp"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace qvstest {

std::string read_file(const std::string &path) {
    std::string out;
    FILE *f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return out;
    char buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out.append(buf, n);
    std::fclose(f);
    return out;
}

bool exists(const std::string &path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

void write_file(const std::string &path, const std::string &content) {
    FILE *f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr) << path;
    std::fwrite(content.data(), 1, content.size(), f);
    std::fclose(f);
}

std::string run(const std::string &cmd, int *status) {
    std::string out;
    FILE *p = ::popen(cmd.c_str(), "r");
    if (p == nullptr) {
        if (status) *status = -1;
        return out;
    }
    char buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
    int st = ::pclose(p);
    if (status) *status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return out;
}

bool in_sandbox() { return std::getenv("QVS_SANDBOX") != nullptr; }

// A temporary file, not a pipe: a large output cannot block the writer.
CaptureFd::CaptureFd(int fd) : fd_(fd), saved_(-1), pipe_rd_(-1) {
    std::fflush(nullptr);
    char tmpl[] = "/tmp/qvs-capture-XXXXXX";
    int t = ::mkstemp(tmpl);
    path_ = tmpl;
    saved_ = ::dup(fd_);
    ::dup2(t, fd_);
    ::close(t);
}

std::string CaptureFd::text() {
    if (!done_) {
        std::fflush(nullptr);
        ::dup2(saved_, fd_);
        ::close(saved_);
        text_ = read_file(path_);
        ::unlink(path_.c_str());
        done_ = true;
    }
    return text_;
}

CaptureFd::~CaptureFd() { text(); }

}  // namespace qvstest
