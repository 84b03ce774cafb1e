// SPDX-License-Identifier: MIT
#define FUSE_USE_VERSION 35
#include "powercut_fs.hpp"

#include <fuse.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace qvstest {
namespace {

struct Node {
    bool dir = false;
    std::string data, durable_data;                      // files
    std::map<std::string, int> names, durable_names;    // directories: name -> node
};

// One filesystem per test program: the FUSE callbacks reach it here.
struct State {
    std::mutex m;
    std::map<int, Node> nodes;
    int next = 1;
    std::string watched;
    std::vector<PowerCutFs::Step> steps;
    int file_syncs = 0, dir_syncs = 0;
    struct fuse *fuse = nullptr;
    std::thread loop;
    std::string mountpoint;
};
State g;

std::vector<std::string> parts(const std::string &path) {
    std::vector<std::string> out;
    std::size_t i = 0;
    while (i < path.size()) {
        std::size_t j = path.find('/', i);
        if (j == std::string::npos) j = path.size();
        if (j > i) out.push_back(path.substr(i, j - i));
        i = j + 1;
    }
    return out;
}

// Node of a path through the visible (or durable) names; 0 when none.
int lookup(const std::string &path, bool durable = false) {
    int id = 1;
    for (const std::string &p : parts(path)) {
        Node &n = g.nodes[id];
        if (!n.dir) return 0;
        auto &names = durable ? n.durable_names : n.names;
        auto it = names.find(p);
        if (it == names.end()) return 0;
        id = it->second;
    }
    return id;
}

// Parent node and last name of a path; parent 0 when it does not exist.
int parent_of(const std::string &path, std::string &name) {
    std::vector<std::string> p = parts(path);
    if (p.empty()) return 0;
    name = p.back();
    std::string dir;
    for (std::size_t i = 0; i + 1 < p.size(); ++i) dir += "/" + p[i];
    int id = lookup(dir);
    return id != 0 && g.nodes[id].dir ? id : 0;
}

void record(const char *op) {
    if (g.watched.empty()) return;
    int id = lookup(g.watched, true);
    g.steps.push_back({op, id == 0 ? PowerCutFs::kMissing : g.nodes[id].durable_data});
}

int new_node(bool dir) {
    int id = g.next++;
    g.nodes[id].dir = dir;
    return id;
}

int fs_getattr(const char *path, struct stat *st, struct fuse_file_info *) {
    std::lock_guard<std::mutex> l(g.m);
    int id = lookup(path);
    if (id == 0) return -ENOENT;
    std::memset(st, 0, sizeof *st);
    const Node &n = g.nodes[id];
    st->st_ino = static_cast<ino_t>(id);
    st->st_mode = n.dir ? (S_IFDIR | 0755) : (S_IFREG | 0644);
    st->st_nlink = n.dir ? 2 : 1;
    st->st_size = static_cast<off_t>(n.data.size());
    st->st_uid = ::getuid();
    st->st_gid = ::getgid();
    return 0;
}

int fs_readdir(const char *path, void *buf, fuse_fill_dir_t fill, off_t, struct fuse_file_info *,
               enum fuse_readdir_flags) {
    std::lock_guard<std::mutex> l(g.m);
    int id = lookup(path);
    if (id == 0 || !g.nodes[id].dir) return -ENOTDIR;
    fill(buf, ".", nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    fill(buf, "..", nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    for (auto &e : g.nodes[id].names) fill(buf, e.first.c_str(), nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    return 0;
}

int add_name(const char *path, bool dir) {
    std::string name;
    int parent = parent_of(path, name);
    if (parent == 0) return -ENOENT;
    if (g.nodes[parent].names.count(name) != 0) return -EEXIST;
    g.nodes[parent].names[name] = new_node(dir);
    record(dir ? "mkdir" : "create");
    return 0;
}

int fs_mkdir(const char *path, mode_t) {
    std::lock_guard<std::mutex> l(g.m);
    return add_name(path, true);
}

int fs_create(const char *path, mode_t, struct fuse_file_info *) {
    std::lock_guard<std::mutex> l(g.m);
    return add_name(path, false);
}

int remove_name(const char *path, bool dir) {
    std::string name;
    int parent = parent_of(path, name);
    if (parent == 0) return -ENOENT;
    auto &names = g.nodes[parent].names;
    auto it = names.find(name);
    if (it == names.end()) return -ENOENT;
    Node &n = g.nodes[it->second];
    if (n.dir != dir) return dir ? -ENOTDIR : -EISDIR;
    if (dir && !n.names.empty()) return -ENOTEMPTY;
    names.erase(it);
    record(dir ? "rmdir" : "unlink");
    return 0;
}

int fs_unlink(const char *path) {
    std::lock_guard<std::mutex> l(g.m);
    return remove_name(path, false);
}

int fs_rmdir(const char *path) {
    std::lock_guard<std::mutex> l(g.m);
    return remove_name(path, true);
}

int fs_rename(const char *from, const char *to, unsigned int flags) {
    std::lock_guard<std::mutex> l(g.m);
    if (flags != 0) return -EINVAL;
    std::string a, b;
    int pa = parent_of(from, a), pb = parent_of(to, b);
    if (pa == 0 || pb == 0) return -ENOENT;
    auto it = g.nodes[pa].names.find(a);
    if (it == g.nodes[pa].names.end()) return -ENOENT;
    const int id = it->second;
    auto old = g.nodes[pb].names.find(b);
    if (old != g.nodes[pb].names.end() && g.nodes[old->second].dir) return -EISDIR;
    g.nodes[pa].names.erase(a);
    g.nodes[pb].names[b] = id;
    record("rename");
    return 0;
}

int fs_open(const char *path, struct fuse_file_info *fi) {
    std::lock_guard<std::mutex> l(g.m);
    int id = lookup(path);
    if (id == 0) return -ENOENT;
    if (g.nodes[id].dir) return -EISDIR;
    if ((fi->flags & O_TRUNC) != 0 && !g.nodes[id].data.empty()) {
        g.nodes[id].data.clear();
        record("truncate");
    }
    return 0;
}

int fs_read(const char *path, char *buf, size_t size, off_t off, struct fuse_file_info *) {
    std::lock_guard<std::mutex> l(g.m);
    int id = lookup(path);
    if (id == 0) return -ENOENT;
    const std::string &d = g.nodes[id].data;
    if (static_cast<size_t>(off) >= d.size()) return 0;
    size_t n = std::min(size, d.size() - static_cast<size_t>(off));
    std::memcpy(buf, d.data() + off, n);
    return static_cast<int>(n);
}

int fs_write(const char *path, const char *buf, size_t size, off_t off, struct fuse_file_info *) {
    std::lock_guard<std::mutex> l(g.m);
    int id = lookup(path);
    if (id == 0) return -ENOENT;
    std::string &d = g.nodes[id].data;
    if (d.size() < static_cast<size_t>(off) + size) d.resize(static_cast<size_t>(off) + size, '\0');
    std::memcpy(&d[static_cast<size_t>(off)], buf, size);
    record("write");
    return static_cast<int>(size);
}

int fs_truncate(const char *path, off_t size, struct fuse_file_info *) {
    std::lock_guard<std::mutex> l(g.m);
    int id = lookup(path);
    if (id == 0) return -ENOENT;
    g.nodes[id].data.resize(static_cast<size_t>(size), '\0');
    record("truncate");
    return 0;
}

int fs_fsync(const char *path, int, struct fuse_file_info *) {
    std::lock_guard<std::mutex> l(g.m);
    int id = lookup(path);
    if (id == 0) return -ENOENT;
    g.nodes[id].durable_data = g.nodes[id].data;
    ++g.file_syncs;
    record("fsync");
    return 0;
}

int fs_fsyncdir(const char *path, int, struct fuse_file_info *) {
    std::lock_guard<std::mutex> l(g.m);
    int id = lookup(path);
    if (id == 0) return -ENOENT;
    g.nodes[id].durable_names = g.nodes[id].names;
    ++g.dir_syncs;
    record("fsyncdir");
    return 0;
}

int fs_ok_mode(const char *, mode_t, struct fuse_file_info *) { return 0; }
int fs_ok_owner(const char *, uid_t, gid_t, struct fuse_file_info *) { return 0; }
int fs_ok_times(const char *, const struct timespec *, struct fuse_file_info *) { return 0; }

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
    ops.unlink = fs_unlink;
    ops.rmdir = fs_rmdir;
    ops.rename = fs_rename;
    ops.open = fs_open;
    ops.read = fs_read;
    ops.write = fs_write;
    ops.truncate = fs_truncate;
    ops.fsync = fs_fsync;
    ops.fsyncdir = fs_fsyncdir;
    ops.chmod = fs_ok_mode;
    ops.chown = fs_ok_owner;
    ops.utimens = fs_ok_times;
    return ops;
}

void make_durable(int id) {
    Node &n = g.nodes[id];
    n.durable_data = n.data;
    n.durable_names = n.names;
    for (auto &e : n.names) make_durable(e.second);
}

void drop_volatile(int id) {
    Node &n = g.nodes[id];
    n.data = n.durable_data;
    n.names = n.durable_names;
    for (auto &e : n.names) drop_volatile(e.second);
}

}  // namespace

PowerCutFs::~PowerCutFs() { unmount(); }

bool PowerCutFs::mount(const std::string &mountpoint) {
    {
        std::lock_guard<std::mutex> l(g.m);
        g.nodes.clear();
        g.next = 1;
        new_node(true);  // the root, durable from the start
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
    g.mountpoint = mountpoint;
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
}

void PowerCutFs::sync_all() {
    std::lock_guard<std::mutex> l(g.m);
    make_durable(1);
}

void PowerCutFs::cut() {
    std::lock_guard<std::mutex> l(g.m);
    drop_volatile(1);
}

std::string PowerCutFs::durable(const std::string &path) {
    std::lock_guard<std::mutex> l(g.m);
    int id = lookup(path, true);
    return id == 0 ? kMissing : g.nodes[id].durable_data;
}

void PowerCutFs::watch(const std::string &path) {
    std::lock_guard<std::mutex> l(g.m);
    g.watched = path;
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
