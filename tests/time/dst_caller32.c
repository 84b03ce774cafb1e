/* SPDX-License-Identifier: MIT */
/* A caller built without _TIME_BITS=64: on armhf its time_t has 32 bits and
 * it reaches the 32-bit qvsTimeToDST. */
#undef _TIME_BITS
#undef _FILE_OFFSET_BITS

#include "dst_callers.h"
#include "qvs_utils.h"

int caller32_time_size(void) { return (int)sizeof(time_t); }

long long caller32_to_dst(long long seconds) { return (long long)qvsTimeToDST((time_t)seconds); }
