/* SPDX-License-Identifier: MIT */
/* The exported types and tables have the layout the header documents, on
 * this build's architecture: 32-bit ARM (ILP32) or a 64-bit host (LP64).
 * Checked when compiling (static assertions) and again at run time against
 * the library's own tables, each check printed. */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include "qvs_utils.h"

#if UINTPTR_MAX == 0xffffffffu
#define ALARM_ROW_SIZE 12u /* ILP32 (armhf): 4 + 1 + 1 + 2 padding + 4 */
#elif UINTPTR_MAX == 0xffffffffffffffffu
#define ALARM_ROW_SIZE 16u /* LP64: 4 + 1 + 1 + 2 padding + 8 */
#else
#error "neither a 32-bit nor a 64-bit build"
#endif

_Static_assert(sizeof(struct base64_decode_context) == 8, "base64_decode_context is 8 bytes");
_Static_assert(offsetof(struct base64_decode_context, i) == 0, "base64_decode_context.i at 0");
_Static_assert(offsetof(struct base64_decode_context, buf) == 4, "base64_decode_context.buf at 4");
_Static_assert(sizeof(CU_ALARM_INFO) == ALARM_ROW_SIZE, "CU_ALARM_INFO size");
_Static_assert(offsetof(CU_ALARM_INFO, alarmCode) == 0, "CU_ALARM_INFO.alarmCode at 0");
_Static_assert(offsetof(CU_ALARM_INFO, alarmStatus) == 4, "CU_ALARM_INFO.alarmStatus at 4");
_Static_assert(offsetof(CU_ALARM_INFO, perceivedSeverity) == 5, "CU_ALARM_INFO.perceivedSeverity at 5");
_Static_assert(offsetof(CU_ALARM_INFO, alarmDetail) == 8, "CU_ALARM_INFO.alarmDetail at 8");
_Static_assert(sizeof(cu_alarmInfo) == CU_ALARM_INFO_COUNT * ALARM_ROW_SIZE, "cu_alarmInfo size");
_Static_assert(sizeof(b64_chr) == 65, "b64_chr is 65 bytes");
_Static_assert(sizeof(allow_direct_write_xmlShm) == 4, "allow_direct_write_xmlShm is a 32-bit int");
_Static_assert(QVS_GENERATE_NAME_SIZE == 78, "generateName buffer size");
/* The kernel's 16-byte forwarding record, the same on every architecture. */
_Static_assert(sizeof(struct qvs_fdb_entry) == 16, "qvs_fdb_entry is 16 bytes");
_Static_assert(offsetof(struct qvs_fdb_entry, mac_addr) == 0, "qvs_fdb_entry.mac_addr at 0");
_Static_assert(offsetof(struct qvs_fdb_entry, port_no) == 6, "qvs_fdb_entry.port_no at 6");
_Static_assert(offsetof(struct qvs_fdb_entry, is_local) == 7, "qvs_fdb_entry.is_local at 7");
_Static_assert(offsetof(struct qvs_fdb_entry, ageing_timer_value) == 8, "qvs_fdb_entry.ageing_timer_value at 8");
_Static_assert(offsetof(struct qvs_fdb_entry, port_hi) == 12, "qvs_fdb_entry.port_hi at 12");
_Static_assert(offsetof(struct qvs_fdb_entry, pad0) == 13, "qvs_fdb_entry.pad0 at 13");
_Static_assert(offsetof(struct qvs_fdb_entry, unused) == 14, "qvs_fdb_entry.unused at 14");

static int failures;

static void check(const char *what, size_t got, size_t want) {
    printf("%-48s %4zu %s\n", what, got, got == want ? "ok" : "WRONG");
    if (got != want) {
        printf("  expected %zu\n", want);
        ++failures;
    }
}

int main(void) {
    /* Addresses inside the library's own tables, not just this file's view. */
    const char *rows = (const char *)cu_alarmInfo;
    check("sizeof(struct base64_decode_context)", sizeof(struct base64_decode_context), 8);
    check("offsetof(struct base64_decode_context, buf)", offsetof(struct base64_decode_context, buf), 4);
    check("sizeof(CU_ALARM_INFO)", sizeof(CU_ALARM_INFO), ALARM_ROW_SIZE);
    check("offsetof(CU_ALARM_INFO, alarmDetail)", offsetof(CU_ALARM_INFO, alarmDetail), 8);
    check("cu_alarmInfo row stride",
          (size_t)((const char *)&cu_alarmInfo[1] - rows), ALARM_ROW_SIZE);
    check("cu_alarmInfo[20] offset",
          (size_t)((const char *)&cu_alarmInfo[CU_ALARM_INFO_COUNT - 1] - rows),
          (CU_ALARM_INFO_COUNT - 1) * ALARM_ROW_SIZE);
    check("cu_alarmInfo[0].alarmCode (Device reboot)", cu_alarmInfo[0].alarmCode, 104001);
    check("sizeof(struct qvs_fdb_entry)", sizeof(struct qvs_fdb_entry), 16);
    check("offsetof(struct qvs_fdb_entry, ageing_timer_value)", offsetof(struct qvs_fdb_entry, ageing_timer_value), 8);
    check("offsetof(struct qvs_fdb_entry, port_hi)", offsetof(struct qvs_fdb_entry, port_hi), 12);
    check("strlen(b64_chr)", (size_t)(sizeof(b64_chr) - 1), 64);
    check("b64_chr terminator", (size_t)b64_chr[64], 0);
    return failures == 0 ? 0 : 1;
}
