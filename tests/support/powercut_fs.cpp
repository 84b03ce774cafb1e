// SPDX-License-Identifier: MIT
#define FUSE_USE_VERSION 35
#include "powercut_fs.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <fuse.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

namespace qvstest {
namespace {

// A file or directory, by its own number: a backing inode can be reused
// once its file is gone, and a cut gives every file a new backing inode.
using Node = int;
constexpr Node kRoot = 1;

struct Open {
    int fd;     // on the backing file
    Node node;
};

// One filesystem per test program: the FUSE callbacks reach it here.
struct State {
    std::mutex m;
    std::string visible;  // the backing directory: the visible state itself
    std::string store;    // durable file data, one file "<node>" per synced node
    std::map<ino_t, Node> node_of;                               // backing inode -> node
    std::map<Node, bool> is_dir;                                 // every node ever made
    std::map<Node, std::map<std::string, Node>> durable_names;   // directory -> its durable names
    std::map<uint64_t, Open> open;
    uint64_t next_handle = 1;
    Node next_node = kRoot;
    std::vector<std::string> watched;
    std::vector<PowerCutFs::Step> steps;
    int file_syncs = 0, dir_syncs = 0;
    struct fuse *fuse = nullptr;
    std::thread loop;
};
State g;

std::string backing(const char *path) { return g.visible + path; }
std::string stored(Node n) { return g.store + "/" + std::to_string(n); }

// The node of a backing file or directory (a new one for an inode not seen).
Node node_at(const std::string &real, struct stat *out = nullptr) {
    struct stat st {};
    if (::lstat(real.c_str(), &st) != 0) return 0;
    if (out != nullptr) *out = st;
    auto it = g.node_of.find(st.st_ino);
    if (it != g.node_of.end()) return it->second;
    const Node n = ++g.next_node;
    g.node_of[st.st_ino] = n;
    g.is_dir[n] = S_ISDIR(st.st_mode);
    return n;
}

std::string read_all(int fd) {
    std::string out;
    char buf[65536];
    off_t off = 0;
    for (;;) {
        const ssize_t n = ::pread(fd, buf, sizeof buf, off);
        if (n <= 0) break;
        out.append(buf, static_cast<std::size_t>(n));
        off += n;
    }
    return out;
}

std::string read_path(const std::string &path, bool *found = nullptr) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (found != nullptr) *found = fd >= 0;
    if (fd < 0) return "";
    std::string out = read_all(fd);
    ::close(fd);
    return out;
}

bool write_path(const std::string &path, const std::string &data) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    const bool ok = ::write(fd, data.data(), data.size()) == static_cast<ssize_t>(data.size());
    ::close(fd);
    return ok;
}

// A file's durable data: what its last sync saw (empty if never synced).
std::string durable_data(Node n) { return read_path(stored(n)); }

// The names in a backing directory, each with its node.
std::map<std::string, Node> names_in(const std::string &real) {
    std::map<std::string, Node> out;
    DIR *d = ::opendir(real.c_str());
    if (d == nullptr) return out;
    while (struct dirent *e = ::readdir(d)) {
        if (std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0) continue;
        if (const Node n = node_at(real + "/" + e->d_name)) out[e->d_name] = n;
    }
    ::closedir(d);
    return out;
}

// The node a path reaches through durable names only; 0 when none.
Node durable_lookup(const std::string &path) {
    Node n = kRoot;
    std::size_t i = 0;
    while (i < path.size()) {
        std::size_t j = path.find('/', i);
        if (j == std::string::npos) j = path.size();
        if (j > i) {
            if (!g.is_dir[n]) return 0;
            const auto &names = g.durable_names[n];
            auto it = names.find(path.substr(i, j - i));
            if (it == names.end()) return 0;
            n = it->second;
        }
        i = j + 1;
    }
    return n;
}

std::string durable_view(const std::string &path) {
    const Node n = durable_lookup(path);
    if (n == 0) return PowerCutFs::kMissing;
    return g.is_dir[n] ? std::string() : durable_data(n);
}

void record(const char *op) {
    if (g.watched.empty()) return;
    PowerCutFs::Step s{op, {}, {}, {}};
    for (const std::string &p : g.watched) {
        s.contents.push_back(durable_view(p));
        bool found = false;
        std::string now = read_path(g.visible + p, &found);
        s.visible.push_back(found ? now : PowerCutFs::kMissing);
    }
    s.content = s.contents.front();
    g.steps.push_back(std::move(s));
}

