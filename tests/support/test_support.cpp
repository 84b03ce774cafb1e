// SPDX-License-Identifier: MIT
#include "test_support.hpp"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "qvsim.h"

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

std::vector<std::string> split(const std::string &text, char sep) {
    std::vector<std::string> out;
    std::size_t start = 0;
    while (true) {
        std::size_t p = text.find(sep, start);
        if (p == std::string::npos) {
            out.push_back(text.substr(start));
            return out;
        }
        out.push_back(text.substr(start, p - start));
        start = p + 1;
    }
}

std::string journal_unescape(const std::string &field) {
    std::string out;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] != '\\' || i + 1 == field.size()) {
            out.push_back(field[i]);
            continue;
        }
        char c = field[++i];
        out.push_back(c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c);
    }
    return out;
}

std::vector<std::vector<std::string>> journal_fields(bool unescape) {
    char *raw = qvsim_journal_text();
    std::string all = raw != nullptr ? raw : "";
    std::free(raw);
    std::vector<std::vector<std::string>> out;
    for (const std::string &line : split(all, '\n')) {
        if (line.empty()) continue;
        std::vector<std::string> fields = split(line, '\t');
        if (unescape)
            for (std::string &f : fields) f = journal_unescape(f);
        out.push_back(fields);
    }
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
