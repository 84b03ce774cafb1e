// SPDX-License-Identifier: MIT
// Application route lists: for every rule index three list files (IP,
// domain, MAC) under "/userconfig/config/approute", one entry per line, and
// the route module fed through "/proc/approute/rule" with ADD_DATA, DEL_DATA
// and CLR_DATA lines. The files are the authority; approute_reload_route
// replays them into the module after a restart.
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "core/comma_list.hpp"
#include "core/command.hpp"
#include "core/list_lock.hpp"
#include "core/list_text.hpp"
#include "core/log.hpp"
#include "steering/approute_common.hpp"
#include "steering/list_file.hpp"

namespace qvs::steering {
namespace {

constexpr char kRuleFile[] = "/proc/approute/rule";

// List types as callers number them; the module's number is one more.
constexpr unsigned kTypeIp = 0;
constexpr unsigned kTypeDomain = 1;
constexpr unsigned kTypeMac = 2;

constexpr int kernel_type(unsigned api_type) { return static_cast<int>(api_type) + 1; }

constexpr const char *file_prefix(unsigned api_type) {
    switch (api_type) {
        case kTypeIp: return "approute_ip";
        case kTypeDomain: return "approute_domain";
        case kTypeMac: return "approute_mac";
        default: return nullptr;
    }
}

using Path = CommandBuffer<128>;

// "%s/%s%d" of the list file; stays empty for an unknown type.
void list_path(Path &path, int n, unsigned api_type) {
    const char *prefix = file_prefix(api_type);
    if (prefix != nullptr)
        path.format("%s/%s%d", kAppRouteDir, prefix, n);
    else
        path.format("%s", "");
}

#define APPROUTE_ADD_LINE "echo ADD_DATA index:%d type:%d list:%.*s > %s"
#define APPROUTE_DEL_LINE "echo DEL_DATA index:%d type:%d list:%.*s > %s"
constexpr std::size_t kAddLineSize = 1024;
constexpr std::size_t kDelLineSize = 128;
// A MAC list goes out through a lower-cased copy of 577 bytes.
constexpr std::size_t kMacCopySize = 577;

// Characters of list text that fit one ADD_DATA (1024-byte) or DEL_DATA
// (128-byte) line of rule n and kernel type ktype.
int add_room(int n, int ktype) {
    return qvs::list_room(kAddLineSize, qvs::formatted_length(APPROUTE_ADD_LINE, n, ktype, 0, "", kRuleFile));
}
int del_room(int n, int ktype) {
    return qvs::list_room(kDelLineSize, qvs::formatted_length(APPROUTE_DEL_LINE, n, ktype, 0, "", kRuleFile));
}
// An ADD_DATA line made from the MAC list's copy also fits the copy.
int mac_copy_room(int n) {
    const int room = add_room(n, 3);
    return room < static_cast<int>(kMacCopySize) - 1 ? room : static_cast<int>(kMacCopySize) - 1;
}

void dash_to_colon(char *text) {
    for (char *p = text; *p != '\0'; ++p)
        if (*p == '-') *p = ':';
}

void run_add_line(int n, int ktype, const char *piece, int len) {
    qvs::CommandBuffer<kAddLineSize> cmd;
    cmd.format(APPROUTE_ADD_LINE, n, ktype, len, piece, kRuleFile);
    qv_do_cmd(cmd.c_str());
}

// ADD_DATA of one item or a comma-joined list that passed the gate: one
// line, or several whole lines when it does not fit one. For MACs '-'
// becomes ':' in place.
void approute_echo_add(const char *func, int n, int ktype, char *text) {
    if (ktype == 3) dash_to_colon(text);
    qvs::for_each_list_line(func, text, add_room(n, ktype),
                            [n, ktype](const char *piece, int len) { run_add_line(n, ktype, piece, len); });
}

// ADD_DATA of a MAC list through its lower-cased copy, one copy per line;
// '-' becomes ':' only when rewrite_dashes (the list variant, not set-all).
void approute_echo_add_mac_copy(const char *func, int n, const char *list, bool rewrite_dashes) {
    qvs::for_each_list_line(func, list, mac_copy_room(n), [n, rewrite_dashes](const char *piece, int len) {
        char copy[kMacCopySize] = {};
        std::snprintf(copy, sizeof copy, "%.*s", len, piece);
        str_tolower(copy);
        if (rewrite_dashes) dash_to_colon(copy);
        run_add_line(n, 3, copy, static_cast<int>(std::strlen(copy)));
    });
}

// DEL_DATA of a gated item or list (128-byte lines): an item too long for a
// line of its own is left out of the module (logged); the file is the
// authority and the next reload brings the module back in step.
void approute_echo_del(const char *func, int n, int ktype, const char *text) {
    qvs::for_each_list_line(func, text, del_room(n, ktype), [n, ktype](const char *piece, int len) {
        CommandBuffer<kDelLineSize> cmd;
        cmd.format(APPROUTE_DEL_LINE, n, ktype, len, piece, kRuleFile);
        qv_do_cmd(cmd.c_str());
    });
}

int approute_echo_clear(int n, int ktype) {
    CommandBuffer<128> cmd;
    cmd.format("echo CLR_DATA index:%d type:%d > %s", n, ktype, kRuleFile);
    qv_do_cmd(cmd.c_str());
    return 0;
}

// MAC lists are searched by case-blind prefix, the others by substring.
int search(const char *path, unsigned api_type, const char *needle) {
    ListText text;
    return text.load(path) ? text.find(needle, api_type == kTypeMac) : 0;
}

// The gates of the entry points. Single items keep refusing any line end
// (they are stored before they are sent); the list variants remove one
// trailing line end of the whole list, as their echo helpers do, and refuse
// any other. Added text must fit its lines item by item; a deleted item
// too long for a DEL_DATA line is still deleted from the file.
bool gate_add(const char *func, int n, unsigned api_type, char *text, qvs::TrailingLineEnd line_end) {
    return qvs::comma_list_gate(func, __LINE__, text, add_room(n, kernel_type(api_type)), qvs::LongItem::kRefuse,
                                line_end);
}
bool gate_add_list(const char *func, int n, unsigned api_type, char *list) {
    if (api_type != kTypeMac) return gate_add(func, n, api_type, list, qvs::TrailingLineEnd::kRemoved);
    return qvs::comma_list_gate(func, __LINE__, list, mac_copy_room(n), qvs::LongItem::kRefuse,
                                qvs::TrailingLineEnd::kRemoved);
}
bool gate_del(const char *func, int n, unsigned api_type, char *text, qvs::TrailingLineEnd line_end) {
    return qvs::comma_list_gate(func, __LINE__, text, del_room(n, kernel_type(api_type)), qvs::LongItem::kSkip,
                                line_end);
}

// Workers below take text that passed its gate.

int add_one(int n, unsigned api_type, char *item, const char *func) {
    if (dir_step(ListDir::kAppRoute, func) == DirStep::kFailed) return -1;
    Path path;
    list_path(path, n, api_type);
    int k = search(path.c_str(), api_type, item);
    if (k != 0) return k;
    if (append_list_line(func, path.c_str(), item) != 0) return -1;
    if (api_type == kTypeMac) str_tolower(item);
    approute_echo_add(func, n, kernel_type(api_type), item);
    return 0;
}

int del_one(int n, unsigned api_type, char *item, const char *func) {
    DirStep step = dir_step(ListDir::kAppRoute, func);
    if (step == DirStep::kFailed) return -1;
    if (step == DirStep::kCreated) return 0;
    Path path;
    list_path(path, n, api_type);
    int k = search(path.c_str(), api_type, item);
    if (k == 0) return 0;
    if (!delete_list_line(func, k, path.c_str())) return 0;
    if (api_type == kTypeMac) str_tolower(item);
    approute_echo_del(func, n, kernel_type(api_type), item);
    return 0;
}

int flush_one(int n, unsigned api_type, const char *func) {
    DirStep step = dir_step(ListDir::kAppRoute, func);
    if (step == DirStep::kFailed) return -1;
    if (step == DirStep::kCreated) return 0;
    Path path;
    list_path(path, n, api_type);
    if (write_list_file(func, path.c_str(), "") != 0) return -1;
    approute_echo_clear(n, kernel_type(api_type));
    return 0;
}

// The list variants edit the list's text in memory and write it back once
// at the end (one durable append or rewrite), so a power cut leaves the old
// or the new list; the commands go out in the same order as item by item.

// The domain replacement rule: an item found in a line replaces that line
// (which moves an equal entry to the end of the list). The inner delete
// and add work as approute_del_route_domain and approute_add_route_domain
// would, with their names in the log: the stored line (not caller text)
// passes the delete's gate, its line end removed; the item already passed
// the list's gate.
int replace_domain(int n, ListText &text, const Path &path, char *item) {
    constexpr char kDelFunc[] = "approute_del_route_domain";
    constexpr char kAddFunc[] = "approute_add_route_domain";
    const int ktype = kernel_type(kTypeDomain);
    int k = text.find(item);
    if (k == 0) return text.append_line(item) ? 0 : -1;
    char line[256] = {};
    if (!text.piece(k, line, sizeof line)) return 0;
    if (std::strcmp(line, item) == 0) return 0;
    if (gate_del(kDelFunc, n, kTypeDomain, line, qvs::TrailingLineEnd::kRemoved) &&
        dir_step(ListDir::kAppRoute, kDelFunc) == DirStep::kPresent) {
        const int kk = text.find(line);
        if (kk != 0) {
            if (text.remove_line(kk))
                approute_echo_del(kDelFunc, n, ktype, line);
            else
                QVS_LOG_AS(kDelFunc, qvs::kLogError, "delete line %d of %s failed.\n", kk, path.c_str());
        }
    }
    if (dir_step(ListDir::kAppRoute, kAddFunc) == DirStep::kFailed) return -1;
    if (text.find(item) != 0) return 0;
    if (!text.append_line(item)) return -1;
    approute_echo_add(kAddFunc, n, ktype, item);
    return 0;
}

int add_list(int n, unsigned api_type, char *list, const char *func) {
    if (dir_step(ListDir::kAppRoute, func) == DirStep::kFailed) return -1;
    Path path;
    list_path(path, n, api_type);
    if (api_type == kTypeMac)
        approute_echo_add_mac_copy(func, n, list, true);
    else
        approute_echo_add(func, n, kernel_type(api_type), list);
    // As before, the module hears of the list even when the file fails.
    ListText text;
    if (!text.load(path.c_str())) {
        QVS_LOG_AS(func, qvs::kLogError, "open file %s failed.\n", path.c_str());
        return -1;
    }
    int result = 0;
    char *save = nullptr;
    for (char *item = ::strtok_r(list, ",", &save); item != nullptr; item = ::strtok_r(nullptr, ",", &save)) {
        if (api_type == kTypeDomain) {
            if (replace_domain(n, text, path, item) != 0) {
                result = -1;
                break;
            }
            continue;
        }
        if (text.find(item, api_type == kTypeMac) != 0) continue;
        if (!text.append_line(item)) {
            result = -1;
            break;
        }
    }
    // What was added before a failure is still written, as item by item.
    if (!text.write_back(path.c_str())) {
        QVS_LOG_AS(func, qvs::kLogError, "open file %s failed.\n", path.c_str());
        return -1;
    }
    return result;
}

int del_list(int n, unsigned api_type, char *list, const char *func) {
    DirStep step = dir_step(ListDir::kAppRoute, func);
    if (step == DirStep::kFailed) return -1;
    if (step == DirStep::kCreated) return 0;
    Path path;
    list_path(path, n, api_type);
    if (api_type == kTypeMac) str_tolower(list);
    approute_echo_del(func, n, kernel_type(api_type), list);
    ListText text;
    if (!text.load(path.c_str())) return 0;
    int first = 0;  // the first line removed: named when the rewrite fails
    char *save = nullptr;
    for (char *item = ::strtok_r(list, ",", &save); item != nullptr; item = ::strtok_r(nullptr, ",", &save)) {
        int k = text.find(item, api_type == kTypeMac);
        if (k == 0) continue;
        if (!text.remove_line(k))
            QVS_LOG_AS(func, qvs::kLogError, "delete line %d of %s failed.\n", k, path.c_str());
        else if (first == 0)
            first = k;
    }
    if (!text.write_back(path.c_str()))
        QVS_LOG_AS(func, qvs::kLogError, "delete line %d of %s failed.\n", first, path.c_str());
    return 0;
}

// The rule index's three lists and the module's copy: one writer at a time,
// held for the whole call (fail is the function's failure result).
#define LOCK_RULE(n, fail) \
    qvs::ListLock rule_lock(__func__, "approute", (n)); \
    if (!rule_lock) return (fail)

}  // namespace
}  // namespace qvs::steering