Open *handle(struct fuse_file_info *fi) {
    if (fi == nullptr) return nullptr;
    auto it = g.open.find(fi->fh);
    return it == g.open.end() ? nullptr : &it->second;
}

uint64_t add_handle(int fd, Node n) {
    const uint64_t h = g.next_handle++;
    g.open[h] = {fd, n};
    return h;
}

// ---- the operations: each passes through to the backing directory ---------

int fs_getattr(const char *path, struct stat *st, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    if (Open *o = handle(fi)) {
        if (::fstat(o->fd, st) != 0) return -errno;
        st->st_ino = static_cast<ino_t>(o->node);
        return 0;
    }
    const Node n = node_at(backing(path), st);
    if (n == 0) return -ENOENT;
    st->st_ino = static_cast<ino_t>(n);
    return 0;
}

int fs_readdir(const char *path, void *buf, fuse_fill_dir_t fill, off_t, struct fuse_file_info *,
               enum fuse_readdir_flags) {
    std::lock_guard<std::mutex> l(g.m);
    const std::string real = backing(path);
    DIR *d = ::opendir(real.c_str());
    if (d == nullptr) return -errno;
    while (struct dirent *e = ::readdir(d)) fill(buf, e->d_name, nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    ::closedir(d);
    return 0;
}

int fs_mkdir(const char *path, mode_t mode) {
    std::lock_guard<std::mutex> l(g.m);
    if (::mkdir(backing(path).c_str(), mode) != 0) return -errno;
    node_at(backing(path));
    record("mkdir");
    return 0;
}

int fs_create(const char *path, mode_t mode, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    const int fd = ::open(backing(path).c_str(), fi->flags | O_CREAT | O_CLOEXEC, mode);
    if (fd < 0) return -errno;
    fi->fh = add_handle(fd, node_at(backing(path)));
    record("create");
    return 0;
}

int fs_open(const char *path, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    struct stat st {};
    const Node n = node_at(backing(path), &st);
    if (n == 0) return -ENOENT;
    const int fd = ::open(backing(path).c_str(), fi->flags | O_CLOEXEC);
    if (fd < 0) return -errno;
    fi->fh = add_handle(fd, n);
    if ((fi->flags & O_TRUNC) != 0 && st.st_size > 0) record("truncate");
    return 0;
}

int fs_release(const char *, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    if (Open *o = handle(fi)) {
        ::close(o->fd);
        g.open.erase(fi->fh);
    }
    return 0;
}

int fs_read(const char *, char *buf, size_t size, off_t off, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    Open *o = handle(fi);
    if (o == nullptr) return -EBADF;
    const ssize_t n = ::pread(o->fd, buf, size, off);
    return n < 0 ? -errno : static_cast<int>(n);
}

int fs_write(const char *, const char *buf, size_t size, off_t off, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    Open *o = handle(fi);
    if (o == nullptr) return -EBADF;
    const ssize_t n = ::pwrite(o->fd, buf, size, off);
    if (n < 0) return -errno;
    record("write");
    return static_cast<int>(n);
}

int fs_truncate(const char *path, off_t size, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    Open *o = handle(fi);
    const int r = o != nullptr ? ::ftruncate(o->fd, size) : ::truncate(backing(path).c_str(), size);
    if (r != 0) return -errno;
    record("truncate");
    return 0;
}

// A name that goes away takes its inode's node with it: a file made later on
// a reused inode is another node.
int fs_unlink(const char *path) {
    std::lock_guard<std::mutex> l(g.m);
    struct stat st {};
    if (::lstat(backing(path).c_str(), &st) != 0) return -errno;
    if (::unlink(backing(path).c_str()) != 0) return -errno;
    g.node_of.erase(st.st_ino);
    record("unlink");
    return 0;
}

int fs_rmdir(const char *path) {
    std::lock_guard<std::mutex> l(g.m);
    struct stat st {};
    if (::lstat(backing(path).c_str(), &st) != 0) return -errno;
    if (::rmdir(backing(path).c_str()) != 0) return -errno;
    g.node_of.erase(st.st_ino);
    record("rmdir");
    return 0;
}

int fs_rename(const char *from, const char *to, unsigned int flags) {
    std::lock_guard<std::mutex> l(g.m);
    struct stat replaced {};
    const bool replaces = ::lstat(backing(to).c_str(), &replaced) == 0;
    if (::renameat2(AT_FDCWD, backing(from).c_str(), AT_FDCWD, backing(to).c_str(), flags) != 0) return -errno;
    if (replaces && (flags & RENAME_EXCHANGE) == 0) g.node_of.erase(replaced.st_ino);
    record("rename");
    return 0;
}

// A file's data is durable once synced, wherever its names are.
int fs_fsync(const char *, int, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    Open *o = handle(fi);
    if (o == nullptr) return -EBADF;
    // The handle may be open for writing only: read the file anew.
    if (!write_path(stored(o->node), read_path("/proc/self/fd/" + std::to_string(o->fd)))) return -EIO;
    ++g.file_syncs;
    record("fsync");
    return 0;
}

// A directory's names (made, renamed, removed) are durable once it is synced.
int fs_fsyncdir(const char *path, int, struct fuse_file_info *) {
    std::lock_guard<std::mutex> l(g.m);
    const Node n = node_at(backing(path));
    if (n == 0) return -ENOENT;
    g.durable_names[n] = names_in(backing(path));
    ++g.dir_syncs;
    record("fsyncdir");
    return 0;
}

int fs_chmod(const char *path, mode_t mode, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    Open *o = handle(fi);
    const int r = o != nullptr ? ::fchmod(o->fd, mode) : ::chmod(backing(path).c_str(), mode);
    return r == 0 ? 0 : -errno;
}

// Owners stay the backing files' (the test's); copies that keep the owner
// (mv across filesystems) ask for what they already have.
int fs_chown(const char *, uid_t, gid_t, struct fuse_file_info *) { return 0; }

int fs_utimens(const char *path, const struct timespec tv[2], struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    Open *o = handle(fi);
    const int r = o != nullptr ? ::futimens(o->fd, tv) : ::utimensat(AT_FDCWD, backing(path).c_str(), tv, 0);
    return r == 0 ? 0 : -errno;
}

int fs_statfs(const char *, struct statvfs *st) {
    std::lock_guard<std::mutex> l(g.m);
    return ::statvfs(g.visible.c_str(), st) == 0 ? 0 : -errno;
}

void *fs_init(struct fuse_conn_info *, struct fuse_config *cfg) {
    // Nothing cached in the kernel: after a cut every read comes here.
    cfg->entry_timeout = 0;
    cfg->attr_timeout = 0;
    cfg->negative_timeout = 0;
    cfg->direct_io = 1;
    cfg->use_ino = 1;
    return nullptr;
}

struct fuse_operations make_ops() {
    struct fuse_operations ops = {};
    ops.init = fs_init;
    ops.getattr = fs_getattr;
    ops.readdir = fs_readdir;
    ops.mkdir = fs_mkdir;
    ops.create = fs_create;
    ops.open = fs_open;
    ops.release = fs_release;
    ops.read = fs_read;
    ops.write = fs_write;
    ops.truncate = fs_truncate;
    ops.unlink = fs_unlink;
    ops.rmdir = fs_rmdir;
    ops.rename = fs_rename;
    ops.fsync = fs_fsync;
    ops.fsyncdir = fs_fsyncdir;
    ops.chmod = fs_chmod;
    ops.chown = fs_chown;
    ops.utimens = fs_utimens;
    ops.statfs = fs_statfs;
    return ops;
}

// Empties a backing directory (its own name stays).
void clear_dir(const std::string &real) {
    DIR *d = ::opendir(real.c_str());
    if (d == nullptr) return;
    while (struct dirent *e = ::readdir(d)) {
        if (std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0) continue;
        const std::string p = real + "/" + e->d_name;
        struct stat st {};
        if (::lstat(p.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
            clear_dir(p);
            ::rmdir(p.c_str());
        } else {
            ::unlink(p.c_str());
        }
    }
    ::closedir(d);
}

void make_durable(Node n, const std::string &real) {
    if (!g.is_dir[n]) {
        write_path(stored(n), read_path(real));
        return;
    }
    g.durable_names[n] = names_in(real);
    for (const auto &[name, child] : g.durable_names[n]) make_durable(child, real + "/" + name);
}

// Lays the durable names below directory n out in the backing directory,
// each file with its durable data.
void restore(Node n, const std::string &real) {
    for (const auto &[name, child] : g.durable_names[n]) {
        const std::string p = real + "/" + name;
        if (g.is_dir[child] ? ::mkdir(p.c_str(), 0755) != 0 : !write_path(p, durable_data(child))) continue;
        struct stat st {};
        if (::lstat(p.c_str(), &st) == 0) g.node_of[st.st_ino] = child;
        if (g.is_dir[child]) restore(child, p);
    }
}

bool make_dir(const std::string &path) { return ::mkdir(path.c_str(), 0755) == 0 || errno == EEXIST; }

}  // namespace

PowerCutFs::~PowerCutFs() { unmount(); }

bool PowerCutFs::mount(const std::string &mountpoint, const std::string &work) {
    if (!make_dir(work) || !make_dir(work + "/visible") || !make_dir(work + "/durable")) return false;
    {
        std::lock_guard<std::mutex> l(g.m);
        g.visible = work + "/visible";
        g.store = work + "/durable";
        clear_dir(g.visible);
        clear_dir(g.store);
        g.node_of.clear();
        g.is_dir.clear();
        g.durable_names.clear();
        g.open.clear();
        g.next_node = kRoot;
        struct stat st {};
        if (::lstat(g.visible.c_str(), &st) != 0) return false;
        g.node_of[st.st_ino] = kRoot;  // the root, durable (and empty) from the start
        g.is_dir[kRoot] = true;
        g.durable_names[kRoot];
        g.watched.clear();
        g.steps.clear();
        g.file_syncs = g.dir_syncs = 0;
    }
    static const struct fuse_operations ops = make_ops();
    char prog[] = "powercut-fs";
    char *argv[] = {prog, nullptr};
    struct fuse_args args = FUSE_ARGS_INIT(1, argv);
    g.fuse = fuse_new(&args, &ops, sizeof ops, nullptr);
    fuse_opt_free_args(&args);  // fuse_new may have added to them
    if (g.fuse == nullptr) return false;
    if (fuse_mount(g.fuse, mountpoint.c_str()) != 0) {
        fuse_destroy(g.fuse);
        g.fuse = nullptr;
        return false;
    }
    g.loop = std::thread([] { fuse_loop(g.fuse); });
    return true;
}

void PowerCutFs::unmount() {
    if (g.fuse == nullptr) return;
    fuse_exit(g.fuse);
    fuse_unmount(g.fuse);  // the loop's read of the device ends
    if (g.loop.joinable()) g.loop.join();
    fuse_destroy(g.fuse);
    g.fuse = nullptr;
    std::lock_guard<std::mutex> l(g.m);
    for (auto &e : g.open) ::close(e.second.fd);
    g.open.clear();
}

std::string PowerCutFs::backing() const {
    std::lock_guard<std::mutex> l(g.m);
    return g.visible;
}

void PowerCutFs::sync_all() {
    std::lock_guard<std::mutex> l(g.m);
    make_durable(kRoot, g.visible);
}

void PowerCutFs::cut() {
    std::lock_guard<std::mutex> l(g.m);
    clear_dir(g.visible);
    struct stat root {};
    ::lstat(g.visible.c_str(), &root);
    g.node_of.clear();
    g.node_of[root.st_ino] = kRoot;
    restore(kRoot, g.visible);
}

std::string PowerCutFs::durable(const std::string &path) {
    std::lock_guard<std::mutex> l(g.m);
    return durable_view(path);
}

void PowerCutFs::watch(const std::string &path) { watch(std::vector<std::string>{path}); }

void PowerCutFs::watch(const std::vector<std::string> &paths) {
    std::lock_guard<std::mutex> l(g.m);
    g.watched = paths;
    g.steps.clear();
}

std::vector<PowerCutFs::Step> PowerCutFs::steps() {
    std::lock_guard<std::mutex> l(g.m);
    return g.steps;
}

int PowerCutFs::file_syncs() {
    std::lock_guard<std::mutex> l(g.m);
    return g.file_syncs;
}

int PowerCutFs::dir_syncs() {
    std::lock_guard<std::mutex> l(g.m);
    return g.dir_syncs;
}

}  // namespace qvstest
