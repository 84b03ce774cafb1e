// SPDX-License-Identifier: MIT
#include "steering/list_file.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "core/command.hpp"
#include "core/durable_file.hpp"
#include "core/list_text.hpp"
#include "core/log.hpp"

namespace qvs::steering {

DirStep list_dir_step(const char *dir, const char *func, const char *fail_text) {
    if (::access(dir, W_OK) == 0) return DirStep::kPresent;
    // A new directory's name is on flash before anything is written into it.
    if (::mkdir(dir, 0755) == 0) {
        sync_parent_dir(dir);
        return DirStep::kCreated;
    }
    QVS_LOG_AS(func, kLogError, "%s", fail_text);
    return DirStep::kFailed;
}

int find_line_in_file(const char *path, const char *needle) {
    ListText text;
    return text.load(path) ? text.find(needle) : 0;
}

bool refuse_unsafe_line(const char *func, int line, const char *text) {
    if (text == nullptr) return false;
    std::string_view t(text);
    if (!t.empty() && t.back() == '\n') t.remove_suffix(1);
    return !is_shell_safe(t) && refuse_unsafe_text(func, line, text);
}

int append_list_line(const char *func, const char *path, const char *text) {
    ListText line;
    if (line.append_line(text) && durable_append(path, line.data(), line.size())) return 0;
    QVS_LOG_AS(func, kLogError, "open file %s failed.\n", path);
    return -1;
}

int commit_list_file(const char *func, FileRewrite &file, const char *path) {
    if (file.commit()) return 0;
    if (func != nullptr) QVS_LOG_AS(func, kLogError, "open file %s failed.\n", path);
    return -1;
}

int write_list_file(const char *func, const char *path, const char *text) {
    FileRewrite f(path);
    if (!f) {
        QVS_LOG_AS(func, kLogError, "open file %s failed.\n", path);
        return -1;
    }
    std::fputs(text, f.get());
    return commit_list_file(func, f, path);
}

bool delete_list_line(const char *func, int k, const char *path) {
    ListText text;
    if (text.load(path) && text.remove_line(k) && text.write_back(path)) return true;
    QVS_LOG_AS(func, kLogError, "delete line %d of %s failed.\n", k, path);
    return false;
}

int join_list_lines(const char *path, char sep, const char *cut_at, char *out, int size) {
    out[0] = '\0';
    File f(path, "r");
    if (!f) return -1;
    char line[512];
    std::memset(line, 0, sizeof line);
    std::size_t used = 0;
    int count = 0;
    while (std::fgets(line, sizeof line, f.get()) != nullptr) {
        line[std::strcspn(line, cut_at)] = '\0';
        const std::size_t len = std::strlen(line);
        if (len + used + 2 >= static_cast<std::size_t>(size)) continue;
        if (count > 0) out[used++] = sep;
        std::memcpy(out + used, line, len + 1);
        used += len;
        ++count;
    }
    return count;
}

char *str_tolower(char *text) {
    for (char *p = text; *p != '\0'; ++p)
        *p = static_cast<char>(std::tolower(static_cast<unsigned char>(*p)));
    return text;
}

}  // namespace qvs::steering
