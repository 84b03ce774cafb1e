// SPDX-License-Identifier: MIT
// Per-entry packet counts of a tunnel's list, taken from the counters that
// "ipset list" prints for the set's members, and the chain packet sum.
//
// Every list row gains the packets of every member key that occurs in the
// row's text as a substring. Keys are at most 31 characters, so instead of
// testing each key against each row, the distinct keys are summed in a hash
// table and each row looks up its own substrings of the key lengths that
// occur; a key counts once per row however often it occurs in it.
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/command.hpp"
#include "core/list_lock.hpp"
#include "core/log.hpp"
#include "qvs_utils.h"
#include "steering/vpn_common.hpp"

using qvs::File;
using namespace qvs::vpn;

namespace {

constexpr std::size_t kRows = 2048;
constexpr std::size_t kRowText = 320;
constexpr std::size_t kKeySize = 32;

struct StatRow {
    char text[kRowText];
    std::int32_t count;
};

struct KeyEntry {
    char key[kKeySize];
    std::uint32_t hash;
    std::uint32_t sum;    // packets, wrapping like the 32-bit count
    std::int32_t stamp;   // last row that counted this key (-1: none)
    std::uint8_t len;     // 0: free slot
};

constexpr std::uint32_t kFnvBasis = 2166136261u;
constexpr std::uint32_t fnv_step(std::uint32_t h, unsigned char c) { return (h ^ c) * 16777619u; }

// Open-addressing table of distinct keys with their packet sums.
class KeyTable {
public:
    KeyTable() = default;
    KeyTable(const KeyTable &) = delete;
    KeyTable &operator=(const KeyTable &) = delete;
    ~KeyTable() { std::free(slots_); }

    bool empty() const { return used_ == 0; }
    std::uint32_t lengths() const { return lengths_; }

    // false when memory runs out.
    bool add(const char *key, std::size_t len, std::uint32_t packets) {
        if ((used_ + 1) * 2 > cap_ && !grow()) return false;
        std::uint32_t h = kFnvBasis;
        for (std::size_t i = 0; i < len; ++i) h = fnv_step(h, static_cast<unsigned char>(key[i]));
        KeyEntry *e = slot_for(h, key, len);
        if (e->len == 0) {
            std::memcpy(e->key, key, len);
            e->key[len] = '\0';
            e->len = static_cast<std::uint8_t>(len);
            e->hash = h;
            e->sum = 0;
            e->stamp = -1;
            ++used_;
            lengths_ |= 1u << len;
        }
        e->sum += packets;
        return true;
    }

    KeyEntry *find(std::uint32_t h, const char *text, std::size_t len) {
        KeyEntry *e = slot_for(h, text, len);
        return e->len != 0 ? e : nullptr;
    }

private:
    KeyEntry *slot_for(std::uint32_t h, const char *key, std::size_t len) {
        std::size_t mask = cap_ - 1;
        for (std::size_t i = h & mask;; i = (i + 1) & mask) {
            KeyEntry *e = &slots_[i];
            if (e->len == 0) return e;
            if (e->hash == h && e->len == len && std::memcmp(e->key, key, len) == 0) return e;
        }
    }

    bool grow() {
        std::size_t cap = cap_ == 0 ? 1024 : cap_ * 2;
        auto *slots = static_cast<KeyEntry *>(std::calloc(cap, sizeof(KeyEntry)));
        if (slots == nullptr) return false;
        KeyEntry *old = slots_;
        std::size_t old_cap = cap_;
        slots_ = slots;
        cap_ = cap;
        for (std::size_t i = 0; i < old_cap; ++i)
            if (old[i].len != 0) *slot_for(old[i].hash, old[i].key, old[i].len) = old[i];
        std::free(old);
        return true;
    }

