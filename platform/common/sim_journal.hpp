// SPDX-License-Identifier: MIT
// State directory and journal of the simulated gateway, shared by libqv and
// liblog (header-only, file-local copies in each library).
#pragma once

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace qvsim_common {

// $QVSIM_DIR, or "/var/qvsim".
static inline const char *state_dir() {
    const char *d = std::getenv("QVSIM_DIR");
    return (d != nullptr && *d != '\0') ? d : "/var/qvsim";
}

// mkdir -p with mode 0755; true when the directory exists afterwards.
static inline bool make_dirs(const char *path) {
    std::string p(path);
    for (std::size_t i = 1; i <= p.size(); ++i) {
        if (i == p.size() || p[i] == '/') {
            std::string part = p.substr(0, i);
            if (::mkdir(part.c_str(), 0755) != 0 && errno != EEXIST) return false;
        }
    }
    struct stat st;
    return ::stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

// Journal text escaping: backslash, tab, CR and LF.
static inline void escape_into(std::string &out, const char *text) {
    if (text == nullptr) return;
    for (const char *p = text; *p != '\0'; ++p) {
        switch (*p) {
            case '\\': out += "\\\\"; break;
            case '\t': out += "\\t"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            default: out += *p;
        }
    }
}

static inline std::string journal_path() { return std::string(state_dir()) + "/journal"; }

// Appends one finished line (without its line end) in a single write.
static inline void journal_append(const std::string &line) {
    if (!make_dirs(state_dir())) return;
    std::string l = line + "\n";
    int fd = ::open(journal_path().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) return;
    const char *p = l.data();
    std::size_t left = l.size();
    while (left > 0) {
        ssize_t n = ::write(fd, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        p += n;
        left -= static_cast<std::size_t>(n);
    }
    ::close(fd);
}

// A journal line from fields: the first (the kind) as is, the others escaped.
template <typename... T>
static inline void journal(const char *kind, const T &...fields) {
    std::string line(kind);
    ((line += '\t', escape_into(line, std::string(fields).c_str())), ...);
    journal_append(line);
}

}  // namespace qvsim_common
