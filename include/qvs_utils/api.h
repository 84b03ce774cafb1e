/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils: what every family header needs. QVS_API marks what the
 * library exports (it is built with hidden visibility otherwise).
 */
#ifndef QVS_UTILS_API_H
#define QVS_UTILS_API_H

#if defined(__GNUC__)
#define QVS_API __attribute__((visibility("default")))
#else
#define QVS_API
#endif

#endif /* QVS_UTILS_API_H */
