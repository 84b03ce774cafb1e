/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, logging and diagnostics: the library's own lines on standard
 * error.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_LOGGING_H
#define QVS_UTILS_LOGGING_H

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Logging and diagnostics ============================================ */

/** Path of the running executable ("/proc/self/exe", at most 127 bytes),
 * newly allocated (free() it), or NULL when it cannot be read.
 * @par Touches
 * reads the link "/proc/self/exe"; nothing else.
 * @return a new block the caller frees, or NULL.
 * @par Thread safety
 * MT-Safe. */
QVS_API char *util_getPidname(void);

/** Writes "<exe path>[file:function:line]" then the formatted message and a
 * newline to standard error. Returns the result of writing the newline.
 * @param file source file name shown in the prefix
 * @param function function name shown in the prefix
 * @param line line number shown in the prefix
 * @param format printf format of the message, followed by its arguments
 * @par Touches
 * standard error only (and "/proc/self/exe" for the prefix).
 * @par Thread safety
 * MT-Safe: the prefix, the message and the line end are three writes, so lines
 * of concurrent callers may interleave. */
QVS_API int util_printf(const char *file, const char *function, int line,
                        const char *format, ...) __attribute__((format(printf, 4, 5)));

/** Weak flag kept for the platform's direct-write mode; the library never
 * reads it. */
extern QVS_API int allow_direct_write_xmlShm;

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_LOGGING_H */
