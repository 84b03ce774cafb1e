/* SPDX-License-Identifier: MIT */
/* Whether the Base64 block decoders may use SSSE3, as the C library
   reports it: the dynamic loader probed the CPU at start, and the
   glibc.cpu.hwcaps tunable can turn the feature off. C, because glibc's
   <sys/platform/x86.h> is a C header. */
#include <sys/platform/x86.h>

int qvs_codec_cpu_has_ssse3(void);

int qvs_codec_cpu_has_ssse3(void) { return CPU_FEATURE_ACTIVE(SSSE3) ? 1 : 0; }
