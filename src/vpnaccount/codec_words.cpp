// SPDX-License-Identifier: MIT
// The standard alphabet's pair table shared by the two Base64 encoders.
#include "codec_words.hpp"

namespace qvs::codec {
namespace {

constexpr std::array<std::uint16_t, 4096> make_pairs() {
    std::array<std::uint16_t, 4096> t{};
    for (unsigned x = 0; x < 4096; ++x) {
        t[x] = static_cast<std::uint16_t>(static_cast<unsigned char>(kStdAlphabet[x >> 6]) |
                                          static_cast<unsigned char>(kStdAlphabet[x & 63u]) << 8);
    }
    return t;
}

}  // namespace

constinit const std::array<std::uint16_t, 4096> kStdPairs = make_pairs();

}  // namespace qvs::codec
