// SPDX-License-Identifier: MIT
// Base64 throughput against OpenSSL's EVP_EncodeBlock/EVP_DecodeBlock and
// memcpy, on the same 3 MiB buffers in one process: the rounds of every
// contender are interleaved and each one's best round counts. Prints MB/s
// (MB = 10^6 bytes of binary data) and the ratio to OpenSSL; exits 1 when a
// codec is below 2 times OpenSSL. --no-target (emulated runs, whose
// timings say little about the hardware) only reports, and takes each
// contender's median round: under qemu-user a round now and then reads a
// clock that jumped, and the best round would be that outlier.
#include <openssl/evp.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include "qvs_utils.h"

namespace {

constexpr std::size_t kBytes = 3u << 20;  // divisible by 3: no padding
constexpr double kTarget = 2.0;

double now() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

struct Contender {
    const char *name;
    const char *baseline;  // the OpenSSL row it is compared with, or null
    void (*run)();
    double best = 1e30;
    std::vector<double> times{};
};

std::vector<unsigned char> g_raw;
std::string g_text;
std::vector<unsigned char> g_out;
volatile unsigned long g_sink;

void run_memcpy() {
    std::memcpy(g_out.data(), g_raw.data(), kBytes);
    g_sink = g_out[kBytes / 2];
}
void run_ossl_encode() {
    g_sink = static_cast<unsigned long>(EVP_EncodeBlock(g_out.data(), g_raw.data(), static_cast<int>(kBytes)));
}
void run_b64_encode() { g_sink = b64_encode(g_raw.data(), static_cast<unsigned>(kBytes), g_out.data()); }
void run_base64_encode() {
    base64_encode(reinterpret_cast<const char *>(g_raw.data()), kBytes, reinterpret_cast<char *>(g_out.data()),
                  g_out.size());
    g_sink = g_out[0];
}
void run_base64_encode_alloc() {
    char *p = nullptr;
    g_sink = base64_encode_alloc(reinterpret_cast<const char *>(g_raw.data()), kBytes, &p);
    std::free(p);
}
void run_ossl_decode() {
    g_sink = static_cast<unsigned long>(EVP_DecodeBlock(
        g_out.data(), reinterpret_cast<const unsigned char *>(g_text.data()), static_cast<int>(g_text.size())));
}
void run_b64_decode() {
    g_sink = b64_decode(reinterpret_cast<const unsigned char *>(g_text.data()), static_cast<unsigned>(g_text.size()),
                        g_out.data());
}
void run_base64_decode_ctx() {
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    std::size_t len = g_out.size();
    bool ok = base64_decode_ctx(&ctx, g_text.data(), g_text.size(), reinterpret_cast<char *>(g_out.data()), &len);
    g_sink = ok ? len : 0;
}
void run_base64_decode_alloc_ctx() {
    char *p = nullptr;
    std::size_t len = 0;
    bool ok = base64_decode_alloc_ctx(nullptr, g_text.data(), g_text.size(), &p, &len);
    std::free(p);
    g_sink = ok ? len : 0;
}

}  // namespace