using namespace qvs::steering;
using qvs::TrailingLineEnd;

extern "C" {

int approute_add_route_ip(int n, char *ip) {
    if (!gate_add(__func__, n, kTypeIp, ip, TrailingLineEnd::kRefused)) return -1;
    LOCK_RULE(n, -1);
    return add_one(n, kTypeIp, ip, __func__);
}

int approute_add_route_domain(int n, char *domain) {
    if (!gate_add(__func__, n, kTypeDomain, domain, TrailingLineEnd::kRefused)) return -1;
    LOCK_RULE(n, -1);
    return add_one(n, kTypeDomain, domain, __func__);
}

int approute_add_route_mac(int n, char *mac) {
    if (!gate_add(__func__, n, kTypeMac, mac, TrailingLineEnd::kRefused)) return -1;
    LOCK_RULE(n, -1);
    return add_one(n, kTypeMac, mac, __func__);
}

int approute_del_route_ip(int n, char *ip) {
    if (!gate_del(__func__, n, kTypeIp, ip, TrailingLineEnd::kRefused)) return -1;
    LOCK_RULE(n, -1);
    return del_one(n, kTypeIp, ip, __func__);
}

int approute_del_route_domain(int n, char *domain) {
    if (!gate_del(__func__, n, kTypeDomain, domain, TrailingLineEnd::kRefused)) return -1;
    LOCK_RULE(n, -1);
    return del_one(n, kTypeDomain, domain, __func__);
}

int approute_del_route_mac(int n, char *mac) {
    if (!gate_del(__func__, n, kTypeMac, mac, TrailingLineEnd::kRefused)) return -1;
    LOCK_RULE(n, -1);
    return del_one(n, kTypeMac, mac, __func__);
}

int approute_flush_route_ip(int n) {
    LOCK_RULE(n, -1);
    return flush_one(n, kTypeIp, __func__);
}

int approute_flush_route_domain(int n) {
    LOCK_RULE(n, -1);
    return flush_one(n, kTypeDomain, __func__);
}

int approute_flush_route_mac(int n) {
    LOCK_RULE(n, -1);
    return flush_one(n, kTypeMac, __func__);
}

int approute_add_route_iplist(int n, char *list) {
    if (!gate_add_list(__func__, n, kTypeIp, list)) return -1;
    LOCK_RULE(n, -1);
    return add_list(n, kTypeIp, list, __func__);
}

int approute_add_route_domainlist(int n, char *list) {
    if (!gate_add_list(__func__, n, kTypeDomain, list)) return -1;
    LOCK_RULE(n, -1);
    return add_list(n, kTypeDomain, list, __func__);
}

int approute_add_route_maclist(int n, char *list) {
    if (!gate_add_list(__func__, n, kTypeMac, list)) return -1;
    LOCK_RULE(n, -1);
    return add_list(n, kTypeMac, list, __func__);
}

int approute_del_route_iplist(int n, char *list) {
    if (!gate_del(__func__, n, kTypeIp, list, TrailingLineEnd::kRemoved)) return -1;
    LOCK_RULE(n, -1);
    return del_list(n, kTypeIp, list, __func__);
}

int approute_del_route_domainlist(int n, char *list) {
    if (!gate_del(__func__, n, kTypeDomain, list, TrailingLineEnd::kRemoved)) return -1;
    LOCK_RULE(n, -1);
    return del_list(n, kTypeDomain, list, __func__);
}

int approute_del_route_maclist(int n, char *list) {
    if (!gate_del(__func__, n, kTypeMac, list, TrailingLineEnd::kRemoved)) return -1;
    LOCK_RULE(n, -1);
    return del_list(n, kTypeMac, list, __func__);
}

int approute_add_route_list(int n, unsigned int type, char *list) {
    LOCK_RULE(n, 0);
    switch (type) {
        case kTypeIp: approute_add_route_iplist(n, list); break;
        case kTypeDomain: approute_add_route_domainlist(n, list); break;
        case kTypeMac: approute_add_route_maclist(n, list); break;
        default: break;
    }
    return 0;
}

int approute_del_route_list(int n, unsigned int type, char *list) {
    LOCK_RULE(n, 0);
    switch (type) {
        case kTypeIp: approute_del_route_iplist(n, list); break;
        case kTypeDomain: approute_del_route_domainlist(n, list); break;
        case kTypeMac: approute_del_route_maclist(n, list); break;
        default: break;
    }
    return 0;
}

int approute_set_route_all(int n, unsigned int type, char *list) {
    // The whole list goes on command lines as it is: no line end allowed.
    // An unknown type has no lines to fit (it is refused below).
    const bool known = file_prefix(type) != nullptr;
    const int room = type == kTypeMac ? mac_copy_room(n) : known ? add_room(n, kernel_type(type)) : 0;
    if (!qvs::comma_list_gate(__func__, __LINE__, list, room, known ? qvs::LongItem::kRefuse : qvs::LongItem::kSkip,
                              TrailingLineEnd::kRefused))
        return -1;
    LOCK_RULE(n, -1);
    if (dir_step(ListDir::kAppRoute, __func__) == DirStep::kFailed) return -1;
    if (!known) return -1;
    const int ktype = kernel_type(type);
    Path path;
    list_path(path, n, type);
    qvs::CommandBuffer<kAddLineSize> cmd;
    cmd.format("echo CLR_DATA index:%d type:%d > %s", n, ktype, kRuleFile);
    qv_do_cmd(cmd.c_str());
    if (type == kTypeMac)
        approute_echo_add_mac_copy(__func__, n, list, false);
    else
        qvs::for_each_list_line(__func__, list, room,
                                [n, ktype](const char *piece, int len) { run_add_line(n, ktype, piece, len); });
    FileRewrite f(path.c_str());
    if (!f) return -1;
    char *save = nullptr;
    for (char *item = ::strtok_r(list, ",", &save); item != nullptr; item = ::strtok_r(nullptr, ",", &save))
        std::fprintf(f.get(), "%s\n", item);
    return commit_list_file(nullptr, f, path.c_str());  // quietly, as the open
}

int approute_reload_route(int n) {
    LOCK_RULE(n, -1);
    DirStep step = dir_step(ListDir::kAppRoute, __func__);
    if (step == DirStep::kFailed) return -1;
    if (step == DirStep::kCreated) return 0;
    for (unsigned type = kTypeIp; type <= kTypeMac; ++type) {
        const int ktype = kernel_type(type);
        approute_echo_clear(n, ktype);
        Path path;
        list_path(path, n, type);
        qvs::File f(path.c_str(), "r");
        if (!f) continue;
        char line[512];
        while (std::fgets(line, sizeof line, f.get()) != nullptr) {
            if (type == kTypeMac) str_tolower(line);
            // A stored line is not caller text, but a line that could change
            // the command is skipped all the same (logged).
            if (!gate_add(__func__, n, type, line, TrailingLineEnd::kRemoved)) continue;
            approute_echo_add(__func__, n, ktype, line);
        }
    }
    return 0;
}

int approute_get_route_all(int n, unsigned int type, char *out, int size) {
    LOCK_RULE(n, -1);
    DirStep step = dir_step(ListDir::kAppRoute, __func__);
    if (step == DirStep::kFailed) return -1;
    if (step == DirStep::kCreated) return 0;
    if (file_prefix(type) == nullptr) return -1;
    if (out == nullptr || size < 1) return -1;
    Path path;
    list_path(path, n, type);
    // Each line is cut at its first blank (space or tab) and at its line end.
    return join_list_lines(path.c_str(), ',', kListingCut, out, size);
}

int approute_get_route_count(int n, int type) {
    LOCK_RULE(n, 0);
    if (::access(kAppRouteDir, W_OK) != 0) return 0;
    Path path;
    list_path(path, n, type >= 0 ? static_cast<unsigned>(type) : 3u);
    qvs::File f(path.c_str(), "r");
    if (!f) return 0;
    int count = 0;
    char line[1024];
    while (std::fgets(line, sizeof line, f.get()) != nullptr) ++count;
    return count;
}

}  // extern "C"
