// SPDX-License-Identifier: MIT
#include "core/list_text.hpp"

#include <strings.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/durable_file.hpp"

namespace qvs {

ListText::~ListText() { std::free(p_); }

bool ListText::reserve(std::size_t need) {
    if (need + 1 <= cap_) return true;
    std::size_t cap = cap_ < 256 ? 256 : cap_;
    while (cap < need + 1) cap *= 2;
    char *p = static_cast<char *>(std::realloc(p_, cap));
    if (p == nullptr) return false;
    p_ = p;
    cap_ = cap;
    return true;
}

bool ListText::load(const char *path) {
    len_ = loaded_ = 0;
    changed_ = rewritten_ = false;
    std::FILE *f = std::fopen(path, "re");
    if (f == nullptr) return errno == ENOENT && reserve(0);
    bool ok = true;
    char buf[4096];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) {
        if (!reserve(len_ + n)) {
            ok = false;
            break;
        }
        std::memcpy(p_ + len_, buf, n);
        len_ += n;
    }
    ok = ok && std::ferror(f) == 0;
    std::fclose(f);
    if (!reserve(len_)) return false;
    p_[len_] = '\0';
    loaded_ = len_;
    return ok;
}

namespace {

// End of the piece that starts at pos: fgets stops after a line end or
// after size - 1 bytes.
std::size_t piece_end(const char *p, std::size_t len, std::size_t pos, std::size_t size) {
    std::size_t end = pos;
    while (end < len && end - pos < size - 1) {
        if (p[end++] == '\n') break;
    }
    return end;
}

}  // namespace

int ListText::find(const char *needle, bool prefix_nocase, std::size_t piece_size) const {
    const std::size_t nlen = std::strlen(needle);
    char *buf = static_cast<char *>(std::malloc(piece_size));
    if (buf == nullptr) return 0;
    int number = 0;
    int found = 0;
    for (std::size_t pos = 0; pos < len_ && found == 0;) {
        const std::size_t end = piece_end(p_, len_, pos, piece_size);
        ++number;
        std::memcpy(buf, p_ + pos, end - pos);
        buf[end - pos] = '\0';
        // Like fgets text: a NUL byte inside the piece ends it for the search.
        if (prefix_nocase ? ::strncasecmp(buf, needle, nlen) == 0 : std::strstr(buf, needle) != nullptr)
            found = number;
        pos = end;
    }
    std::free(buf);
    return found;
}

bool ListText::piece(int k, char *out, std::size_t size) const {
    std::size_t pos = 0;
    for (int i = 1; i <= k; ++i) {
        if (pos >= len_) return false;
        const std::size_t end = piece_end(p_, len_, pos, size);
        if (i == k) {
            std::memcpy(out, p_ + pos, end - pos);
            out[end - pos] = '\0';
        }
        pos = end;
    }
    return true;
}

bool ListText::remove_line(int k) {
    if (k < 1) return false;
    std::size_t start = 0;
    for (int i = 1; i < k; ++i) {
        const char *nl = static_cast<const char *>(std::memchr(p_ + start, '\n', len_ - start));
        if (nl == nullptr) return false;
        start = static_cast<std::size_t>(nl - p_) + 1;
    }
    if (start >= len_) return false;
    const char *nl = static_cast<const char *>(std::memchr(p_ + start, '\n', len_ - start));
    const std::size_t end = nl != nullptr ? static_cast<std::size_t>(nl - p_) + 1 : len_;
    std::memmove(p_ + start, p_ + end, len_ - end + 1);
    len_ -= end - start;
    if (start < loaded_) rewritten_ = true;
    changed_ = true;
    return true;
}

bool ListText::append_line(const char *text) {
    const std::size_t n = std::strlen(text);
    if (!reserve(len_ + n + 1)) return false;
    std::memcpy(p_ + len_, text, n);
    p_[len_ + n] = '\n';
    len_ += n + 1;
    p_[len_] = '\0';
    changed_ = true;
    return true;
}

bool ListText::write_back(const char *path) const {
    if (!changed_) return true;
    if (!rewritten_) return durable_append(path, p_ + loaded_, len_ - loaded_);
    FileRewrite f(path);
    if (!f) return false;
    std::fwrite(p_, 1, len_, f.get());
    return f.commit();
}

}  // namespace qvs
