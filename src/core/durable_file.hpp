// SPDX-License-Identifier: MIT
// File writes that survive a power cut at any instant, and replacements that
// readers in other processes see whole or not at all.
//
// kFlash (files under /userconfig): a rewrite goes to a temporary file in
// the same directory, which is flushed, fsynced, renamed over the file, and
// then the directory is fsynced; an append is flushed and fdatasynced (and
// the directory fsynced when the append created the file). kVolatile (files
// under /tmp, /var, /etc/dnsmasq that other processes read): the same
// temporary file and rename, without the syncs.
#pragma once

#include <cstddef>
#include <cstdio>

namespace qvs {

enum class Durability { kFlash, kVolatile };

// fsync of a directory (its entries: created, renamed, removed names).
bool sync_dir(const char *dir);
// fsync of the directory that holds path.
bool sync_parent_dir(const char *path);

// A whole-file rewrite that never leaves a torn file: the new content goes
// to "<path>.<pid>.new" (opened "w"), which replaces the file by rename only
// when every write, the flush, the close (and for kFlash the fsync of the
// file, then of the directory after the rename) succeeded. Otherwise, and
// when commit() is never called, the temporary file is removed and the file
// stays exactly as it was.
class FileRewrite {
public:
    explicit FileRewrite(const char *path, Durability d = Durability::kFlash);
    ~FileRewrite();
    FileRewrite(const FileRewrite &) = delete;
    FileRewrite &operator=(const FileRewrite &) = delete;
    explicit operator bool() const { return f_ != nullptr; }
    std::FILE *get() const { return f_; }
    // Checks the writes, flushes, syncs, closes and renames; false when any
    // step failed (the temporary file is then gone).
    bool commit();

private:
    void discard();
    char path_[256];
    char tmp_[288];
    std::FILE *f_;
    Durability durability_;
};

// Appends len bytes to the file (created when missing), flushed and
// fdatasynced, the directory fsynced when the file was created. When a
// write, the flush, the sync or the close fails, the file is cut back to
// its old length and the result is false.
bool durable_append(const char *path, const char *data, std::size_t len);

}  // namespace qvs
