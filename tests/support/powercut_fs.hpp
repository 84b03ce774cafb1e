// SPDX-License-Identifier: MIT
// A filesystem that loses, on a power cut, whatever was never synced.
//
// Mounted with FUSE (libfuse3) inside the test's own sandbox, served by a
// thread of the test program, over a backing directory that IS the visible
// state: every create, open, read, write, truncate, rename, unlink, mkdir
// and rmdir passes through to it, so the test (or a shell) sees in the
// backing directory exactly the files the mount shows. The durable state is
// kept apart from it: each file and directory is a node of its own number
// (a backing inode can be reused, and a cut makes new ones); a file's data
// becomes durable on fsync or fdatasync of the file (its node, wherever its
// names are), as a copy "<node>" in a second folder beside the backing one;
// a directory's names (created, renamed, removed) become durable on fsync of
// the directory, as its durable name table. cut() drops everything that is
// not durable, as a power cut would: the backing directory is emptied and
// laid out again from the durable names, each file with its last synced data
// (empty if never synced).
//
// Not offered: hard links and symbolic links (the library makes neither),
// and handles kept open across a cut.
//
// For the tests of writers, the watched paths' durable contents are recorded
// after every operation that changes either state (write, truncate, create,
// mkdir, rename, unlink, rmdir, fsync of a file or a directory): entry k is
// what a cut right after the k-th such operation would leave there.
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
    // work (made when missing, emptied) holds the backing directory
    // "<work>/visible" and the durable data "<work>/durable"; it must lie
    // outside the mount point.
    bool mount(const std::string &mountpoint, const std::string &work = "/run/powercut-fs");
    void unmount();
    // The backing directory: the visible state as plain files.
    std::string backing() const;

    // Everything visible becomes durable (a fully synced starting state).
    void sync_all();
    // A power cut: only what was durable stays, in the backing directory too.
    void cut();

    // A cut's view of path ("/a/b" below the mount point): its durable
    // content, or kMissing when no durable name leads to it.
    static constexpr const char *kMissing = "<missing>";
    std::string durable(const std::string &path);

    struct Step {
        std::string op;                     // "write", "rename", "fsync", ...
        std::string content;                // the (first) watched path's durable content after it
        std::vector<std::string> contents;  // every watched path's, in the order watched
        // Every watched path's visible content after it (kMissing when no
        // visible name leads to it): what a cut would leave had the device
        // written everything back just before.
        std::vector<std::string> visible;
    };
    // Starts recording the watched path(s) (clears earlier steps).
    void watch(const std::string &path);
    void watch(const std::vector<std::string> &paths);
    std::vector<Step> steps();
    // File syncs (fsync and fdatasync) and directory syncs since mount.
    int file_syncs();
    int dir_syncs();
};

}  // namespace qvstest
