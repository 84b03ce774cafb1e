// SPDX-License-Identifier: MIT
// A filesystem that loses, on a power cut, whatever was never synced.
//
// Mounted with FUSE (libfuse3) inside the test's own sandbox, served by a
// thread of the test program. It keeps two states apart: the visible one
// that every open, read, write, rename and unlink works on, and the durable
// one. A file's data becomes durable on fsync or fdatasync of the file (its
// node, wherever its names are); a directory's names (created, renamed,
// removed) become durable on fsync of the directory. cut() drops everything
// that is not durable, as a power cut would: each directory gets back its
// durable names, each file its last synced data (empty if never synced).
//
// For the tests of writers, a watched path's durable content is recorded
// after every operation that changes either state (write, truncate,
// create, mkdir, rename, unlink, fsync of a file or a directory): entry k
// is what a cut right after the k-th such operation would leave there.
#pragma once

#include <string>
#include <vector>

namespace qvstest {

class PowerCutFs {
public:
    PowerCutFs() = default;
    ~PowerCutFs();
    PowerCutFs(const PowerCutFs &) = delete;
    PowerCutFs &operator=(const PowerCutFs &) = delete;

    // Mounts an empty filesystem (its root durable) on an existing directory.
    bool mount(const std::string &mountpoint);
    void unmount();

    // Everything visible becomes durable (a fully synced starting state).
    void sync_all();
    // A power cut: only what was durable stays.
    void cut();

    // A cut's view of path ("/a/b" below the mount point): its durable
    // content, or kMissing when no durable name leads to it.
    static constexpr const char *kMissing = "<missing>";
    std::string durable(const std::string &path);

    struct Step {
        std::string op;       // "write", "rename", "fsync", ...
        std::string content;  // the watched path's durable content after it
    };
    // Starts recording the watched path (clears earlier steps).
    void watch(const std::string &path);
    std::vector<Step> steps();
    // File syncs (fsync and fdatasync) and directory syncs since mount.
    int file_syncs();
    int dir_syncs();
};

}  // namespace qvstest
