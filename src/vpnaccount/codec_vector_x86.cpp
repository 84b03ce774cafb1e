// SPDX-License-Identifier: MIT
// The SSSE3 block loops of both Base64 codecs (x86-64 builds only; see
// codec_vector.hpp). Decoding: each block of 16 characters is classified
// with two nibble lookups, mapped to its 6-bit values with one offset
// lookup, and packed to 12 bytes with two multiply-adds and one byte
// shuffle. Encoding goes the other way: one shuffle, two multiplies to
// place the 6-bit values, one offset lookup to the characters.
#include <tmmintrin.h>

#include <cstdint>
#include <cstring>

#include "codec_vector.hpp"

// The C library's answer (cpu_features_x86.c: its header is C only).
extern "C" int qvs_codec_cpu_has_ssse3(void);

namespace qvs::codec {
namespace {

#define QVS_SSSE3 __attribute__((target("ssse3")))

// The classification: a character is in the alphabet exactly when its low
// nibble's class bit is not among the classes its high nibble rules out.
// Low nibble classes: 0 | 1-9 | A | B | C-E | F (bits 0 to 5). High nibble
// 2 allows B and F ('+', '/'), 3 allows 0 and 1-9 (digits), 4 and 6 all
// but 0 ('A'-'O', 'a'-'o'), 5 and 7 up to A ('P'-'Z', 'p'-'z'); every
// other high nibble (controls, 0x80 and up) rules out everything.
struct DecodeTables {
    __m128i low_class, high_rules_out, offset, nibble, slash, pair_weights, quad_weights, byte_order;
};

QVS_SSSE3 inline DecodeTables decode_tables() {
    return DecodeTables{
        _mm_setr_epi8(0x01, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x02, 0x04, 0x08, 0x10, 0x10, 0x10, 0x20),
        _mm_setr_epi8(0x3F, 0x3F, 0x17, 0x3C, 0x01, 0x38, 0x01, 0x38, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F, 0x3F),
        // What to add to a character to get its value, by high nibble; '/'
        // shares nibble 2 with '+' and is looked up one place lower.
        _mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0),
        _mm_set1_epi8(0x0F),
        _mm_set1_epi8('/'),
        // Two values as v0 * 64 + v1, then two of those as p0 * 4096 + p1.
        _mm_set1_epi32(0x01400140),
        _mm_set1_epi32(0x00011000),
        // Each 24-bit group's bytes, highest first, packed to 12 bytes.
        _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1),
    };
}

// Per character of the block: 0xFF in the alphabet, 0 outside.
QVS_SSSE3 inline __m128i alphabet_mask(const DecodeTables &t, __m128i chars, __m128i high) {
    __m128i rules = _mm_and_si128(_mm_shuffle_epi8(t.low_class, _mm_and_si128(chars, t.nibble)),
                                  _mm_shuffle_epi8(t.high_rules_out, high));
    return _mm_cmpeq_epi8(rules, _mm_setzero_si128());
}

// The characters' values (garbage outside the alphabet).
QVS_SSSE3 inline __m128i values(const DecodeTables &t, __m128i chars, __m128i high) {
    __m128i row = _mm_add_epi8(high, _mm_cmpeq_epi8(chars, t.slash));
    return _mm_add_epi8(chars, _mm_shuffle_epi8(t.offset, row));
}

// Packs 16 values (each below 64) to 12 bytes and stores exactly those.
QVS_SSSE3 inline void store_block(const DecodeTables &t, __m128i vals, unsigned char *out) {
    __m128i groups = _mm_madd_epi16(_mm_maddubs_epi16(vals, t.pair_weights), t.quad_weights);
    __m128i bytes = _mm_shuffle_epi8(groups, t.byte_order);
    _mm_storel_epi64(reinterpret_cast<__m128i *>(out), bytes);
    auto tail = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(bytes, 8)));
    std::memcpy(out + 8, &tail, sizeof tail);
}

