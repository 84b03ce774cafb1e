// SPDX-License-Identifier: MIT
// A list file's whole text in memory, edited there and written back once:
// appends only become one durable append, anything else one durable
// rewrite. Lines are searched as fgets reads them in pieces of a given
// buffer size, and removed as "sed '<k>d'" removes them (exactly line k with
// its line end, nothing else).
#pragma once

#include <cstddef>

namespace qvs {

class ListText {
public:
    ListText() = default;
    ~ListText();
    ListText(const ListText &) = delete;
    ListText &operator=(const ListText &) = delete;

    // Reads the file; a missing file is an empty text. False when it exists
    // but cannot be read, or memory runs out.
    bool load(const char *path);
    const char *data() const { return p_ != nullptr ? p_ : ""; }
    std::size_t size() const { return len_; }

    // 1-based number of the first piece (as fgets with a buffer of
    // piece_size bytes reads them) that holds needle as a substring, or
    // whose start matches needle ignoring case when prefix_nocase; 0: none.
    int find(const char *needle, bool prefix_nocase = false, std::size_t piece_size = 1024) const;
    // Piece k (1-based) into out (size bytes), as the k-th fgets call with
    // that buffer would give it; false when the text has fewer pieces.
    bool piece(int k, char *out, std::size_t size) const;
    // Removes line k (1-based) with its line end; false when there is none.
    bool remove_line(int k);
    // Appends "<text>\n"; false when memory runs out.
    bool append_line(const char *text);

    bool changed() const { return changed_; }
    // Writes the changes back to path durably (nothing when unchanged).
    bool write_back(const char *path) const;

private:
    bool reserve(std::size_t need);
    char *p_ = nullptr;
    std::size_t len_ = 0;
    std::size_t cap_ = 0;
    std::size_t loaded_ = 0;  // the text up to here is the file's own
    bool changed_ = false;
    bool rewritten_ = false;  // changed before loaded_: a rewrite is needed
};

}  // namespace qvs