int main(int argc, char **argv) {
    bool enforce = !(argc > 1 && std::strcmp(argv[1], "--no-target") == 0);
    int rounds = 30;
    if (const char *r = std::getenv("QVS_BENCH_ROUNDS")) rounds = std::atoi(r) > 0 ? std::atoi(r) : rounds;

    std::mt19937 gen(14);
    g_raw.resize(kBytes + 8);
    for (auto &b : g_raw) b = static_cast<unsigned char>(gen());
    g_out.assign(kBytes / 3 * 4 + 64, 0);

    // The encoded text, from OpenSSL, must equal both codecs' encodings.
    g_text.assign(kBytes / 3 * 4, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char *>(g_text.data()), g_raw.data(), static_cast<int>(kBytes));
    std::vector<unsigned char> mine(g_text.size() + 1);
    b64_encode(g_raw.data(), static_cast<unsigned>(kBytes), mine.data());
    if (std::memcmp(mine.data(), g_text.data(), g_text.size()) != 0) {
        std::fprintf(stderr, "base64 bench: b64_encode differs from OpenSSL\n");
        return 2;
    }
    base64_encode(reinterpret_cast<const char *>(g_raw.data()), kBytes, reinterpret_cast<char *>(mine.data()),
                  mine.size());
    if (std::memcmp(mine.data(), g_text.data(), g_text.size()) != 0) {
        std::fprintf(stderr, "base64 bench: base64_encode differs from OpenSSL\n");
        return 2;
    }
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    std::size_t len = g_out.size();
    if (!base64_decode_ctx(&ctx, g_text.data(), g_text.size(), reinterpret_cast<char *>(g_out.data()), &len) ||
        len != kBytes || std::memcmp(g_out.data(), g_raw.data(), kBytes) != 0 ||
        b64_decode(reinterpret_cast<const unsigned char *>(g_text.data()), static_cast<unsigned>(g_text.size()),
                   g_out.data()) != kBytes ||
        std::memcmp(g_out.data(), g_raw.data(), kBytes) != 0) {
        std::fprintf(stderr, "base64 bench: a decoder does not give the input back\n");
        return 2;
    }

    Contender all[] = {
        {"memcpy", nullptr, run_memcpy},
        {"OpenSSL EVP_EncodeBlock", nullptr, run_ossl_encode},
        {"b64_encode", "OpenSSL EVP_EncodeBlock", run_b64_encode},
        {"base64_encode", "OpenSSL EVP_EncodeBlock", run_base64_encode},
        {"base64_encode_alloc", "OpenSSL EVP_EncodeBlock", run_base64_encode_alloc},
        {"OpenSSL EVP_DecodeBlock", nullptr, run_ossl_decode},
        {"b64_decode", "OpenSSL EVP_DecodeBlock", run_b64_decode},
        {"base64_decode_ctx", "OpenSSL EVP_DecodeBlock", run_base64_decode_ctx},
        {"base64_decode_alloc_ctx", "OpenSSL EVP_DecodeBlock", run_base64_decode_alloc_ctx},
    };
    for (int r = 0; r < rounds; ++r) {
        for (auto &c : all) {
            double t0 = now();
            c.run();
            double t = now() - t0;
            if (t < c.best) c.best = t;
            c.times.push_back(t);
        }
    }
    if (!enforce) {
        for (auto &c : all) {
            std::sort(c.times.begin(), c.times.end());
            c.best = c.times[c.times.size() / 2];
        }
    }
    auto mbs = [](const Contender &c) { return static_cast<double>(kBytes) / c.best / 1e6; };
    auto find = [&](const char *name) -> const Contender & {
        for (auto &c : all)
            if (std::strcmp(c.name, name) == 0) return c;
        return all[0];
    };
    std::printf("Base64 on %zu bytes of binary data (%zu characters), %s of %d interleaved rounds\n", kBytes,
                g_text.size(), enforce ? "best" : "median", rounds);
    std::printf("  %-26s %10s  %s\n", "", "MB/s", "ratio");
    int below = 0;
    for (auto &c : all) {
        if (c.baseline == nullptr) {
            double ratio = mbs(c) / mbs(find("memcpy"));
            std::printf("  %-26s %10.1f  %5.3fx memcpy\n", c.name, mbs(c), ratio);
            continue;
        }
        double ratio = mbs(c) / mbs(find(c.baseline));
        bool ok = ratio >= kTarget;
        if (!ok) ++below;
        std::printf("  %-26s %10.1f  %5.2fx OpenSSL, %5.3fx memcpy  %s\n", c.name, mbs(c), ratio,
                    mbs(c) / mbs(find("memcpy")), ok ? "(meets 2x)" : "(BELOW 2x)");
    }
    if (below != 0 && enforce) {
        std::printf("base64 bench: %d codec(s) below %gx OpenSSL\n", below, kTarget);
        return 1;
    }
    return 0;
}
