// Application filter lists: per rule index one file per list type under
// "/userconfig/config/appfilter", each a single comma-joined line that is
// edited in memory and written back whole. Every change re-sends the whole
// list to the filter module through "/proc/appfilter/rule": a clear, then
// one add per item. There is no delete command for the module.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/command.hpp"
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

// Length of the ADD_DATA line of one item (len characters of item).
int add_line_length(int n, unsigned type, const char *item, int len) {
    return qvs::formatted_length(APPFILTER_ADD_LINE, n, static_cast<int>(type) + 1, len, item, kRuleFile);
}

// True, after a level-1 line under func, when an item of the caller's
// comma-joined list would make its ADD_DATA line longer than the 128-byte
// command buffer (such a line is never run). The list is not changed.
bool any_item_too_long(const char *func, int n, unsigned type, const char *list) {
    const char *p = list;
    while (*p != '\0') {
        const std::size_t len = std::strcspn(p, ",");
        if (len > 0 &&
            qvs::refuse_long_text(func, __LINE__, list, add_line_length(n, type, p, static_cast<int>(len)), kCmdSize))
            return true;
        p += len;
        if (*p == ',') ++p;
    }
    return false;
}

// Caller text: null is refused, and so is text that could change a command line.
#define APPFILTER_CHECK_TEXT(text) \
    do { \
        if ((text) == nullptr || QVS_REFUSE_UNSAFE(text)) return -1; \
    } while (0)
// Added items must also fit their ADD_DATA line.
#define APPFILTER_CHECK_ADDED(n, type, text) \
    do { \
        APPFILTER_CHECK_TEXT(text); \
        if (any_item_too_long(__func__, (n), (type), (text))) return -1; \
    } while (0)

}  // namespace
}  // namespace qvs::steering

using namespace qvs::steering;

extern "C" int update_data_list_to_appfilter_module(int n, unsigned int type) {
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
    for (char *item = ::strtok_r(list.get(), ",", &save); item != nullptr; item = ::strtok_r(nullptr, ",", &save)) {
        // The file is not caller text, but it must not run commands either,
        // nor a line cut short: such an item is skipped (logged).
        const int len = static_cast<int>(std::strlen(item));
        if (QVS_REFUSE_UNSAFE(item) ||
            qvs::refuse_long_text(__func__, __LINE__, item, add_line_length(n, type, item, len), kCmdSize))
            continue;
        cmd.format(APPFILTER_ADD_LINE, n, mtype, len, item, kRuleFile);
        libqv_dosystem(cmd.c_str());
    }
    return 0;
}

extern "C" {

int appfilter_add_route_iplist(int n, char *list) {
    APPFILTER_CHECK_ADDED(n, kTypeIp, list);
    return edit_list(n, kTypeIp, list, true, __func__);
}

int appfilter_add_route_domainlist(int n, char *list) {
    APPFILTER_CHECK_ADDED(n, kTypeDomain, list);
    return edit_list(n, kTypeDomain, list, true, __func__);
}

int appfilter_add_route_maclist(int n, char *list) {
    APPFILTER_CHECK_ADDED(n, kTypeMac, list);
    return edit_list(n, kTypeMac, list, true, __func__);
}

int appfilter_del_route_iplist(int n, char *list) {
    APPFILTER_CHECK_TEXT(list);
    return edit_list(n, kTypeIp, list, false, __func__);
}

int appfilter_del_route_domainlist(int n, char *list) {
    APPFILTER_CHECK_TEXT(list);
    return edit_list(n, kTypeDomain, list, false, __func__);
}

int appfilter_del_route_maclist(int n, char *list) {
    APPFILTER_CHECK_TEXT(list);
    return edit_list(n, kTypeMac, list, false, __func__);
}

int appfilter_flush_route_ip(int n) { return flush_list(n, kTypeIp, __func__); }
int appfilter_flush_route_domain(int n) { return flush_list(n, kTypeDomain, __func__); }
int appfilter_flush_route_mac(int n) { return flush_list(n, kTypeMac, __func__); }

int appfilter_add_route_list(int n, unsigned int type, char *list) {
    switch (type) {
        case kTypeIp: return appfilter_add_route_iplist(n, list);
        case kTypeDomain: return appfilter_add_route_domainlist(n, list);
        case kTypeMac: return appfilter_add_route_maclist(n, list);
        default: return 0;
    }
}

int appfilter_del_route_list(int n, unsigned int type, char *list) {
    switch (type) {
        case kTypeIp: return appfilter_del_route_iplist(n, list);
        case kTypeDomain: return appfilter_del_route_domainlist(n, list);
        case kTypeMac: return appfilter_del_route_maclist(n, list);
        default: return 0;
    }
}

int appfilter_flush_route_list(int n, unsigned int type) {
    switch (type) {
        case kTypeIp: return appfilter_flush_route_ip(n);
        case kTypeDomain: return appfilter_flush_route_domain(n);
        case kTypeMac: return appfilter_flush_route_mac(n);
        default: return 0;
    }
}

int appfilter_get_route_list(int n, int type, char *out, int size) {
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
