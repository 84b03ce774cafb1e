// SPDX-License-Identifier: MIT
// The string helpers: replacement in place, the WAN connection name, the
// bounded substring replacement, hex-text and MAC checks.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_check.hpp"
#include "qvs_utils.h"

namespace {

// Splits the input at NUL bytes into up to four texts.
std::vector<std::string> texts(const uint8_t *data, size_t size) {
    std::vector<std::string> out(1);
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0 && out.size() < 4)
            out.emplace_back();
        else if (data[i] != 0)
            out.back() += static_cast<char>(data[i]);
    }
    while (out.size() < 4) out.emplace_back();
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 4 || size > 4096) return 0;
    const uint8_t a = data[0], b = data[1], c = data[2], d = data[3];
    const std::vector<std::string> t = texts(data + 4, size - 4);

    // qvsReplace: no `from` is left (when from and to differ and neither is
    // NUL; a NUL `to` cuts the text at the first replacement).
    std::vector<char> s(t[0].begin(), t[0].end());
    s.push_back('\0');
    qvsReplace(s.data(), static_cast<char>(a), static_cast<char>(b));
    if (a != 0 && b != 0 && a != b) FUZZ_CHECK(std::strchr(s.data(), static_cast<char>(a)) == nullptr);
    if (b != 0) FUZZ_CHECK(std::strlen(s.data()) == t[0].size());
    if (b == 0) FUZZ_CHECK(std::strlen(s.data()) == t[0].find(static_cast<char>(a)) || t[0].find(static_cast<char>(a)) == std::string::npos);

    // generateName: always within its 78 bytes.
    std::vector<char> name(QVS_GENERATE_NAME_SIZE, '\0');
    FUZZ_CHECK(generateName(static_cast<unsigned>(a) * 16777619u, t[1].c_str(), t[2].c_str(),
                            static_cast<int>(b) - 128 + c * 1000, static_cast<uint8_t>(d % 4), name.data()) == 0);
    FUZZ_CHECK(std::memchr(name.data(), 0, name.size()) != nullptr);

    // str_replace: the result fits its buffer.
    const size_t bufsize = t[0].size() + 1 + c % 64;
    std::vector<char> buf(bufsize, '\0');
    std::memcpy(buf.data(), t[0].data(), t[0].size());
    char *r = str_replace(buf.data(), bufsize, t[1].c_str(), t[2].c_str());
    FUZZ_CHECK(r == buf.data());
    FUZZ_CHECK(std::memchr(buf.data(), 0, bufsize) != nullptr);

    // qvs_is_hex_string against a plain reading.
    bool hex = true;
    for (char ch : t[3]) hex = hex && std::strchr("0123456789abcdefABCDEF", ch) != nullptr;
    FUZZ_CHECK(qvs_is_hex_string(t[3].c_str()) == (hex ? 1 : 0));

    // isValidMac: 0 only for all-zero and all-ones addresses.
    if (size >= 10) {
        const unsigned char *mac = data + 4;
        bool zero = true, ones = true;
        for (int i = 0; i < 6; ++i) {
            zero = zero && mac[i] == 0x00;
            ones = ones && mac[i] == 0xff;
        }
        FUZZ_CHECK(isValidMac(mac) == ((zero || ones) ? 0 : 1));
    }
    return 0;
}
