/* SPDX-License-Identifier: MIT */
/*
 * libqvs_utils, the two Base64 codecs: lenient with 32-bit sizes, strict and
 * bounded.
 *
 * Callers include <qvs_utils.h>, which includes every family's header;
 * this one also compiles on its own.
 */
#ifndef QVS_UTILS_BASE64_H
#define QVS_UTILS_BASE64_H

#include <stdbool.h> /* bool, in C as in C++ */
#include <stddef.h>

#include "api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Base64 codecs ======================================================= */

/* Lenient codec, 32-bit sizes, no failures reported, no bounds checked. */

/** The alphabet b64_encode writes from: 64 characters and a NUL. Writable:
 * changing it changes the encoding of the whole process. */
extern QVS_API char b64_chr[65];

/** 6-bit value of one character: A-Z 0-25, a-z 26-51, 0-9 52-61, '+' 62,
 * '/' 63, '=' 64, anything else 0.
 * @param ch character code
 * @par Touches
 * nothing.
 * @par Thread safety
 * MT-Safe. */
QVS_API unsigned int b64_int(unsigned int ch);

/** Encoded size of `in_size` bytes: 4 * ceil(in_size / 3) modulo 2^32, NUL not
 * counted.
 * @param in_size number of bytes
 * @par Touches
 * nothing.
 * @par Thread safety
 * MT-Safe. */
QVS_API unsigned int b64e_size(unsigned int in_size);

/** Decoded size bound of `in_size` characters: (3 * in_size mod 2^32) >> 2.
 * @param in_size number of characters
 * @par Touches
 * nothing.
 * @par Thread safety
 * MT-Safe. */
QVS_API unsigned int b64d_size(unsigned int in_size);

/** Encodes `len` bytes with '=' padding into `out`, which must hold
 * b64e_size(len) + 1 bytes; NUL-terminates. Returns the characters written
 * (without the NUL).
 * @param in bytes to encode
 * @param len number of bytes
 * @param out caller's buffer of b64e_size(len) + 1 bytes
 * @par Touches
 * nothing but out (reads b64_chr).
 * @par Thread safety
 * MT-Safe race:b64_chr: the alphabet is the writable table b64_chr, which must
 * not be changed while another thread encodes. */
QVS_API unsigned int b64_encode(const unsigned char *in, unsigned int len, unsigned char *out);

/** Decodes the whole quartets of `len` characters into `out` (at least
 * b64d_size(len) bytes); a trailing group of 1 to 3 characters is dropped,
 * characters outside the alphabet count as 0, a '=' third character ends the
 * quartet after one byte, a '=' fourth after two. Writes no NUL. Returns the
 * bytes written.
 * @param in characters to decode
 * @param len number of characters
 * @param out caller's buffer of at least b64d_size(len) bytes
 * @par Touches
 * nothing but out.
 * @par Thread safety
 * MT-Safe. */
QVS_API unsigned int b64_decode(const unsigned char *in, unsigned int len, unsigned char *out);

/* Strict, bounded codec, lengths of the size type. */

/** Encodes `inlen` bytes into at most `outlen` characters (cut exactly there,
 * even inside a quartet); a NUL follows only when room is left.
 * @param in bytes to encode
 * @param inlen number of bytes
 * @param out caller's buffer
 * @param outlen bytes of out
 * @par Touches
 * nothing but out.
 * @par Thread safety
 * MT-Safe. */
QVS_API void base64_encode(const char *in, size_t inlen, char *out, size_t outlen);

/** Encodes into a new malloc'ed, NUL-terminated block stored in *out (free()
 * it). Returns the encoded length; 0 with *out NULL when the size overflows
 * size_t; (size_t)-1 with *out NULL when memory is short.
 * @param in bytes to encode
 * @param inlen number of bytes
 * @param out receives the new block (free() it)
 * @par Touches
 * the heap.
 * @par Thread safety
 * MT-Safe. */
QVS_API size_t base64_encode_alloc(const char *in, size_t inlen, char **out);

/** True when `ch` is one of the 64 alphabet characters ('=' and '\n' are not).
 * @param ch character
 * @par Touches
 * nothing.
 * @par Thread safety
 * MT-Safe. */
QVS_API bool isbase64(char ch);

/** Streaming decoder state, owned by the caller: `i` characters (0 to 4) of a
 * quartet gathered across calls in `buf`.
 * Layout: 8 bytes on every target, `i` at offset 0, `buf` at offset 4. */
struct base64_decode_context {
    unsigned int i; /**< characters of the quartet gathered so far, 0 to 4 (offset 0) */
    char buf[4];    /**< the gathered characters (offset 4) */
};

/** Starts a decoding context (i = 0).
 * @param ctx caller's context
 * @par Touches
 * nothing but ctx.
 * @par Thread safety
 * MT-Safe race:ctx: a context must not be used by two threads at once. */
QVS_API void base64_decode_ctx_init(struct base64_decode_context *ctx);

/** Decodes `inlen` characters into `out`, whose capacity is *outlen; bytes
 * beyond it are dropped. *outlen becomes the bytes written (including those
 * written before a fault). Without a context the input must be whole
 * quartets, '=' only in the last one. With a context, line feeds are skipped,
 * an incomplete quartet waits in the context for the next call, '=' may end
 * any quartet, and a call with `inlen` 0 flushes (fails when 1 to 3
 * characters are held). Returns true when all input was consumed.
 * @param ctx caller's context, or NULL
 * @param in characters to decode
 * @param inlen number of characters (0 with a context: flush)
 * @param out caller's buffer
 * @param outlen in: capacity of out; out: bytes written
 * @par Touches
 * nothing but ctx and out.
 * @par Thread safety
 * MT-Safe race:ctx: a context must not be used by two threads at once. */
QVS_API bool base64_decode_ctx(struct base64_decode_context *ctx, const char *in, size_t inlen, char *out,
                               size_t *outlen);

/** As base64_decode_ctx into a new malloc'ed block of 3 * (inlen / 4) + 2
 * bytes stored in *out (free() it); *outlen (if not NULL) gets the bytes
 * decoded. Returns false (and *out NULL) on bad input; true with *out NULL
 * when memory is short.
 * @param ctx caller's context, or NULL
 * @param in characters to decode
 * @param inlen number of characters
 * @param out receives the new block (free() it)
 * @param outlen receives the bytes decoded, or NULL
 * @par Touches
 * the heap.
 * @par Thread safety
 * MT-Safe race:ctx: a context must not be used by two threads at once. */
QVS_API bool base64_decode_alloc_ctx(struct base64_decode_context *ctx, const char *in, size_t inlen,
                                     char **out, size_t *outlen);

#ifdef __cplusplus
}
#endif

#endif /* QVS_UTILS_BASE64_H */
