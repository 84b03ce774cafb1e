/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, process PID records: find a process by name, record its PID.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_PID_RECORDS_H
#define QVS_UTILS_PID_RECORDS_H

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Process PID records ================================================ */

/** PID of the first process listed by "ps -ef | grep '<name>' | grep -v grep"
 * (the name may match anywhere in a process list line: the first line whose
 * text contains it wins; its first number is taken as the PID).
 * Returns the PID, 0 when no process matched (a line is printed on standard
 * output), -1 when the search could not be run (popen failed), the name is
 * NULL, or the name holds a character that could change the shell command
 * line (; & | ` $ < > ( ) \ ' " # or a line end; refused and logged at level
 * 1 without running anything), or is so long (more than 480 characters) that
 * the 512-byte command line would be cut short (refused the same way).
 * @param process_name text looked for in the process list; must not hold shell characters
 * @par Touches
 * runs one "ps" command line through popen; no store, no files.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_util_get_process_pid(const char *process_name);

/** Looks the name up as qvs_util_get_process_pid() does and writes the result
 * (even 0 or -1) in decimal, without a newline, to
 * "/tmp/process_pid_<name>.pid" (path cut at 255 characters).
 * Returns 0 when the record was written; -1 for a NULL or empty name, a name
 * refused as unsafe for the shell or too long for the lookup line (nothing
 * looked up, nothing written), or a
 * record file that cannot be opened for writing.
 * @param process_name process name, also the record file's name part
 * @par Touches
 * runs "ps" through popen and writes "/tmp/process_pid_<name>.pid".
 * @par Thread safety
 * MT-Safe: each record rewrites the whole file; of concurrent records of one
 * name the last stays. */
QVS_API int qvs_util_recordProcessPid(const char *process_name);

/** Reads the PID recorded by qvs_util_recordProcessPid() for the name.
 * Returns the recorded number, 0 when the record exists but holds no number,
 * -1 when there is no record or the name is NULL or empty.
 * @param process_name process name whose record is read
 * @par Touches
 * reads "/tmp/process_pid_<name>.pid" only.
 * @par Thread safety
 * MT-Safe: read while the same name is being recorded, the record may still be
 * empty (0). */
QVS_API int qvs_util_getPidFromRecord(const char *process_name);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_PID_RECORDS_H */
