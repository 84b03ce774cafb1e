/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils: the shared utility library of the home gateway.
 *
 * Every function is called synchronously by another gateway process, does
 * its work through the platform's configuration store, Linux tools and small
 * state files, and returns an integer. Output buffers belong to the caller;
 * their required sizes are given with each function.
 *
 * Store handles are the platform's 32-bit store handles (0: none attached).
 *
 * Hardening: text from a caller that would end up on a shell command line is
 * checked first; text holding any of ; & | ` $ < > ( ) \ ' " # or a line end
 * is refused with -1 (and a level-1 log line) before anything is written or
 * run. So is text that would make a command line longer than its buffer (a
 * line cut short is never run; "refused text too long for its command line
 * [<text>]"); a stored line too long for its command during a reload is
 * skipped with that log line.
 *
 * List files survive a full or read-only flash: every list write checks its
 * writes, flush and close; whole-file rewrites go through a temporary file
 * in the same directory and rename, failed appends are cut back. A failed
 * write gives -1 (where the function has a failure result), leaves the file
 * as it was and sends no kernel command that would follow it.
 *
 * Thread safety: each function's reference says, in glibc's terms
 * (attributes(7)), whether several threads may call it at once: MT-Safe, or
 * MT-Unsafe with the reason. "race:<name>" names what concurrent calls
 * contend for; after MT-Safe it is something the caller must not share
 * between concurrent calls (an argument such as a radio or a context). "env"
 * marks a function that reads the environment (the time zone, TZ), which
 * setenv() must not change meanwhile. Like every function that formats text,
 * all assume the locale is not changed (setlocale) while they run. Races on
 * files and on the store hold between processes as well; races on the
 * process's own memory (strtok, a static buffer) do not.
 */
#ifndef QVS_UTILS_H
#define QVS_UTILS_H

#include <stddef.h>
#include <stdint.h>
#include <time.h>

/* One header per family, each also compiling on its own. */
#include "qvs_utils/logging.h"
#include "qvs_utils/pid_records.h"
#include "qvs_utils/wlan.h"
#include "qvs_utils/timekeeping.h"
#include "qvs_utils/pon.h"
#include "qvs_utils/alarm.h"
#include "qvs_utils/operator.h"
#include "qvs_utils/steering.h"
#include "qvs_utils/vpnaccount.h"
#include "qvs_utils/base64.h"
#include "qvs_utils/ipsec.h"
#include "qvs_utils/string_helpers.h"
#include "qvs_utils/system_facts.h"
#include "qvs_utils/bridge_wan.h"

#endif /* QVS_UTILS_H */
