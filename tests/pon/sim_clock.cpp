#include "sim_clock.hpp"

#include <cstdlib>
#include <cstring>
#include <sys/syscall.h>
#include <unistd.h>

#include "qvsim.h"
#include "test_support.hpp"

namespace {
bool g_pinned = false;
std::time_t g_now = 0;

std::time_t real_seconds() {
    struct timespec ts {};
    ::syscall(SYS_clock_gettime, CLOCK_REALTIME, &ts);
    return ts.tv_sec;
}

std::time_t current() { return g_pinned ? g_now : real_seconds(); }
}  // namespace

namespace simclock {
void pin(std::time_t t) {
    g_now = t;
    g_pinned = true;
}
void advance(long seconds) { g_now += seconds; }
void release() { g_pinned = false; }
std::time_t real_now() { return real_seconds(); }
}  // namespace simclock

// The library asks time() for "now"; this definition in the test program
// comes first in the lookup order, so a pinned clock reaches it.
extern "C" std::time_t time(std::time_t *out) noexcept {
    std::time_t t = current();
    if (out != nullptr) *out = t;
    return t;
}

// The same for the wall clock read through clock_gettime; the other clocks
// pass through.
extern "C" int clock_gettime(clockid_t id, struct timespec *ts) noexcept {
    if (id == CLOCK_REALTIME && g_pinned) {
        ts->tv_sec = g_now;
        ts->tv_nsec = 0;
        return 0;
    }
    return static_cast<int>(::syscall(SYS_clock_gettime, id, ts));
}

namespace simjournal {

std::string text() {
    char *t = qvsim_journal_text();
    std::string s = t != nullptr ? t : "";
    std::free(t);
    return s;
}

std::vector<Line> lines() { return qvstest::journal_fields(); }

void clear() { qvsim_journal_clear(); }

std::vector<Line> of_kind(const std::string &kind) {
    std::vector<Line> out;
    for (auto &l : lines())
        if (!l.empty() && l[0] == kind) out.push_back(l);
    return out;
}

std::vector<std::string> commands(const std::string &runner) {
    std::vector<std::string> out;
    for (auto &l : of_kind("cmd"))
        if (l.size() >= 3 && l[1] == runner) out.push_back(l[2]);
    return out;
}

std::vector<std::string> logs(const std::string &func) {
    std::vector<std::string> out;
    for (auto &l : of_kind("log"))
        if (l.size() >= 6 && l[2] == func) out.push_back(l[4] + " " + l[5]);
    return out;
}

int count(const std::string &kind) { return static_cast<int>(of_kind(kind).size()); }

std::vector<std::string> sets() {
    std::vector<std::string> out;
    for (auto &l : of_kind("set")) {
        std::string s;
        for (std::size_t i = 1; i < l.size(); ++i) s += (i > 1 ? " " : "") + l[i];
        out.push_back(s);
    }
    return out;
}

}  // namespace simjournal
