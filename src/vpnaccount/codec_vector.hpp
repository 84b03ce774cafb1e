// SPDX-License-Identifier: MIT
// Vector block loops shared by the two Base64 codecs, x86-64 only.
//
// A block is 16 characters: four quartets, 12 bytes. The loops use SSSE3
// when the C library reports that the CPU runs it (x86-64 CPUs have for
// about twenty years; GLIBC_TUNABLES=glibc.cpu.hwcaps=-SSSE3 turns it off,
// which is how the suites also run the portable code on such a host).
// Otherwise, and on every other target, the codecs' portable word loops do
// all the work; both give the same bytes for every input.
#pragma once

#if defined(__x86_64__)
#define QVS_CODEC_VECTOR_BLOCKS 1

#include <cstddef>

namespace qvs::codec {

// Encodes `blocks` blocks of 12 bytes with the standard alphabet, 16
// characters each (no NUL), and returns the blocks encoded (0 without
// SSSE3). Reads 16 bytes per block: 4 past the block must be readable.
std::size_t encode_blocks_std(const unsigned char *in, std::size_t blocks, unsigned char *out);

// Decodes up to `blocks` blocks from `in` to `out` while every character of
// a block is in the standard alphabet, and returns the blocks decoded (0
// without SSSE3). Writes exactly 12 bytes per decoded block, nothing for
// the block it stops at.
std::size_t decode_blocks_strict(const unsigned char *in, std::size_t blocks, unsigned char *out);

// As decode_blocks_strict with the lenient values: a character outside the
// alphabet counts 0, and so does '=' in the first two places of a quartet.
// Stops at a block with '=' in the third or fourth place of a quartet.
std::size_t decode_blocks_lenient(const unsigned char *in, std::size_t blocks, unsigned char *out);

}  // namespace qvs::codec

#endif
