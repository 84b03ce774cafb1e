// SPDX-License-Identifier: MIT
// Several callers at once, as processes or as threads of one process, for
// the suites that check what callers of one file or list see of each other.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace lockstest {

inline constexpr int kWorkers = 4;
inline constexpr int kRounds = 8;

// Runs kWorkers callers f(0) .. f(kWorkers - 1) at once, as processes or
// threads; f gives the number of problems it saw. Total problems (a process
// that failed or died counts one).
inline int run_all(bool processes, const std::function<int(int)> &f) {
    if (!processes) {
        std::atomic<int> problems{0};
        std::vector<std::thread> threads;
        for (int w = 0; w < kWorkers; ++w) threads.emplace_back([&, w] { problems += f(w); });
        for (auto &t : threads) t.join();
        return problems;
    }
    std::vector<pid_t> pids;
    for (int w = 0; w < kWorkers; ++w) {
        pid_t pid = ::fork();
        if (pid == 0) ::_exit(f(w) == 0 ? 0 : 1);
        pids.push_back(pid);
    }
    int problems = 0;
    for (pid_t pid : pids) {
        int status = 0;
        if (::waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) ++problems;
    }
    return problems;
}

}  // namespace lockstest
