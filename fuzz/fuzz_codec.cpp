// Both Base64 families: every entry point on arbitrary input, and round
// trips (encode then decode gives the input back).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz_check.hpp"
#include "qvs_utils.h"

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
    for (size_t i = 0; i < size; ++i) {
        FUZZ_CHECK(b64_int(data[i]) <= 64);
        FUZZ_CHECK(isbase64(static_cast<char>(data[i])) == (std::strchr(b64_chr, data[i]) != nullptr && data[i] != 0));
    }

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
