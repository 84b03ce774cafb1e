// SPDX-License-Identifier: MIT
// Helpers shared by the suites: files, commands and captured output.
#pragma once

#include <string>
#include <vector>

namespace qvstest {

// Whole content of a file; "" when it cannot be read. exists() tells apart.
std::string read_file(const std::string &path);
bool exists(const std::string &path);
void write_file(const std::string &path, const std::string &content);
// Runs a shell command, returns its standard output (and sets *status).
std::string run(const std::string &cmd, int *status = nullptr);
// Splits at sep, keeping every piece (a trailing sep gives a last "").
std::vector<std::string> split(const std::string &text, char sep);

// The simulated gateway's journal: one entry per non-empty line, its
// tab-separated fields with the journal's escapes ("\\", "\t", "\n",
// "\r") undone, or kept as journaled when unescape is false.
std::vector<std::vector<std::string>> journal_fields(bool unescape = true);
std::string journal_unescape(const std::string &field);

// True inside qvs-sandbox (tests refuse to touch a host outside it).
bool in_sandbox();

// Captures what is written to a standard stream (fd 1 or 2) while alive.
class CaptureFd {
public:
    explicit CaptureFd(int fd);
    ~CaptureFd();
    std::string text();  // stops capturing and returns what was written
private:
    int fd_, saved_, pipe_rd_;
    std::string path_;
    bool done_ = false;
    std::string text_;
};

}  // namespace qvstest
