// SPDX-License-Identifier: MIT
// Both Base64 families: every entry point on arbitrary input, and round
// trips (encode then decode gives the input back).
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz_check.hpp"
#include "qvs_utils.h"

// b64_int and isbase64 depend on the byte alone, and on the alphabet table,
// which nothing here changes: each byte value is checked the first time an
// input holds it (a check per input byte made long inputs several times
// slower and could find nothing new).
static void check_byte_classes(const uint8_t *data, size_t size) {
    static std::array<bool, 256> checked{};
    static unsigned unchecked = 256;
    for (size_t i = 0; i < size && unchecked > 0; ++i) {
        const uint8_t c = data[i];
        if (checked[c]) continue;
        checked[c] = true;
        --unchecked;
        FUZZ_CHECK(b64_int(c) <= 64);
        const bool letter = c != 0 && std::memchr(b64_chr, c, 64) != nullptr;
        FUZZ_CHECK(isbase64(static_cast<char>(c)) == letter);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size > 65536) return 0;
    const unsigned len = static_cast<unsigned>(size);
    const char *text = reinterpret_cast<const char *>(data);

    // Lenient codec.
    std::vector<unsigned char> enc(b64e_size(len) + 1);
    const unsigned n = b64_encode(data, len, enc.data());
    FUZZ_CHECK(n == b64e_size(len));
    FUZZ_CHECK(enc[n] == 0);
    std::vector<unsigned char> dec(b64d_size(n) + 1);
    const unsigned m = b64_decode(enc.data(), n, dec.data());
    FUZZ_CHECK(m == len);
    FUZZ_CHECK(len == 0 || std::memcmp(dec.data(), data, len) == 0);
    std::vector<unsigned char> raw(b64d_size(len) + 1);
    FUZZ_CHECK(b64_decode(data, len, raw.data()) <= b64d_size(len));
    check_byte_classes(data, size);

    // Strict codec: allocating encoder, bounded encoder, decoders.
    char *out = nullptr;
    const size_t el = base64_encode_alloc(text, size, &out);
    FUZZ_CHECK(out != nullptr);
    FUZZ_CHECK(std::strlen(out) == el);
    const size_t cut = size > 0 ? data[0] % (el + 2) : 0;
    std::vector<char> bounded(cut + 1, '\x7f');
    base64_encode(text, size, bounded.data(), cut);
    FUZZ_CHECK(std::memcmp(bounded.data(), out, cut < el ? cut : el) == 0);
    char *back = nullptr;
    size_t bl = 0;
    FUZZ_CHECK(base64_decode_alloc_ctx(nullptr, out, el, &back, &bl));
    FUZZ_CHECK(back != nullptr && bl == size);
    FUZZ_CHECK(size == 0 || std::memcmp(back, data, size) == 0);
    std::free(back);
    std::free(out);

    // Arbitrary text: without a context, then with one in two pieces and a flush.
    char *any = nullptr;
    size_t al = 0;
    if (base64_decode_alloc_ctx(nullptr, text, size, &any, &al)) FUZZ_CHECK(al <= 3 * (size / 4) + 2);
    std::free(any);
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    const size_t half = size / 2;
    std::vector<char> piece(size + 3);
    size_t pl = piece.size() / 2;
    base64_decode_ctx(&ctx, text, half, piece.data(), &pl);
    FUZZ_CHECK(pl <= piece.size() / 2);
    FUZZ_CHECK(ctx.i <= 4);
    size_t rest = piece.size();
    base64_decode_ctx(&ctx, text + half, size - half, piece.data(), &rest);
    FUZZ_CHECK(rest <= piece.size());
    size_t none = 0;
    base64_decode_ctx(&ctx, "", 0, piece.data(), &none);
    FUZZ_CHECK(none == 0);
    return 0;
}
