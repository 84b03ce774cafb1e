// Application route lists: for every rule index three list files (IP,
// domain, MAC) under "/userconfig/config/approute", one entry per line, and
// the route module fed through "/proc/approute/rule" with ADD_DATA, DEL_DATA
// and CLR_DATA lines. The files are the authority; approute_reload_route
// replays them into the module after a restart.
#include <strings.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

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

void strip_line_end(char *text) {
    std::size_t len = std::strlen(text);
    if (len > 0 && text[len - 1] == '\n') text[len - 1] = '\0';
}

#define APPROUTE_ADD_LINE "echo ADD_DATA index:%d type:%d list:%.*s > %s"
#define APPROUTE_DEL_LINE "echo DEL_DATA index:%d type:%d list:%.*s > %s"
constexpr std::size_t kAddLineSize = 1024;
constexpr std::size_t kDelLineSize = 128;

// Length of text without one trailing line end (removed before it is sent).
int sent_length(const char *text) {
    std::size_t len = std::strlen(text);
    if (len > 0 && text[len - 1] == '\n') --len;
    return static_cast<int>(len);
}

// True, after a level-1 line under func, when the ADD_DATA (1024 bytes) or
// DEL_DATA (128 bytes) line of text would not fit its buffer: such a line
// is never run.
bool add_too_long(const char *func, int n, int ktype, const char *text) {
    const int len = qvs::formatted_length(APPROUTE_ADD_LINE, n, ktype, sent_length(text), text, kRuleFile);
    return qvs::refuse_long_text(func, __LINE__, text, len, kAddLineSize);
}
bool del_too_long(const char *func, int n, int ktype, const char *text) {
    const int len = qvs::formatted_length(APPROUTE_DEL_LINE, n, ktype, sent_length(text), text, kRuleFile);
    return qvs::refuse_long_text(func, __LINE__, text, len, kDelLineSize);
}

// ADD_DATA of one item or a comma-joined list (1024-byte command line).
// Text that would change the line or not fit it is not sent (-1).
int approute_echo_add(const char *func, int n, int ktype, char *text) {
    strip_line_end(text);
    if (ktype == 3)
        for (char *p = text; *p != '\0'; ++p)
            if (*p == '-') *p = ':';
    if (qvs::refuse_unsafe_text(func, __LINE__, text) || add_too_long(func, n, ktype, text)) return -1;
    qvs::CommandBuffer<kAddLineSize> cmd;
    cmd.format(APPROUTE_ADD_LINE, n, ktype, sent_length(text), text, kRuleFile);
    qv_do_cmd(cmd.c_str());
    return 0;
}

// DEL_DATA (128-byte command line).
int approute_echo_del(const char *func, int n, int ktype, char *text) {
    strip_line_end(text);
    if (qvs::refuse_unsafe_text(func, __LINE__, text) || del_too_long(func, n, ktype, text)) return -1;
    CommandBuffer<kDelLineSize> cmd;
    cmd.format(APPROUTE_DEL_LINE, n, ktype, sent_length(text), text, kRuleFile);
    qv_do_cmd(cmd.c_str());
    return 0;
}

int approute_echo_clear(int n, int ktype) {
    CommandBuffer<128> cmd;
    cmd.format("echo CLR_DATA index:%d type:%d > %s", n, ktype, kRuleFile);
    qv_do_cmd(cmd.c_str());
    return 0;
}

// 1-based number of the first line beginning with needle (case ignored over
// the needle's length); 0 when none or the file cannot be opened.
int find_line_prefix_nocase(const char *path, const char *needle) {
    File f(path, "r");
    if (!f) return 0;
    const std::size_t len = std::strlen(needle);
    char line[1024];
    int number = 0;
    while (std::fgets(line, sizeof line, f.get()) != nullptr) {
        ++number;
        if (::strncasecmp(line, needle, len) == 0) return number;
    }
    return 0;
}

// MAC lists are searched by case-blind prefix, the others by substring.
int search(const char *path, unsigned api_type, const char *needle) {
    return api_type == kTypeMac ? find_line_prefix_nocase(path, needle) : find_line_in_file(path, needle);
}

