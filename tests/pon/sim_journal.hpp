// SPDX-License-Identifier: MIT
// Helpers for the PON and alarm suites: the simulated gateway's journal
// split into fields. (Their clock is the shared test clock, test_clock.h.)
#pragma once

#include <ctime>
#include <string>
#include <vector>

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
