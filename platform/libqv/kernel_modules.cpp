// SPDX-License-Identifier: MIT
// The simulated kernel modules behind "/proc/approute/rule" and
// "/proc/appfilter/rule" (see platform/README-modules.md).
//
// A command line reaches run_module_command before the shell sees it. When
// it is a plain echo whose standard output goes into one of the two control
// files, the line is carried out here as /bin/sh would carry it out (word
// splitting at blanks, tilde and pathname expansion, echo joining its words
// with single blanks and ending with a line end) and the text echo writes is
// handed to the simulated module, which applies each line it understands:
//   ADD_DATA index:<n> type:<t> list:<item>[,<item>...]
//   DEL_DATA index:<n> type:<t> list:<item>[,<item>...]   (route module only)
//   CLR_DATA index:<n> type:<t>
// State, under qvsim_dir()/modules/<module>/:
//   <n>.<t>    the items that rule index n holds for type t, one per line
//   received   every line written into the control file, as received
//   rejected   the lines the module refused (unknown command, bad numbers)
// Everything else (other commands, lines with shell syntax beyond these
// simple forms, lines whose redirection was cut off) is left to the shell.
#include "kernel_modules.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <glob.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "qvsim.h"

namespace qvsim {
namespace {

struct Module {
    const char *name;
    const char *control;   // the /proc control file
    bool takes_delete;     // understands DEL_DATA
};

constexpr Module kModules[] = {
    {"approute", "/proc/approute/rule", true},
    {"appfilter", "/proc/appfilter/rule", false},
};

const Module *module_by_control(const std::string &path) {
    for (const Module &m : kModules)
        if (path == m.control) return &m;
    return nullptr;
}

const Module *module_by_name(const char *name) {
    if (name == nullptr) return nullptr;
    for (const Module &m : kModules)
        if (std::strcmp(name, m.name) == 0) return &m;
    return nullptr;
}

// Shell syntax that these simple forms never contain; a line holding any of
// it is not interpreted here.
constexpr char kBeyondSimple[] = ";&|`$<()\\'\"#\n\r";

bool is_blank(char c) { return c == ' ' || c == '\t'; }

std::string modules_dir() { return std::string(qvsim_dir()) + "/modules"; }
std::string module_dir(const Module &m) { return modules_dir() + "/" + m.name; }

void make_dirs(const std::string &path) {
    std::string partial;
    for (std::size_t i = 0; i <= path.size(); ++i) {
        if (i == path.size() || (path[i] == '/' && i > 0)) {
            partial = path.substr(0, i);
            ::mkdir(partial.c_str(), 0755);
        }
    }
}

// Serialises read-modify-write of the module files between processes.
class ModuleLock {
public:
    ModuleLock() {
        make_dirs(modules_dir());
        fd_ = ::open((modules_dir() + "/.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd_ >= 0) ::flock(fd_, LOCK_EX);
    }
    ~ModuleLock() {
        if (fd_ >= 0) ::close(fd_);  // releases the lock
    }
    ModuleLock(const ModuleLock &) = delete;
    ModuleLock &operator=(const ModuleLock &) = delete;

private:
    int fd_ = -1;
};

std::vector<std::string> read_lines(const std::string &path) {
    std::vector<std::string> lines;
    FILE *f = std::fopen(path.c_str(), "r");
    if (f == nullptr) return lines;
    std::string cur;
    int c;
    while ((c = std::fgetc(f)) != EOF) {
        if (c == '\n') {
            lines.push_back(cur);
            cur.clear();
        } else {
            cur.push_back(static_cast<char>(c));
        }
    }
    if (!cur.empty()) lines.push_back(cur);
    std::fclose(f);
    return lines;
}

void write_lines(const std::string &path, const std::vector<std::string> &lines) {
    std::string tmp = path + ".new";
    FILE *f = std::fopen(tmp.c_str(), "w");
    if (f == nullptr) return;
    for (const std::string &l : lines) std::fprintf(f, "%s\n", l.c_str());
    std::fclose(f);
    std::rename(tmp.c_str(), path.c_str());
}

void append_line(const std::string &path, const std::string &line) {
    FILE *f = std::fopen(path.c_str(), "a");
    if (f == nullptr) return;
    std::fprintf(f, "%s\n", line.c_str());
    std::fclose(f);
}

std::string list_file(const Module &m, long index, long type) {
    return module_dir(m) + "/" + std::to_string(index) + "." + std::to_string(type);
}

// Reads "<key><decimal int>" at p; advances p past it.
bool read_number(const char *&p, const char *key, long &out) {
    std::size_t k = std::strlen(key);
    if (std::strncmp(p, key, k) != 0) return false;
    p += k;
    if (!(*p == '-' || (*p >= '0' && *p <= '9'))) return false;
    char *end = nullptr;
    errno = 0;
    long v = std::strtol(p, &end, 10);
    if (errno != 0 || end == p || v < INT_MIN || v > INT_MAX) return false;
    p = end;
    out = v;
    return true;
}

// One line written into the control file; false when the module refuses it.
bool apply_line(const Module &m, const std::string &line) {
    enum { kAdd, kDel, kClr } op;
    const char *p = line.c_str();
    if (std::strncmp(p, "ADD_DATA ", 9) == 0)
        op = kAdd;
    else if (std::strncmp(p, "DEL_DATA ", 9) == 0 && m.takes_delete)
        op = kDel;
    else if (std::strncmp(p, "CLR_DATA ", 9) == 0)
        op = kClr;
    else
        return false;
    p += 9;
    long index = 0, type = 0;
    if (!read_number(p, "index:", index)) return false;
    if (!read_number(p, " type:", type)) return false;
    if (type < 1 || type > 3) return false;
    const std::string path = list_file(m, index, type);
    if (op == kClr) {
        if (*p != '\0') return false;
        std::remove(path.c_str());
        return true;
    }
    if (std::strncmp(p, " list:", 6) != 0) return false;
    p += 6;
    std::vector<std::string> items = read_lines(path);
    const std::string list(p);
    std::size_t start = 0;
    while (start <= list.size()) {
        std::size_t comma = list.find(',', start);
        if (comma == std::string::npos) comma = list.size();
        std::string item = list.substr(start, comma - start);
        start = comma + 1;
        if (item.empty()) continue;
        bool found = false;
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (items[i] != item) continue;
            found = true;
            if (op == kDel) items.erase(items.begin() + static_cast<long>(i));
            break;
        }
        if (op == kAdd && !found) items.push_back(item);
    }
    if (items.empty())
        std::remove(path.c_str());
    else
        write_lines(path, items);
    return true;
}

// The module side of one write() into its control file.
void module_write(const Module &m, const std::string &text) {
    ModuleLock lock;
    make_dirs(module_dir(m));
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::string line = text.substr(start, end - start);
        start = end + 1;
        append_line(module_dir(m) + "/received", line);
        if (!apply_line(m, line)) append_line(module_dir(m) + "/rejected", line);
    }
}

// Tilde expansion of a word, as sh does it.
std::string expand_tilde(const std::string &word) {
    if (word.empty() || word[0] != '~') return word;
    std::size_t slash = word.find('/');
    std::string user = word.substr(1, slash == std::string::npos ? std::string::npos : slash - 1);
    std::string rest = slash == std::string::npos ? "" : word.substr(slash);
    const char *home = nullptr;
    if (user.empty()) {
        home = std::getenv("HOME");
    } else {
        struct passwd *pw = ::getpwnam(user.c_str());
        if (pw != nullptr) home = pw->pw_dir;
    }
    return home != nullptr ? std::string(home) + rest : word;
}

// Pathname expansion; a pattern that matches nothing stays as it is.
void expand_word(const std::string &word, std::vector<std::string> &out) {
    std::string w = expand_tilde(word);
    if (w.find_first_of("*?[") == std::string::npos) {
        out.push_back(w);
        return;
    }
    glob_t g{};
    if (::glob(w.c_str(), GLOB_NOCHECK, nullptr, &g) == 0) {
        for (std::size_t i = 0; i < g.gl_pathc; ++i) out.push_back(g.gl_pathv[i]);
    } else {
        out.push_back(w);
    }
    ::globfree(&g);
}

struct Parsed {
    std::vector<std::string> words;
    std::string stdout_target;
    int stdout_redirects = 0;
};

// Splits a simple command line into words and output redirections.
bool parse_simple(const char *line, Parsed &out) {
    const char *p = line;
    std::string word;
    auto flush_word = [&]() {
        if (!word.empty()) out.words.push_back(word);
        word.clear();
    };
    while (*p != '\0') {
        if (is_blank(*p)) {
            flush_word();
            ++p;
            continue;
        }
        if (*p != '>') {
            word.push_back(*p++);
            continue;
        }
        // A redirection; digits right before it name the descriptor.
        int fd = 1;
        if (!word.empty() && word.find_first_not_of("0123456789") == std::string::npos) {
            fd = std::atoi(word.c_str());
            word.clear();
        }
        flush_word();
        ++p;
        if (*p == '>') ++p;  // appending changes nothing for a control file
        while (is_blank(*p)) ++p;
        std::string target;
        while (*p != '\0' && !is_blank(*p) && *p != '>') target.push_back(*p++);
        if (target.empty()) return false;
        if (fd == 1) {
            out.stdout_target = expand_tilde(target);
            ++out.stdout_redirects;
        }
    }
    flush_word();
    return true;
}

}  // namespace

bool run_module_command(const char *line) {
    if (line == nullptr) return false;
    if (std::strstr(line, "/proc/approute/rule") == nullptr && std::strstr(line, "/proc/appfilter/rule") == nullptr)
        return false;
    if (std::strpbrk(line, kBeyondSimple) != nullptr) return false;
    Parsed parsed;
    if (!parse_simple(line, parsed)) return false;
    if (parsed.stdout_redirects != 1) return false;
    const Module *m = module_by_control(parsed.stdout_target);
    if (m == nullptr) return false;
    if (parsed.words.empty() || parsed.words[0] != "echo") return false;
    std::vector<std::string> args;
    for (std::size_t i = 1; i < parsed.words.size(); ++i) expand_word(parsed.words[i], args);
    bool newline = true;
    std::size_t first = 0;
    if (!args.empty() && args[0] == "-n") {
        newline = false;
        first = 1;
    }
    std::string text;
    for (std::size_t i = first; i < args.size(); ++i) {
        if (i > first) text.push_back(' ');
        text += args[i];
    }
    if (newline) text.push_back('\n');
    module_write(*m, text);
    return true;
}

void reset_modules() {
    ModuleLock lock;
    for (const Module &m : kModules) {
        const std::string dir = module_dir(m);
        DIR *d = ::opendir(dir.c_str());
        if (d == nullptr) continue;
        while (struct dirent *e = ::readdir(d)) {
            if (std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0) continue;
            ::unlink((dir + "/" + e->d_name).c_str());
        }
        ::closedir(d);
    }
}

}  // namespace qvsim

extern "C" char *qvsim_module_list(const char *module, int index, int type) {
    const qvsim::Module *m = qvsim::module_by_name(module);
    if (m == nullptr) return nullptr;
    std::vector<std::string> items;
    {
        qvsim::ModuleLock lock;
        items = qvsim::read_lines(qvsim::list_file(*m, index, type));
    }
    std::string text;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) text.push_back(',');
        text += items[i];
    }
    return strdup(text.c_str());
}

