// SPDX-License-Identifier: MIT
// Application filter lists: per rule index one file per list type under
// "/userconfig/config/appfilter", each a single comma-joined line that is
// edited in memory and written back whole. Every change re-sends the whole
// list to the filter module through "/proc/appfilter/rule": a clear, then
// one add per item. There is no delete command for the module.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/comma_list.hpp"
#include "core/command.hpp"
#include "core/list_lock.hpp"
#include "core/log.hpp"
#include "steering/approute_common.hpp"
#include "steering/list_file.hpp"

namespace qvs::steering {
namespace {

constexpr char kRuleFile[] = "/proc/appfilter/rule";
// The one-line list: at most 81919 characters and the terminator.
constexpr std::size_t kListSize = 81920;
constexpr int kListMaxChars = 81918;

constexpr unsigned kTypeIp = 0;
constexpr unsigned kTypeDomain = 1;
constexpr unsigned kTypeMac = 2;

using Path = CommandBuffer<128>;

// "%s/%s%d" of the list file; stays empty for an unknown type.
void list_path(Path &path, int n, unsigned type) {
    const char *prefix = type == kTypeIp       ? "appfilter_ip"
                         : type == kTypeDomain ? "appfilter_domain"
                         : type == kTypeMac    ? "appfilter_mac"
                                               : nullptr;
    if (prefix != nullptr)
        path.format("%s/%s%d", kAppFilterDir, prefix, n);
    else
        path.format("%s", "");
}

// The list buffer lives on the heap (callers run on small stacks).
class ListBuffer {
public:
    ListBuffer() : p_(static_cast<char *>(std::calloc(kListSize, 1))) {}
    ~ListBuffer() { std::free(p_); }
    ListBuffer(const ListBuffer &) = delete;
    ListBuffer &operator=(const ListBuffer &) = delete;
    explicit operator bool() const { return p_ != nullptr; }
    char *get() const { return p_; }

private:
    char *p_;
};

// Appends ",item" (or "item" to an empty list) unless the list already
// contains the item as a substring or would grow past its bound.
int list_append_item(char *list, const char *item) {
    if (std::strstr(list, item) != nullptr) return 0;
    int list_len = static_cast<int>(std::strlen(list));
    const int item_len = static_cast<int>(std::strlen(item));
    if (list_len + item_len > kListMaxChars) return 0;
    if (list_len > 0) list[list_len++] = ',';
    std::memcpy(list + list_len, item, static_cast<std::size_t>(item_len));
    list[list_len + item_len] = '\0';
    return 0;
}

// Removes the first occurrence of item (a substring) together with the
// separating comma: the one before it when it ends the text, otherwise the
// one character after it.
int list_remove_item(char *list, const char *item) {
    char *p = std::strstr(list, item);
    if (p == nullptr) return 0;
    const std::size_t len = std::strlen(item);
    if (p[len] == '\0') {
        if (p == list)
            list[0] = '\0';
        else
            p[-1] = '\0';
    } else {
        char *rest = p + len + 1;
        std::memmove(p, rest, std::strlen(rest) + 1);
    }
    return 0;
}

// Reads the first line of an opened list file into the buffer.
void read_first_line(File &f, char *list) {
    if (std::fgets(list, static_cast<int>(kListSize), f.get()) == nullptr) list[0] = '\0';
    f.close();
}

int edit_list(int n, unsigned type, char *items, bool add, const char *func) {
    if (dir_step(ListDir::kAppFilter, func) == DirStep::kFailed) return -1;
    Path path;
    list_path(path, n, type);
    ListBuffer list;
    if (!list) return -1;
    {
        File in(path.c_str(), "r");
        if (in)
            read_first_line(in, list.get());
        else if (!add)
            return 0;  // nothing stored, nothing to remove
    }
    char *save = nullptr;
    for (char *item = ::strtok_r(items, ",", &save); item != nullptr; item = ::strtok_r(nullptr, ",", &save)) {
        if (add)
            list_append_item(list.get(), item);
        else
            list_remove_item(list.get(), item);
    }
    if (write_list_file(func, path.c_str(), list.get()) != 0) return -1;
    update_data_list_to_appfilter_module(n, type);
    return 0;
}

int flush_list(int n, unsigned type, const char *func) {
    if (dir_step(ListDir::kAppFilter, func) == DirStep::kFailed) return -1;
    Path path;
    list_path(path, n, type);
    if (write_list_file(func, path.c_str(), "") != 0) return -1;
    update_data_list_to_appfilter_module(n, type);
    return 0;
}

#define APPFILTER_ADD_LINE "echo ADD_DATA index:%d type:%d list:%.*s > %s"
constexpr std::size_t kCmdSize = 128;

// Characters of one item that fit its ADD_DATA line (128 bytes): the module
// takes one item per line.
int item_room(int n, unsigned type) {
    return qvs::list_room(kCmdSize, qvs::formatted_length(APPFILTER_ADD_LINE, n, static_cast<int>(type) + 1, 0, "",
                                                          kRuleFile));
}

// The gates of the entry points: no line end anywhere; every added item
// must fit an ADD_DATA line of its own (a delete sends no item lines: the
// list left is replayed from the file).
bool gate_added(const char *func, int n, unsigned type, char *list) {
    return qvs::comma_list_gate(func, __LINE__, list, item_room(n, type), qvs::LongItem::kRefuse,
                                qvs::TrailingLineEnd::kRefused);
}
bool gate_deleted(const char *func, char *list) {
    return qvs::comma_list_gate(func, __LINE__, list, 0, qvs::LongItem::kSkip, qvs::TrailingLineEnd::kRefused);
}

// The rule index's three lists and the module's copy: one writer at a time,
// held for the whole call.
#define LOCK_RULE(n) \
    qvs::ListLock rule_lock(__func__, "appfilter", (n)); \
    if (!rule_lock) return -1

}  // namespace
}  // namespace qvs::steering

