/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, string helpers.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_STRING_HELPERS_H
#define QVS_UTILS_STRING_HELPERS_H

#include <stddef.h>
#include <stdint.h>

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== String helpers ====================================================== */

/** Bytes needed by generateName()'s destination for any arguments. */
#define QVS_GENERATE_NAME_SIZE 78

/** Replaces every character equal to `from` by `to` in the text, in place.
 * Characters are compared as signed bytes (a byte above 0x7F matches only a
 * negative `from`). A NULL or empty text is left as it is.
 * @param str writable text, changed in place
 * @param from character replaced
 * @param to replacement
 * @par Touches
 * nothing but str.
 * @par Thread safety
 * MT-Safe. */
QVS_API void qvsReplace(char *str, char from, char to);

/** Writes the display name of a WAN connection to dst:
 * mode 0 "<index>_<name>_<R|B>_VID_", mode 1 "<index>_<name>_<R|B>_VID_0",
 * mode 2 "<index>_<name>_<R|B>_VID_<vid>"; any other mode leaves dst
 * untouched. The name is cut to 47 characters and every ',' in it becomes
 * '_'; the letter is R when connType contains "Routed", otherwise B; the
 * index is printed as a signed decimal number. A NULL name or connType counts
 * as empty; a NULL dst is not written.
 * dst must hold QVS_GENERATE_NAME_SIZE (78) bytes. Always returns 0.
 * @param index connection index
 * @param name connection name
 * @param connType connection type text
 * @param vid VLAN identifier
 * @param mode 0, 1 or 2 as above
 * @param dst caller's buffer of QVS_GENERATE_NAME_SIZE bytes
 * @par Touches
 * nothing but dst.
 * @par Thread safety
 * MT-Safe. */
QVS_API int generateName(unsigned int index, const char *name, const char *connType,
                         int vid, uint8_t mode, char *dst);

/** Replaces every occurrence of `from` by `to` in the text held in a buffer of
 * `size` bytes, left to right, in place. The result is cut so that it fits:
 * the rewrite stops once its length reaches size - strlen(to) - 1 (the first
 * step always runs), then at most size - 1 characters are copied back, the
 * rest of the buffer is zeroed and its last byte set to 0.
 * Returns str. The text is returned unchanged when `from` is empty, any
 * pointer is NULL, no work buffer of `size` bytes can be allocated, or size
 * is smaller than strlen(to) + 1 (no room for one replacement).
 * @param str writable text in a buffer of size bytes
 * @param size bytes of the buffer
 * @param from text replaced
 * @param to replacement text
 * @par Touches
 * the buffer and a temporary heap block.
 * @par Thread safety
 * MT-Safe. */
QVS_API char *str_replace(char *str, size_t size, const char *from, const char *to);

/** 1 when every character of the text is a hexadecimal digit (0-9, a-f, A-F)
 * or the text is empty; 0 otherwise, and 0 for NULL.
 * @param str text
 * @par Touches
 * nothing.
 * @par Thread safety
 * MT-Safe. */
QVS_API int qvs_is_hex_string(const char *str);

/** 0 when the 6 bytes are all 0x00 or all 0xFF (or mac is NULL); 1 for any
 * other address, multicast ones included.
 * @param mac the 6 address bytes
 * @par Touches
 * nothing.
 * @par Thread safety
 * MT-Safe. */
QVS_API int isValidMac(const unsigned char *mac);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_STRING_HELPERS_H */
