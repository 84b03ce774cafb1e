#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

void print_result(long long result) { std::printf("result: %lld\n", result); }
void print_text(const char *name, const char *value) { std::printf("%s: %s\n", name, value != nullptr ? value : "(null)"); }
void print_int(const char *name, long long value) { std::printf("%s: %lld\n", name, value); }
void print_hex(const char *name, const unsigned char *bytes, std::size_t n) {
    std::printf("%s: ", name);
    for (std::size_t i = 0; i < n; ++i) std::printf("%02x", bytes[i]);
    std::printf("\n");
}

static void usage_all() {
    std::printf("usage: qvsctl <family> <function> [arguments...]\n       qvsctl help [family]\n\nfamilies:\n");
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
        int rc = c.run(argv + 3);
        std::fflush(stdout);
        return rc;
    }
    std::fprintf(stderr, "qvsctl: family '%s' has no function '%s'\n", f->name, argv[2]);
    usage_family(*f);
    return kBadArgs;
}
