// SPDX-License-Identifier: MIT
// One writer at a time per list, across processes and threads.
//
// A list (all files of one steering index, or a shared volatile file) is
// guarded by an exclusive flock on its own lock file under kLockDir, which
// is volatile: a reboot leaves no stale lock, and a holder that dies
// releases its lock with its last descriptor. Each guard opens its own
// descriptor, so two threads of one process exclude each other as two
// processes do. A thread that already holds a list (an exported function
// called by another one inside one call) passes through without waiting.
//
// Lock names and order: "qvvpn<n>", "approute<n>", "appfilter<n>" (the
// index's lists with their kernel side and dnsmasq file), then
// "vpn_ipset_save" (the restore file every tunnel's reload shares). Never
// the other way round, and never two indexes at once.
//
// Volatile files at fixed names that a fixed shell command line writes (so
// they cannot be replaced by rename) are guarded by a lock named after the
// file, held by each call around its command, its read and its removal:
// "flashsize", "ipsec_status", "oltretime", "getwantime", "registerrms",
// "servicetime". Each is taken alone: no other lock is held with it.
#pragma once

#include <cstddef>

namespace qvs {

inline constexpr char kLockDir[] = "/var/lock/qvs_utils";
// The wait for a busy list: kLockTries pauses of kLockPauseUs each (10 s)
// while one holder keeps it; the count starts again whenever the list
// changes hands (the lock file counts the hand-overs).
inline constexpr int kLockPauseUs = 10000;
inline constexpr int kLockTries = 1000;

class ListLock {
public:
    // Takes the lock "<name><index>" (index < 0: just "<name>") for func.
    // When it is not free within the bound, or its file cannot be opened,
    // logs "list %s busy, gave up after %d s.\n" or "lock file %s failed.\n"
    // at level 1 under func; the guard is then false and the caller fails.
    ListLock(const char *func, const char *name, int index = -1);
    ~ListLock();
    ListLock(const ListLock &) = delete;
    ListLock &operator=(const ListLock &) = delete;
    explicit operator bool() const { return held_; }

private:
    static constexpr std::size_t kNameSize = 48;
    char name_[kNameSize];
    int fd_ = -1;      // own descriptor; -1 when nested or not held
    bool held_ = false;
    bool nested_ = false;
};

}  // namespace qvs
