// SPDX-License-Identifier: MIT
#include "core/durable_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

namespace qvs {

bool sync_dir(const char *dir) {
    const int fd = ::open(dir, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

bool sync_parent_dir(const char *path) {
    char dir[288];
    std::snprintf(dir, sizeof dir, "%s", path);
    char *slash = std::strrchr(dir, '/');
    if (slash == nullptr) return sync_dir(".");
    if (slash == dir) slash[1] = '\0';
    else *slash = '\0';
    return sync_dir(dir);
}

FileRewrite::FileRewrite(const char *path, Durability d) : f_(nullptr), durability_(d) {
    std::snprintf(path_, sizeof path_, "%s", path);
    // A directory in the file's place fails as an open for writing would.
    struct stat st = {};
    if (::stat(path_, &st) == 0 && S_ISDIR(st.st_mode)) return;
    // "<path>.<thread id>.new" (the process id in a single-threaded caller);
    // where that name would be too long for its directory, ".<id>.new" in
    // the same directory.
    const int id = static_cast<int>(::syscall(SYS_gettid));
    const char *slash = std::strrchr(path_, '/');
    const char *base = slash != nullptr ? slash + 1 : path_;
    if (std::strlen(base) + 16 <= NAME_MAX)
        std::snprintf(tmp_, sizeof tmp_, "%s.%d.new", path_, id);
    else
        std::snprintf(tmp_, sizeof tmp_, "%.*s.%d.new", static_cast<int>(base - path_), path_, id);
    f_ = std::fopen(tmp_, "we");
}

FileRewrite::~FileRewrite() { discard(); }

void FileRewrite::discard() {
    if (f_ == nullptr) return;
    std::fclose(f_);
    f_ = nullptr;
    ::unlink(tmp_);
}

bool FileRewrite::commit() {
    if (f_ == nullptr) return false;
    const bool flash = durability_ == Durability::kFlash;
    bool ok = std::ferror(f_) == 0;
    ok = std::fflush(f_) == 0 && ok;
    // The data is on flash before its name replaces the old file's.
    if (flash) ok = ok && ::fsync(::fileno(f_)) == 0;
    std::FILE *f = f_;
    f_ = nullptr;
    ok = std::fclose(f) == 0 && ok;
    if (ok && std::rename(tmp_, path_) == 0) return !flash || sync_parent_dir(path_);
    ::unlink(tmp_);
    return false;
}

bool durable_append(const char *path, const char *data, std::size_t len) {
    const bool existed = ::access(path, F_OK) == 0;
    std::FILE *f = std::fopen(path, "ae");
    if (f == nullptr) return false;
    struct stat st = {};
    const bool sized = ::fstat(::fileno(f), &st) == 0;
    bool ok = sized && (len == 0 || std::fwrite(data, 1, len, f) == len);
    ok = std::fflush(f) == 0 && ok;
    ok = ok && ::fdatasync(::fileno(f)) == 0;
    ok = std::fclose(f) == 0 && ok;
    if (ok && !existed) ok = sync_parent_dir(path);
    if (ok) return true;
    // Cut back whatever part reached the file.
    if (sized) {
        const int fd = ::open(path, O_WRONLY | O_CLOEXEC);
        if (fd >= 0) {
            // Sync only a cut that took; either way the call has failed.
            if (::ftruncate(fd, st.st_size) == 0) (void)::fdatasync(fd);
            ::close(fd);
        }
    }
    return false;
}

}  // namespace qvs
