/* SPDX-License-Identifier: MIT */
/* A caller built with _TIME_BITS=64: 64-bit time_t on every target; on
 * armhf the header sends its qvsTimeToDST calls to qvsTimeToDST64. */
#ifndef _TIME_BITS
#define _TIME_BITS 64
#endif
#ifndef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64
#endif

#include "dst_callers.h"
#include "qvs_utils.h"

int caller64_time_size(void) { return (int)sizeof(time_t); }

long long caller64_to_dst(long long seconds) { return (long long)qvsTimeToDST((time_t)seconds); }
