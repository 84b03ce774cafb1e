// SPDX-License-Identifier: MIT
// Checks inside the fuzz harnesses: a broken property aborts with the line,
// which libFuzzer (or the replay driver) reports as a crash.
#pragma once

#include <cstdio>
#include <cstdlib>

#define FUZZ_CHECK(cond)                                                             \
    do {                                                                             \
        if (!(cond)) {                                                               \
            std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
            std::abort();                                                            \
        }                                                                            \
    } while (0)