QVS_SSSE3 std::size_t strict_blocks(const unsigned char *__restrict in, std::size_t blocks,
                                    unsigned char *__restrict out) {
    const DecodeTables t = decode_tables();
    std::size_t done = 0;
    for (; done < blocks; ++done) {
        __m128i chars = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + 16 * done));
        __m128i high = _mm_and_si128(_mm_srli_epi32(chars, 4), t.nibble);
        if (_mm_movemask_epi8(alphabet_mask(t, chars, high)) != 0xFFFF) break;
        store_block(t, values(t, chars, high), out + 12 * done);
    }
    return done;
}

QVS_SSSE3 std::size_t lenient_blocks(const unsigned char *__restrict in, std::size_t blocks,
                                     unsigned char *__restrict out) {
    const DecodeTables t = decode_tables();
    // '=' ends a quartet early only in its third and fourth places.
    const __m128i pad_places = _mm_set1_epi32(static_cast<int>(0xFFFF0000u));
    const __m128i pad = _mm_set1_epi8('=');
    std::size_t done = 0;
    for (; done < blocks; ++done) {
        __m128i chars = _mm_loadu_si128(reinterpret_cast<const __m128i *>(in + 16 * done));
        if (_mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(chars, pad), pad_places)) != 0) break;
        __m128i high = _mm_and_si128(_mm_srli_epi32(chars, 4), t.nibble);
        __m128i vals = _mm_and_si128(values(t, chars, high), alphabet_mask(t, chars, high));
        store_block(t, vals, out + 12 * done);
    }
    return done;
}

// The encoder's constants.
struct EncodeTables {
    __m128i spread, high_mask, high_shift, low_mask, low_shift, offset;
};

QVS_SSSE3 inline EncodeTables encode_tables() {
    return EncodeTables{
        // Group k's bytes a, b, c (input bytes 3k to 3k+2) as b, a, c, b: the
        // 32-bit lane's low half is a << 8 | b, its high half b << 8 | c.
        _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10),
        // The first and third values (bits 10-15 of the low half, 6-11 of
        // the high half), moved down to bits 0-5 by a high multiply...
        _mm_set1_epi32(0x0FC0FC00),
        _mm_set1_epi32(0x04000040),
        // ...the second and fourth (bits 4-9, 0-5) up to bits 8-13.
        _mm_set1_epi32(0x003F03F0),
        _mm_set1_epi32(0x01000010),
        // What to add to a value to get its character, by row: 0 for 26-51,
        // 1-12 for 52-63 (value - 51), 13 for 0-25.
        _mm_setr_epi8(71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0),
    };
}

QVS_SSSE3 std::size_t std_encode_blocks(const unsigned char *__restrict in, std::size_t blocks,
                                        unsigned char *__restrict out) {
    const EncodeTables t = encode_tables();
    const __m128i above_51 = _mm_set1_epi8(51);
    const __m128i below_26 = _mm_set1_epi8(26);
    const __m128i row_0_25 = _mm_set1_epi8(13);
    for (std::size_t k = 0; k < blocks; ++k) {
        __m128i lanes = _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i *>(in + 12 * k)), t.spread);
        __m128i vals = _mm_or_si128(_mm_mulhi_epu16(_mm_and_si128(lanes, t.high_mask), t.high_shift),
                                    _mm_mullo_epi16(_mm_and_si128(lanes, t.low_mask), t.low_shift));
        __m128i row = _mm_or_si128(_mm_subs_epu8(vals, above_51),
                                   _mm_and_si128(_mm_cmpgt_epi8(below_26, vals), row_0_25));
        __m128i chars = _mm_add_epi8(vals, _mm_shuffle_epi8(t.offset, row));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out + 16 * k), chars);
    }
    return blocks;
}

}  // namespace

std::size_t encode_blocks_std(const unsigned char *in, std::size_t blocks, unsigned char *out) {
    return qvs_codec_cpu_has_ssse3() != 0 ? std_encode_blocks(in, blocks, out) : 0;
}

std::size_t decode_blocks_strict(const unsigned char *in, std::size_t blocks, unsigned char *out) {
    return qvs_codec_cpu_has_ssse3() != 0 ? strict_blocks(in, blocks, out) : 0;
}

std::size_t decode_blocks_lenient(const unsigned char *in, std::size_t blocks, unsigned char *out) {
    return qvs_codec_cpu_has_ssse3() != 0 ? lenient_blocks(in, blocks, out) : 0;
}

}  // namespace qvs::codec
