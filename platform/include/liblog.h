/* SPDX-License-Identifier: MIT */
/* liblog: the gateway platform's logger. */
#ifndef LIBLOG_H
#define LIBLOG_H

#ifdef __cplusplus
extern "C" {
#endif

void qvs_log_print(const char *file, const char *func, int line, int level,
                   const char *format, ...) __attribute__((format(printf, 5, 6)));

#ifdef __cplusplus
}
#endif

#endif /* LIBLOG_H */