using namespace qvs::steering;

extern "C" int update_data_list_to_appfilter_module(int n, unsigned int type) {
    LOCK_RULE(n);
    Path path;
    list_path(path, n, type);
    qvs::File f(path.c_str(), "r");
    if (!f) {
        QVS_LOG(qvs::kLogError, "open file %s failed\n", path.c_str());
        return -1;
    }
    ListBuffer list;
    if (!list) return -1;
    read_first_line(f, list.get());
    const int mtype = static_cast<int>(type) + 1;
    qvs::CommandBuffer<kCmdSize> cmd;
    cmd.format("echo CLR_DATA index:%d type:%d > %s", n, mtype, kRuleFile);
    libqv_dosystem(cmd.c_str());
    if (list.get()[0] == '\0') return 0;
    char *save = nullptr;
    const int room = item_room(n, type);
    for (char *item = ::strtok_r(list.get(), ",", &save); item != nullptr; item = ::strtok_r(nullptr, ",", &save)) {
        // The file is not caller text, but it must not run commands either,
        // nor a line cut short: such an item is skipped (logged).
        if (!qvs::comma_list_gate(__func__, __LINE__, item, room, qvs::LongItem::kSkip,
                                  qvs::TrailingLineEnd::kRefused))
            continue;
        qvs::for_each_list_line(__func__, item, room, [&cmd, n, mtype](const char *piece, int len) {
            cmd.format(APPFILTER_ADD_LINE, n, mtype, len, piece, kRuleFile);
            libqv_dosystem(cmd.c_str());
        });
    }
    return 0;
}

extern "C" {

int appfilter_add_route_iplist(int n, char *list) {
    if (!gate_added(__func__, n, kTypeIp, list)) return -1;
    LOCK_RULE(n);
    return edit_list(n, kTypeIp, list, true, __func__);
}

int appfilter_add_route_domainlist(int n, char *list) {
    if (!gate_added(__func__, n, kTypeDomain, list)) return -1;
    LOCK_RULE(n);
    return edit_list(n, kTypeDomain, list, true, __func__);
}

int appfilter_add_route_maclist(int n, char *list) {
    if (!gate_added(__func__, n, kTypeMac, list)) return -1;
    LOCK_RULE(n);
    return edit_list(n, kTypeMac, list, true, __func__);
}

int appfilter_del_route_iplist(int n, char *list) {
    if (!gate_deleted(__func__, list)) return -1;
    LOCK_RULE(n);
    return edit_list(n, kTypeIp, list, false, __func__);
}

int appfilter_del_route_domainlist(int n, char *list) {
    if (!gate_deleted(__func__, list)) return -1;
    LOCK_RULE(n);
    return edit_list(n, kTypeDomain, list, false, __func__);
}

int appfilter_del_route_maclist(int n, char *list) {
    if (!gate_deleted(__func__, list)) return -1;
    LOCK_RULE(n);
    return edit_list(n, kTypeMac, list, false, __func__);
}

int appfilter_flush_route_ip(int n) {
    LOCK_RULE(n);
    return flush_list(n, kTypeIp, __func__);
}

int appfilter_flush_route_domain(int n) {
    LOCK_RULE(n);
    return flush_list(n, kTypeDomain, __func__);
}

int appfilter_flush_route_mac(int n) {
    LOCK_RULE(n);
    return flush_list(n, kTypeMac, __func__);
}

int appfilter_add_route_list(int n, unsigned int type, char *list) {
    LOCK_RULE(n);
    switch (type) {
        case kTypeIp: return appfilter_add_route_iplist(n, list);
        case kTypeDomain: return appfilter_add_route_domainlist(n, list);
        case kTypeMac: return appfilter_add_route_maclist(n, list);
        default: return 0;
    }
}

int appfilter_del_route_list(int n, unsigned int type, char *list) {
    LOCK_RULE(n);
    switch (type) {
        case kTypeIp: return appfilter_del_route_iplist(n, list);
        case kTypeDomain: return appfilter_del_route_domainlist(n, list);
        case kTypeMac: return appfilter_del_route_maclist(n, list);
        default: return 0;
    }
}

int appfilter_flush_route_list(int n, unsigned int type) {
    LOCK_RULE(n);
    switch (type) {
        case kTypeIp: return appfilter_flush_route_ip(n);
        case kTypeDomain: return appfilter_flush_route_domain(n);
        case kTypeMac: return appfilter_flush_route_mac(n);
        default: return 0;
    }
}

int appfilter_get_route_list(int n, int type, char *out, int size) {
    LOCK_RULE(n);
    if (::access(kAppFilterDir, W_OK) != 0) return -1;
    if (out == nullptr || size < 1) return -1;
    Path path;
    list_path(path, n, type >= 0 ? static_cast<unsigned>(type) : 3u);
    qvs::File f(path.c_str(), "r");
    if (!f) return 0;
    // An empty list file leaves the caller's buffer as it was.
    if (std::fgets(out, size, f.get()) == nullptr) return 0;
    return 0;
}

}  // extern "C"
