// SPDX-License-Identifier: MIT
#include "core/list_lock.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/log.hpp"

namespace qvs {
namespace {

// The lists this thread holds: nested guards of the same list pass through.
constexpr int kHeldMax = 4;
struct Held {
    char name[48];
    int depth;
};
// Initial-exec: a few bytes of static TLS, no __tls_get_addr (and so no
// dependency on the dynamic loader's own object).
__attribute__((tls_model("initial-exec"))) thread_local Held t_held[kHeldMax];

Held *find_held(const char *name) {
    for (Held &h : t_held)
        if (h.depth > 0 && std::strcmp(h.name, name) == 0) return &h;
    return nullptr;
}

Held *free_slot() {
    for (Held &h : t_held)
        if (h.depth == 0) return &h;
    return nullptr;
}

// "/var/lock" may be missing on a fresh volatile /var; created once here.
void make_lock_dir() {
    if (::access(kLockDir, F_OK) == 0) return;
    ::mkdir("/var/lock", 0755);
    ::mkdir(kLockDir, 0755);
}

// The lock file holds one number: how many times the list was taken. Read
// by waiters without the lock (a torn read only restarts a wait once).
std::uint32_t handovers(int fd) {
    std::uint32_t n = 0;
    if (::pread(fd, &n, sizeof n, 0) != static_cast<ssize_t>(sizeof n)) return 0;
    return n;
}

void count_handover(int fd) {
    const std::uint32_t n = handovers(fd) + 1;
    // A lock file that can't be written keeps working as a lock; its waiters
    // then only have the plain bound.
    if (::pwrite(fd, &n, sizeof n, 0) != static_cast<ssize_t>(sizeof n)) return;
}

}  // namespace

ListLock::ListLock(const char *func, const char *name, int index) {
    if (index >= 0)
        std::snprintf(name_, sizeof name_, "%s%d", name, index);
    else
        std::snprintf(name_, sizeof name_, "%s", name);
    if (Held *h = find_held(name_)) {
        ++h->depth;
        nested_ = held_ = true;
        return;
    }
    Held *slot = free_slot();
    char path[sizeof kLockDir + kNameSize + 8];
    std::snprintf(path, sizeof path, "%s/%s.lock", kLockDir, name_);
    make_lock_dir();
    // Close-on-exec: a command the holder starts must not keep the lock.
    fd_ = slot != nullptr ? ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0644) : -1;
    if (fd_ < 0) {
        QVS_LOG_AS(func, kLogError, "lock file %s failed.\n", path);
        return;
    }
    // Short pauses through the C library's usleep, so the bound is counted
    // in pauses rather than read from a clock. The bound is for a holder
    // that stalls: whenever the list changed hands meanwhile (its hand-over
    // count moved), the count of pauses starts again, so a caller behind a
    // stream of quick holders on a slow machine waits its turn instead of
    // failing.
    std::uint32_t seen = handovers(fd_);
    for (int tries = 0;; ++tries) {
        if (::flock(fd_, LOCK_EX | LOCK_NB) == 0) break;
        if (errno != EWOULDBLOCK && errno != EINTR) {
            tries = kLockTries;
        } else if (std::uint32_t now = handovers(fd_); now != seen) {
            seen = now;
            tries = 0;
        }
        if (tries >= kLockTries) {
            QVS_LOG_AS(func, kLogError, "list %s busy, gave up after %d s.\n", name_,
                       kLockTries / (1000000 / kLockPauseUs));
            ::close(fd_);
            fd_ = -1;
            return;
        }
        ::usleep(kLockPauseUs);
    }
    count_handover(fd_);
    std::memcpy(slot->name, name_, sizeof slot->name);
    slot->depth = 1;
    held_ = true;
}

ListLock::~ListLock() {
    if (!held_) return;
    Held *h = find_held(name_);
    if (h != nullptr) --h->depth;
    if (nested_) return;
    // Closing the last descriptor releases the flock.
    ::close(fd_);
}

}  // namespace qvs