int add_one(int n, unsigned api_type, char *item, const char *func) {
    if (add_too_long(func, n, kernel_type(api_type), item)) return -1;
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
    if (del_too_long(func, n, kernel_type(api_type), item)) return -1;
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
// (which moves an equal entry to the end of the list). The delete and add
// it makes are those of approute_del_route_domain and
// approute_add_route_domain, with their names in the log.
int replace_domain(int n, ListText &text, const Path &path, char *item) {
    constexpr char kDelFunc[] = "approute_del_route_domain";
    constexpr char kAddFunc[] = "approute_add_route_domain";
    int k = text.find(item);
    if (k == 0) return text.append_line(item) ? 0 : -1;
    char line[256] = {};
    if (!text.piece(k, line, sizeof line)) return 0;
    if (std::strcmp(line, item) == 0) return 0;
    const int ktype = kernel_type(kTypeDomain);
    if (!del_too_long(kDelFunc, n, ktype, line) && dir_step(ListDir::kAppRoute, kDelFunc) == DirStep::kPresent) {
        const int kk = text.find(line);
        if (kk != 0) {
            if (text.remove_line(kk))
                approute_echo_del(kDelFunc, n, ktype, line);
            else
                QVS_LOG_AS(kDelFunc, qvs::kLogError, "delete line %d of %s failed.\n", kk, path.c_str());
        }
    }
    if (add_too_long(kAddFunc, n, ktype, item)) return -1;
    if (dir_step(ListDir::kAppRoute, kAddFunc) == DirStep::kFailed) return -1;
    if (text.find(item) != 0) return 0;
    if (!text.append_line(item)) return -1;
    approute_echo_add(kAddFunc, n, ktype, item);
    return 0;
}

// Writes the edited list back; "open file %s failed.\n" when that fails.
int write_back(const char *func, const ListText &text, const Path &path) {
    if (text.write_back(path.c_str())) return 0;
    QVS_LOG_AS(func, qvs::kLogError, "open file %s failed.\n", path.c_str());
    return -1;
}

int add_list(int n, unsigned api_type, char *list, const char *func) {
    // The MAC list goes out as its 577-byte copy, which always fits.
    if (api_type != kTypeMac && add_too_long(func, n, kernel_type(api_type), list)) return -1;
    if (dir_step(ListDir::kAppRoute, func) == DirStep::kFailed) return -1;
    Path path;
    list_path(path, n, api_type);
    if (api_type == kTypeMac) {
        char copy[577] = {};
        std::snprintf(copy, sizeof copy, "%s", list);
        str_tolower(copy);
        approute_echo_add(func, n, 3, copy);
    } else {
        approute_echo_add(func, n, kernel_type(api_type), list);
    }
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
    if (write_back(func, text, path) != 0) return -1;
    return result;
}

int del_list(int n, unsigned api_type, char *list, const char *func) {
    if (del_too_long(func, n, kernel_type(api_type), list)) return -1;
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

// Caller text: null is refused, and so is text that could change a command line.
#define APPROUTE_CHECK_TEXT(text) \
    do { \
        if ((text) == nullptr || QVS_REFUSE_UNSAFE(text)) return -1; \
    } while (0)

// The rule index's three lists and the module's copy: one writer at a time,
// held for the whole call (fail is the function's failure result).
#define LOCK_RULE(n, fail) \
    qvs::ListLock rule_lock(__func__, "approute", (n)); \
    if (!rule_lock) return (fail)

}  // namespace
}  // namespace qvs::steering

using namespace qvs::steering;

extern "C" {

int approute_add_route_ip(int n, char *ip) {
    APPROUTE_CHECK_TEXT(ip);
    LOCK_RULE(n, -1);
    return add_one(n, kTypeIp, ip, __func__);
}

int approute_add_route_domain(int n, char *domain) {
    APPROUTE_CHECK_TEXT(domain);
    LOCK_RULE(n, -1);
    return add_one(n, kTypeDomain, domain, __func__);
}

int approute_add_route_mac(int n, char *mac) {
    APPROUTE_CHECK_TEXT(mac);
    LOCK_RULE(n, -1);
    return add_one(n, kTypeMac, mac, __func__);
}

int approute_del_route_ip(int n, char *ip) {
    APPROUTE_CHECK_TEXT(ip);
    LOCK_RULE(n, -1);
    return del_one(n, kTypeIp, ip, __func__);
}

int approute_del_route_domain(int n, char *domain) {
    APPROUTE_CHECK_TEXT(domain);
    LOCK_RULE(n, -1);
    return del_one(n, kTypeDomain, domain, __func__);
}

int approute_del_route_mac(int n, char *mac) {
    APPROUTE_CHECK_TEXT(mac);
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
    APPROUTE_CHECK_TEXT(list);
    LOCK_RULE(n, -1);
    return add_list(n, kTypeIp, list, __func__);
}

int approute_add_route_domainlist(int n, char *list) {
    APPROUTE_CHECK_TEXT(list);
    LOCK_RULE(n, -1);
    return add_list(n, kTypeDomain, list, __func__);
}

int approute_add_route_maclist(int n, char *list) {
    APPROUTE_CHECK_TEXT(list);
    LOCK_RULE(n, -1);
    return add_list(n, kTypeMac, list, __func__);
}

int approute_del_route_iplist(int n, char *list) {
    APPROUTE_CHECK_TEXT(list);
    LOCK_RULE(n, -1);
    return del_list(n, kTypeIp, list, __func__);
}

int approute_del_route_domainlist(int n, char *list) {
    APPROUTE_CHECK_TEXT(list);
    LOCK_RULE(n, -1);
    return del_list(n, kTypeDomain, list, __func__);
}

int approute_del_route_maclist(int n, char *list) {
    APPROUTE_CHECK_TEXT(list);
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
    // The whole list goes on the command line as it is: no line end allowed.
    if (list == nullptr || QVS_REFUSE_UNSAFE(list)) return -1;
    const int ktype = kernel_type(type);
    // The MAC list goes out as its 577-byte copy, which always fits.
    if (file_prefix(type) != nullptr && type != kTypeMac && add_too_long(__func__, n, ktype, list)) return -1;
    LOCK_RULE(n, -1);
    if (dir_step(ListDir::kAppRoute, __func__) == DirStep::kFailed) return -1;
    if (file_prefix(type) == nullptr) return -1;
    Path path;
    list_path(path, n, type);
    qvs::CommandBuffer<kAddLineSize> cmd;
    cmd.format("echo CLR_DATA index:%d type:%d > %s", n, ktype, kRuleFile);
    qv_do_cmd(cmd.c_str());
    if (type == kTypeMac) {
        char copy[577] = {};
        std::snprintf(copy, sizeof copy, "%s", list);
        str_tolower(copy);
        cmd.format("echo ADD_DATA index:%d type:%d list:%s > %s", n, ktype, copy, kRuleFile);
    } else {
        cmd.format("echo ADD_DATA index:%d type:%d list:%s > %s", n, ktype, list, kRuleFile);
    }
    qv_do_cmd(cmd.c_str());
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
            // A line that would not fit its command is skipped (logged).
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
    // Each line is cut at its first space or tab and at its line end.
    return join_list_lines(path.c_str(), ',', " \t\n", out, size);
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
