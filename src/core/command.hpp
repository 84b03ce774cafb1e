// SPDX-License-Identifier: MIT
// Command lines: formatted into cleared fixed-size buffers (cut at size - 1)
// and handed whole to the platform's runner; caller text that could change a
// command line is refused before anything is written or run.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "log.hpp"

namespace qvs {

// Characters that would let caller text change a shell command line.
inline constexpr std::string_view kShellMetaChars = ";&|`$<>()\\'\"#\n\r";

constexpr bool is_shell_safe(std::string_view text) {
    return text.find_first_of(kShellMetaChars) == std::string_view::npos;
}

// Logs the refusal at level 1 under the caller's name. Returns true when the
// text is unsafe (the caller then returns -1 without writing or running).
bool refuse_unsafe_text(const char *func, int line, const char *text);

// Number of characters the formatted text would have; nothing is written.
__attribute__((format(printf, 1, 2))) int formatted_length(const char *fmt, ...);

// A command line that would not fit its buffer is never run (cut short, it
// would lose its redirection and write elsewhere). When a line of length
// characters does not fit size bytes, logs "refused text too long for its
// command line [%s]\n" with the text at level 1 under func and line and
// gives true; false otherwise.
bool refuse_long_text(const char *func, int line, const char *text, int length, std::size_t size);

template <std::size_t N>
class CommandBuffer {
public:
    CommandBuffer() = default;
    CommandBuffer(const CommandBuffer &) = delete;
    CommandBuffer &operator=(const CommandBuffer &) = delete;

    __attribute__((format(printf, 2, 3))) int format(const char *fmt, ...) {
        for (auto &c : text_) c = 0;
        va_list ap;
        va_start(ap, fmt);
        int n = std::vsnprintf(text_, N, fmt, ap);
        va_end(ap);
        return n;
    }
    const char *c_str() const { return text_; }
    char *data() { return text_; }
    static constexpr std::size_t size() { return N; }

private:
    char text_[N] = {};
};

// Scoped FILE* from fopen, closed on every path.
class File {
public:
    File(const char *path, const char *mode) : f_(std::fopen(path, mode)) {}
    ~File() { close(); }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
    explicit operator bool() const { return f_ != nullptr; }
    std::FILE *get() const { return f_; }
    void close() {
        if (f_ != nullptr) std::fclose(f_);
        f_ = nullptr;
    }
    // Give up ownership without closing (where a file is deliberately left open).
    std::FILE *release() {
        std::FILE *f = f_;
        f_ = nullptr;
        return f;
    }

private:
    std::FILE *f_;
};

// Scoped read pipe from popen, closed with pclose on every path.
class Pipe {
public:
    explicit Pipe(const char *cmd, const char *mode = "r") : p_(::popen(cmd, mode)) {}
    ~Pipe() {
        if (p_ != nullptr) ::pclose(p_);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;
    explicit operator bool() const { return p_ != nullptr; }
    std::FILE *get() const { return p_; }

private:
    std::FILE *p_;
};

}  // namespace qvs

// if (QVS_REFUSE_UNSAFE(text)) return -1;
#define QVS_REFUSE_UNSAFE(text) ::qvs::refuse_unsafe_text(__func__, __LINE__, (text))
