/* SPDX-License-Identifier: MIT */
/* Two callers of qvsTimeToDST built with different time_t sizes. */
#ifndef QVSTEST_DST_CALLERS_H
#define QVSTEST_DST_CALLERS_H

#ifdef __cplusplus
extern "C" {
#endif

/* Built with the target's own time_t (32 bits on armhf). */
int caller32_time_size(void);
long long caller32_to_dst(long long seconds);

/* Built with _TIME_BITS=64: 64-bit time_t on every target. */
int caller64_time_size(void);
long long caller64_to_dst(long long seconds);

#ifdef __cplusplus
}
#endif

#endif
