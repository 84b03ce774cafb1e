/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, system facts: firmware image size, default configuration, area
 * and province, CPU, RAM and flash use, software version.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_SYSTEM_FACTS_H
#define QVS_UTILS_SYSTEM_FACTS_H

#include <stdint.h>

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== System facts ======================================================== */
/* Read-only facts for the management processes: the largest firmware image,
 * the default configuration file, area and province, CPU, RAM and flash use,
 * the software version. No state is kept between calls. */

/** Bytes available for a firmware image: the sizes of the "rootfs-1" and
 * "framework-1" partitions of "/proc/mtd" added up. Lines (256-byte buffer)
 * containing either name are scanned "%s %x %x %s" (device, size, erase
 * size, name); a partition that is not listed counts 0, and a later line of
 * the same partition overrides an earlier one.
 * @param size set in bytes; left untouched when "/proc/mtd" cannot be
 *             opened (NULL: nothing written)
 * @return 0 in every case
 * @par Touches
 * reads "/proc/mtd".
 * @par Thread safety
 * MT-Safe. */
QVS_API int GetMaxImageSize(uint32_t *size);

/** Path of the factory default configuration for the gateway's area and
 * province (`libqv_sys_getArea`, `libqv_sys_getProvince`, 32 bytes each):
 * the first that exists of "/userconfig/config/customized/`A`_`P`.default.enc",
 * "/usr/config/`A`_`P`.default.enc" and
 * "/userconfig/config/oem/`A`_`P`.default.enc" (`A` the area, `P` the
 * province); otherwise "/usr/config/CN_WX.default.enc" for area CN and
 * province WX, else "/usr/config/config.default.enc" (these two without
 * testing that they exist). A path longer than 95 characters is cut, and
 * the cut path is what is tested.
 * @return a static 96-byte text owned by the library and overwritten by
 *         every call: do not free it, copy it before calling again
 * @par Touches
 * the two platform calls, access() on the candidate paths; logs
 * `"final default xml is %s\n."` with the path at level 1 (the full stop follows the
 * line end).
 * @par Thread safety
 * MT-Unsafe race:getPreDefaultXml: the result is one static buffer, rewritten
 * by every call. */
QVS_API char *getPreDefaultXml(void);

/** Area and province codes of the gateway from the platform.
 * @param area 32-byte buffer filled by `libqv_sys_getArea`, or NULL
 * @param province 32-byte buffer filled by `libqv_sys_getProvince`, or NULL
 * @return the province call's result when province is given, else the area
 *         call's result, else 0 (both NULL); the platform gives 0 on success
 *         and a negative value on failure
 * @par Touches
 * the platform calls only.
 * @par Thread safety
 * MT-Safe. */
QVS_API int getAreaAndProvince(char *area, char *province);

/** CPU occupancy in percent (0 to 100) as the platform measures it
 * (`libqv_sys_getCpuUsage`).
 * @param percent written only when the platform call succeeds; left
 *                untouched otherwise (NULL: nothing written)
 * @return 0 in every case
 * @par Touches
 * the platform call only.
 * @par Thread safety
 * MT-Safe. */
QVS_API int getCpuOccupy(unsigned int *percent);

/** RAM occupancy in percent, 100 * (MemTotal - MemAvailable) / MemTotal,
 * truncated, from the first 8192 bytes of "/proc/meminfo" (MemAvailable is
 * looked for after MemTotal).
 * @param percent written on success only (may be NULL)
 * @return 0; -1 when the file cannot be opened (nothing printed), when it is
 *         empty (prints "Invalid parameters."), or when MemTotal or
 *         MemAvailable is missing or MemTotal is not a positive number
 *         (prints "couln't parser, parameter error.")
 * @par Touches
 * reads "/proc/meminfo"; the two texts go to standard output (puts), not to
 * the log.
 * @par Thread safety
 * MT-Safe. */
QVS_API int getRamOccupy(unsigned int *percent);

/** Flash occupancy in percent: the used 1K blocks of the mounts
 * "/userconfig/config" and "/opt/sgw/apps" plus a fixed 50922 blocks, of
 * 262144 blocks (256 MB): ((sizes + 50922 - available) * 100) / 262144,
 * truncated toward zero (above 100 when the mounts are full).
 * @param percent written whenever the listing could be read, whatever the
 *                result (may be NULL)
 * @return 0 when exactly two such lines were listed; -1 otherwise, and -1
 *         with percent untouched when "/tmp/flashsize" cannot be read or
 *         another call held it for 10 s
 * @par Touches
 * runs "df>/tmp/flashsize" and then "rm /tmp/flashsize" with system(), and
 * reads the listing (128-byte lines).
 * @par Thread safety
 * MT-Safe: every call writes, reads and removes the one file
 * "/tmp/flashsize", so calls are serialised between threads and processes
 * by a lock file ("flashsize" under /var/lock/qvs_utils); a wait longer
 * than 10 s gives -1 and a level-1 log line. */
QVS_API int getFLASHOccupy(int *percent);

/** Copies the software version text of the device information object
 * (OID 3) into dst with an unbounded copy.
 * @param dst caller's buffer of at least 64 bytes (the version field's size)
 * @return 0; -1 when the store cannot be attached, the object is missing,
 *         the version text is empty or dst is NULL (dst untouched)
 * @par Touches
 * attaches to the store by itself and detaches on every path; logs
 * `"xmlShm init error.\r\n"` (level 1) when the store refuses, else
 * `"xmlShm init success.\r\n"` (level 5).
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_getSWVersion(char *dst);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_SYSTEM_FACTS_H */
