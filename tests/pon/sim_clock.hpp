// Helpers for the PON and alarm suites: a clock that tests can pin and move
// (the test program's own time(), which the library's calls reach before the
// C library's), and the simulated gateway's journal split into fields.
#pragma once

#include <ctime>
#include <string>
#include <vector>

namespace simclock {

// From now on time() answers t (and moves only when told to).
void pin(std::time_t t);
// Moves a pinned clock by the given seconds.
void advance(long seconds);
// Back to the real clock.
void release();
// The real clock, whatever is pinned.
std::time_t real_now();

}  // namespace simclock

namespace simjournal {

using Line = std::vector<std::string>;  // fields, unescaped

std::vector<Line> lines();
void clear();
// Lines whose first field is kind.
std::vector<Line> of_kind(const std::string &kind);
// Commands handed to a runner, in order.
std::vector<std::string> commands(const std::string &runner = "qv_do_cmd");
// Platform-logger lines of one function: "<level> <message>".
std::vector<std::string> logs(const std::string &func);
// Number of attach and detach lines.
int count(const std::string &kind);
// Parameter writes as "<oid> <instance> <param> <type> <value>".
std::vector<std::string> sets();
// Whole journal text, for failure messages.
std::string text();

}  // namespace simjournal
