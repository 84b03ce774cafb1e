// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "qvsctl.hpp"

namespace qvsctl {

static Family *g_families = nullptr;

Family::Family(const char *n, const char *s, const Command *c, std::size_t k)
    : name(n), summary(s), commands(c), count(k), next(nullptr) {
    // Keep the list sorted by name so help output is stable.
    Family **p = &g_families;
    while (*p != nullptr && std::strcmp((*p)->name, n) < 0) p = &(*p)->next;
    next = *p;
    *p = this;
}

bool parse_int(const char *text, long long min, long long max, long long &out) {
    char *end = nullptr;
    errno = 0;
    long long v = std::strtoll(text, &end, 0);
    if (errno != 0 || end == text || *end != '\0' || v < min || v > max) {
        std::fprintf(stderr, "qvsctl: '%s' is not a number from %lld to %lld\n", text, min, max);
        return false;
    }
    out = v;
    return true;
}

bool parse_mac(const char *text, unsigned char mac[6]) {
    unsigned v[6];
    char tail;
    if (std::sscanf(text, "%2x:%2x:%2x:%2x:%2x:%2x%c", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &tail) != 6) {
        std::fprintf(stderr, "qvsctl: '%s' is not a MAC address (aa:bb:cc:dd:ee:ff)\n", text);
        return false;
    }
    for (int i = 0; i < 6; ++i) mac[i] = static_cast<unsigned char>(v[i]);
    return true;
}

bool parse_hex(const char *text, std::vector<unsigned char> &out) {
    std::size_t n = std::strlen(text);
    if (n % 2 != 0) {
        std::fprintf(stderr, "qvsctl: '%s' is not hex bytes\n", text);
        return false;
    }
    out.clear();
    for (std::size_t i = 0; i < n; i += 2) {
        unsigned v;
        char pair[3] = {text[i], text[i + 1], 0};
        char *end = nullptr;
        v = static_cast<unsigned>(std::strtoul(pair, &end, 16));
        if (end != pair + 2) {
            std::fprintf(stderr, "qvsctl: '%s' is not hex bytes\n", text);
            return false;
        }
        out.push_back(static_cast<unsigned char>(v));
    }
    return true;
}

// ---- Output -------------------------------------------------------------
// Human form: one "name: value" line per output. JSON form (--json): the same
// outputs gathered per call into one JSON object each (see json_* below).

static bool g_json = false;

// JSON form: every output of one call of an exported function.
struct JsonCall {
    bool has_result = false;
    long long result = 0;
    std::vector<std::pair<std::string, std::string>> outputs;  // name, JSON value
    std::vector<std::string> lines;  // other lines written to standard output
};
static std::vector<JsonCall> g_calls;
static int g_saved_stdout = -1;     // the real standard output while capturing
static int g_capture = -1;          // where standard output goes meanwhile
static off_t g_capture_read = 0;    // bytes of the capture already taken
static std::string g_pending;       // an unfinished last line

static JsonCall &current_call() {
    if (g_calls.empty()) g_calls.emplace_back();
    return g_calls.back();
}

// A JSON string: valid UTF-8 passes, other bytes and controls are escaped.
static std::string json_string(const char *text, std::size_t n) {
    std::string out = "\"";
    const auto *p = reinterpret_cast<const unsigned char *>(text);
    for (std::size_t i = 0; i < n; ++i) {
        unsigned char c = p[i];
        if (c == '"' || c == '\\') {
            out.push_back('\\');
            out.push_back(static_cast<char>(c));
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c < 0x20 || c == 0x7f) {
            char esc[8];
            std::snprintf(esc, sizeof esc, "\\u%04x", c);
            out += esc;
        } else if (c < 0x80) {
            out.push_back(static_cast<char>(c));
        } else {
            std::size_t len = (c & 0xe0) == 0xc0 ? 2 : (c & 0xf0) == 0xe0 ? 3 : (c & 0xf8) == 0xf0 ? 4 : 0;
            bool valid = len != 0 && i + len <= n;
            for (std::size_t k = 1; valid && k < len; ++k) valid = (p[i + k] & 0xc0) == 0x80;
            if (valid) {
                out.append(text + i, len);
                i += len - 1;
            } else {
                char esc[8];
                std::snprintf(esc, sizeof esc, "\\u%04x", c);
                out += esc;
            }
        }
    }
    out.push_back('"');
    return out;
}

// A line a family or the library wrote to standard output itself: "name:
// value" lines (the shape of every qvsctl output) become named text outputs,
// anything else is kept in order under "stdout".
static bool output_line(const std::string &line, std::string &name, std::string &value) {
    std::size_t i = 0;
    if (line.empty() || !(std::isalpha(static_cast<unsigned char>(line[0])) || line[0] == '_')) return false;
    while (i < line.size() && (std::isalnum(static_cast<unsigned char>(line[i])) || line[i] == '_' || line[i] == '.')) ++i;
    if (i + 2 > line.size() || line.compare(i, 2, ": ") != 0) return false;
    name = line.substr(0, i);
    value = line.substr(i + 2);
    return true;
}

// Takes what reached standard output since the last look. Lines seen just
// before a new result belong to the call that result starts, except "name:
// value" lines, which a family prints after the call they describe.
static void drain(bool new_call) {
    std::fflush(stdout);
    if (g_capture < 0) return;
    char buf[4096];
    ssize_t n;
    while ((n = pread(g_capture, buf, sizeof buf, g_capture_read)) > 0) {
        g_pending.append(buf, static_cast<std::size_t>(n));
        g_capture_read += n;
    }
    std::size_t start = 0, end;
    while ((end = g_pending.find('\n', start)) != std::string::npos) {
        std::string line = g_pending.substr(start, end - start);
        start = end + 1;
        std::string name, value;
        if (output_line(line, name, value)) {
            current_call().outputs.emplace_back(name, json_string(value.data(), value.size()));
        } else {
            if (new_call && (g_calls.empty() || g_calls.back().has_result)) g_calls.emplace_back();
            current_call().lines.push_back(line);
        }
    }
    g_pending.erase(0, start);
}

static void add_output(const char *name, std::string json) {
    drain(false);
    current_call().outputs.emplace_back(name, std::move(json));
}

void print_result(long long result) {
    if (!g_json) {
        std::printf("result: %lld\n", result);
        return;
    }
    drain(true);
    if (g_calls.empty() || g_calls.back().has_result) g_calls.emplace_back();
    g_calls.back().has_result = true;
    g_calls.back().result = result;
}

void print_text(const char *name, const char *value) {
    if (!g_json) {
        std::printf("%s: %s\n", name, value != nullptr ? value : "(null)");
        return;
    }
    add_output(name, value != nullptr ? json_string(value, std::strlen(value)) : std::string("null"));
}

void print_int(const char *name, long long value) {
    if (!g_json) {
        std::printf("%s: %lld\n", name, value);
        return;
    }
    add_output(name, std::to_string(value));
}

void print_hex(const char *name, const unsigned char *bytes, std::size_t n) {
    std::string hex;
    for (std::size_t i = 0; i < n; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", bytes[i]);
        hex += pair;
    }
    if (!g_json) {
        std::printf("%s: %s\n", name, hex.c_str());
        return;
    }
    add_output(name, json_string(hex.data(), hex.size()));
}

// Standard output goes to a temporary file while the function runs, so that
// what the library itself prints cannot break the JSON.
static bool json_begin() {
    std::fflush(stdout);
    FILE *tmp = std::tmpfile();
    if (tmp == nullptr) {
        std::fprintf(stderr, "qvsctl: no temporary file for --json: %s\n", std::strerror(errno));
        return false;
    }
    g_capture = dup(fileno(tmp));
    std::fclose(tmp);
    g_saved_stdout = dup(STDOUT_FILENO);
    if (g_capture < 0 || g_saved_stdout < 0 || dup2(g_capture, STDOUT_FILENO) < 0) {
        std::fprintf(stderr, "qvsctl: cannot capture standard output: %s\n", std::strerror(errno));
        return false;
    }
    return true;
}

// One JSON object per call, one per line:
// {"family":..,"function":..,"result":N|null,"outputs":{name: value|[values]},"stdout":[lines]}
// A name printed more than once (a table's rows) has the array of its values.
static void json_end(const char *family, const char *function, bool print) {
    drain(false);
    if (!g_pending.empty()) {
        g_pending.push_back('\n');
        drain(false);
    }
    std::fflush(stdout);
    dup2(g_saved_stdout, STDOUT_FILENO);
    close(g_saved_stdout);
    close(g_capture);
    g_capture = -1;
    if (!print) return;
    if (g_calls.empty()) g_calls.emplace_back();
    for (const JsonCall &c : g_calls) {
        std::string o = "{\"family\":";
        o += json_string(family, std::strlen(family));
        o += ",\"function\":";
        o += json_string(function, std::strlen(function));
        o += ",\"result\":";
        o += c.has_result ? std::to_string(c.result) : std::string("null");
        o += ",\"outputs\":{";
        std::vector<bool> done(c.outputs.size(), false);
        bool first = true;
        for (std::size_t i = 0; i < c.outputs.size(); ++i) {
            if (done[i]) continue;
            std::vector<std::size_t> same;
            for (std::size_t k = i; k < c.outputs.size(); ++k)
                if (!done[k] && c.outputs[k].first == c.outputs[i].first) same.push_back(k);
            if (!first) o += ",";
            first = false;
            o += json_string(c.outputs[i].first.data(), c.outputs[i].first.size());
            o += ":";
            if (same.size() == 1) {
                o += c.outputs[i].second;
            } else {
                o += "[";
                for (std::size_t k = 0; k < same.size(); ++k) {
                    if (k != 0) o += ",";
                    o += c.outputs[same[k]].second;
                }
                o += "]";
            }
            for (std::size_t k : same) done[k] = true;
        }
        o += "},\"stdout\":[";
        for (std::size_t i = 0; i < c.lines.size(); ++i) {
            if (i != 0) o += ",";
            o += json_string(c.lines[i].data(), c.lines[i].size());
        }
        o += "]}\n";
        std::fputs(o.c_str(), stdout);
    }
    std::fflush(stdout);
}

static void usage_all() {
    std::printf(
        "usage: qvsctl [--json] <family> <function> [arguments...]\n"
        "       qvsctl help [family]\n\n"
        "--json: one JSON object per call on standard output (result, outputs by name,\n"
        "        bytes in hex, other output lines under \"stdout\")\n\nfamilies:\n");
    for (Family *f = g_families; f != nullptr; f = f->next) std::printf("  %-12s %s\n", f->name, f->summary);
}

static void usage_family(const Family &f) {
    std::printf("%s: %s\n\n", f.name, f.summary);
    for (std::size_t i = 0; i < f.count; ++i)
        std::printf("  qvsctl %s %s %s\n      %s\n", f.name, f.commands[i].name, f.commands[i].usage, f.commands[i].help);
}

static const Family *find_family(const char *name) {
    for (Family *f = g_families; f != nullptr; f = f->next)
        if (std::strcmp(f->name, name) == 0) return f;
    return nullptr;
}

}  // namespace qvsctl