    KeyEntry *slots_ = nullptr;
    std::size_t cap_ = 0;
    std::size_t used_ = 0;
    std::uint32_t lengths_ = 0;  // bit L set: some key has length L
};

// Adds to each row the sums of the distinct keys found in its text.
void count_rows(StatRow *rows, std::size_t nrows, KeyTable &keys) {
    std::uint32_t lengths = keys.lengths();
    for (std::size_t r = 0; r < nrows; ++r) {
        const char *t = rows[r].text;
        std::size_t len = std::strlen(t);
        std::uint32_t count = static_cast<std::uint32_t>(rows[r].count);
        for (std::size_t i = 0; i < len; ++i) {
            std::uint32_t h = kFnvBasis;
            std::size_t max = len - i < kKeySize - 1 ? len - i : kKeySize - 1;
            for (std::size_t l = 1; l <= max; ++l) {
                h = fnv_step(h, static_cast<unsigned char>(t[i + l - 1]));
                if ((lengths & (1u << l)) == 0) continue;
                KeyEntry *e = keys.find(h, t + i, l);
                if (e == nullptr || e->stamp == static_cast<std::int32_t>(r)) continue;
                e->stamp = static_cast<std::int32_t>(r);
                count += e->sum;
            }
        }
        rows[r].count = static_cast<std::int32_t>(count);
    }
}

// Hand-written equivalents of the two scan formats (scanf is the bulk of the
// time on 65536 lines). As with scanf, a blank in the format takes any run of
// blanks (also none), a literal must match character by character, and
// whatever was converted before a mismatch stays.
bool is_blank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

const char *skip_blanks(const char *p) {
    while (*p != '\0' && is_blank(*p)) ++p;
    return p;
}

// "%s" / "%*s": the next word (leading blanks skipped); nullptr when none.
const char *word(const char *p, const char **end) {
    p = skip_blanks(p);
    const char *e = p;
    while (*e != '\0' && !is_blank(*e)) ++e;
    if (e == p) return nullptr;
    *end = e;
    return p;
}

// " <literal>": blanks, then the literal; nullptr on a mismatch.
const char *literal(const char *p, const char *lit) {
    p = skip_blanks(p);
    std::size_t n = std::strlen(lit);
    return std::strncmp(p, lit, n) == 0 ? p + n : nullptr;
}

// "%d": blanks, an optional sign, decimal digits (wrapping like a 32-bit
// store); nullptr when no digit follows.
const char *number(const char *p, int *out) {
    p = skip_blanks(p);
    bool neg = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    if (*p < '0' || *p > '9') return nullptr;
    std::uint32_t v = 0;
    while (*p >= '0' && *p <= '9') v = v * 10u + static_cast<std::uint32_t>(*p++ - '0');
    *out = static_cast<std::int32_t>(neg ? 0u - v : v);
    return p;
}

void copy_key(char (&key)[kKeySize], const char *from, std::size_t len) {
    std::memcpy(key, from, len < kKeySize - 1 ? len : kKeySize - 1);
}

// "%s packets %d", the member word kept to its first 31 characters (a longer
// member, such as an IPv6 network, still counts under that prefix).
void scan_member_line(const char *line, char (&key)[kKeySize], int *packets) {
    const char *end = nullptr;
    const char *w = word(line, &end);
    if (w == nullptr) return;
    copy_key(key, w, static_cast<std::size_t>(end - w));
    const char *p = literal(end, "packets");
    if (p != nullptr) number(p, packets);
}

// "%*s packets %d bytes %*s comment \"%31[^\"]": the comment is the key.
void scan_comment_line(const char *line, char (&key)[kKeySize], int *packets) {
    const char *p = nullptr;
    if (word(line, &p) == nullptr) return;
    if ((p = literal(p, "packets")) == nullptr || (p = number(p, packets)) == nullptr) return;
    if ((p = literal(p, "bytes")) == nullptr || word(p, &p) == nullptr) return;
    if ((p = literal(p, "comment")) == nullptr || (p = literal(p, "\"")) == nullptr) return;
    const char *e = p;
    while (*e != '\0' && *e != '"') ++e;
    copy_key(key, p, static_cast<std::size_t>(e - p));
}

struct Freer {
    void *p;
    ~Freer() { std::free(p); }
};

}  // namespace

extern "C" {

int qvvpn_get_statistics(int n, unsigned int type, char *out, int size) {
    // The list and its set are read as one writer left them.
    qvs::ListLock tunnel_lock(__func__, "qvvpn", n);
    if (!tunnel_lock) return -1;
    DirStep d = dir_step(__func__);
    if (d == DirStep::kFailed) return -1;
    if (d == DirStep::kCreated) return 0;
    const char *prefix = file_prefix_of(type);
    if (prefix == nullptr || out == nullptr || size < 1) return -1;
    const char *set = type == kTypeIp ? kIpSet : type == kTypeDomain ? kDomainSet : kMacSet;
    char path[kPathSize];
    list_path(path, prefix, n);
    qvs::CommandBuffer<kCmdSize> cmd;
    cmd.format("ipset list %s%d 2> /dev/null | grep packets", set, n);
    out[0] = '\0';

    auto *rows = static_cast<StatRow *>(std::calloc(kRows, sizeof(StatRow)));
    if (rows == nullptr) return -1;
    Freer free_rows{rows};

    std::size_t nrows = 0;
    char line[kListLineSize];
    {
        File list(path, "r");
        if (!list) return -1;
        std::memset(line, 0, sizeof line);
        while (nrows < kRows && std::fgets(line, sizeof line, list.get()) != nullptr) {
            std::sscanf(line, "%319s", rows[nrows].text);
            ++nrows;
        }
    }

    {
        qvs::Pipe ipset(cmd.c_str());
        if (ipset) {
            KeyTable keys;
            while (std::fgets(line, sizeof line, ipset.get()) != nullptr) {
                char key[kKeySize];
                std::memset(key, 0, sizeof key);
                int packets = 0;
                if (type == kTypeDomain)
                    scan_comment_line(line, key, &packets);
                else
                    scan_member_line(line, key, &packets);
                if (packets == 0 || key[0] == '\0' || nrows == 0) continue;
                if (!keys.add(key, std::strlen(key), static_cast<std::uint32_t>(packets))) return -1;
            }
            if (!keys.empty()) count_rows(rows, nrows, keys);
        }
    }

    if (nrows == 0) return 0;
    std::size_t used = 0;
    char piece[kRowText + 16];
    for (std::size_t r = 0; r < nrows; ++r) {
        std::memset(piece, 0, sizeof piece);
        int plen = std::snprintf(piece, sizeof piece, "%s%s@%d", r == 0 ? "" : "%", rows[r].text, rows[r].count);
        if (plen < 0 || used + static_cast<std::size_t>(plen) >= static_cast<std::size_t>(size)) break;
        std::memcpy(out + used, piece, static_cast<std::size_t>(plen) + 1);
        used += static_cast<std::size_t>(plen);
    }
    return 0;
}

unsigned int qvvpn_get_pkgCount(int n) {
    char name[kCmdSize];
    std::memset(name, 0, sizeof name);
    std::snprintf(name, sizeof name, "iptables -t mangle -nvL %s%d  2>/dev/null", kChainPrefix, n);
    // The listing command is opened as a file name, not run.
    File f(name, "r");
    if (!f) return 0;
    char line[kListLineSize];
    std::memset(line, 0, sizeof line);
    unsigned int sum = 0;
    int number = 0;
    while (std::fgets(line, sizeof line, f.get()) != nullptr) {
        if (++number <= 2) continue;
        int packets = 0;
        if (std::sscanf(line, "%d", &packets) == 1) sum += static_cast<unsigned int>(packets);
    }
    return sum;
}

}  // extern "C"
