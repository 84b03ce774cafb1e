// SPDX-License-Identifier: MIT
// qvsTimeToDST with the time_t of the target's original ABI: 32 bits on
// armhf, where the rest of the library is built with 64-bit time. Callers
// built with _TIME_BITS=64 reach qvsTimeToDST64 instead (the header says
// so); both compute with 64-bit time.
#undef _TIME_BITS
#undef _FILE_OFFSET_BITS

#include "core/log.hpp"
#include "time/summer_time.hpp"

static_assert(sizeof(void *) == 8 || sizeof(time_t) == 4, "the 32-bit ABI's time_t");

extern "C" QVS_API time_t qvsTimeToDST(time_t seconds) {
    return static_cast<time_t>(qvs::time::time_to_dst(seconds));
}
