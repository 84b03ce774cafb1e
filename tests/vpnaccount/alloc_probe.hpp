// SPDX-License-Identifier: MIT
// Counts, and on demand refuses, the allocations cJSON makes through its
// hooks (cJSON_InitHooks is part of the library's exported cJSON API).
#pragma once

#include <atomic>
#include <cstdlib>

#include "cJSON.h"

namespace vpntest {

struct AllocProbe {
    static inline std::atomic<long> count{0};      // allocations asked for
    static inline std::atomic<long> live{0};       // allocated and not yet freed
    static inline std::atomic<long> fail_at{0};    // refuse this allocation (1-based), 0: none
    static inline std::atomic<size_t> fail_size{0};  // refuse allocations of exactly this size, 0: none

    static void *allocate(size_t n) {
        long k = ++count;
        if ((fail_at != 0 && k == fail_at) || (fail_size != 0 && n == fail_size)) return nullptr;
        void *p = std::malloc(n);
        if (p != nullptr) ++live;
        return p;
    }
    static void release(void *p) {
        if (p != nullptr) --live;
        std::free(p);
    }
    // Installs the counting hooks, refusing allocation number `at` (0: none)
    // or every allocation of `size` bytes (0: none).
    static void install(long at = 0, size_t size = 0) {
        count = 0;
        live = 0;
        fail_at = at;
        fail_size = size;
        cJSON_Hooks h;
        h.malloc_fn = allocate;
        h.free_fn = release;
        cJSON_InitHooks(&h);
    }
    static void uninstall() { cJSON_InitHooks(nullptr); }
};

}  // namespace vpntest