int main(int argc, char **argv) {
    using namespace qvsctl;
    if (argc >= 2 && std::strcmp(argv[1], "--json") == 0) {
        g_json = true;
        argv[1] = argv[0];
        ++argv;
        --argc;
    }
    if (argc < 2 || std::strcmp(argv[1], "help") == 0 || std::strcmp(argv[1], "--help") == 0) {
        const Family *f = argc >= 3 ? find_family(argv[2]) : nullptr;
        if (f != nullptr) usage_family(*f);
        else usage_all();
        return argc < 2 ? kBadArgs : kRan;
    }
    const Family *f = find_family(argv[1]);
    if (f == nullptr) {
        std::fprintf(stderr, "qvsctl: no family '%s'\n", argv[1]);
        usage_all();
        return kBadArgs;
    }
    if (argc < 3) {
        usage_family(*f);
        return kBadArgs;
    }
    for (std::size_t i = 0; i < f->count; ++i) {
        const Command &c = f->commands[i];
        if (std::strcmp(c.name, argv[2]) != 0) continue;
        int nargs = argc - 3;
        if (nargs < c.min_args || nargs > c.max_args) {
            std::fprintf(stderr, "usage: qvsctl %s %s %s\n", f->name, c.name, c.usage);
            return kBadArgs;
        }
        std::fflush(stdout);
        if (g_json && !json_begin()) return kBadArgs;
        int rc = c.run(argv + 3);
        std::fflush(stdout);
        if (g_json) json_end(f->name, c.name, rc == kRan);
        return rc;
    }
    std::fprintf(stderr, "qvsctl: family '%s' has no function '%s'\n", f->name, argv[2]);
    usage_family(*f);
    return kBadArgs;
}
