// SPDX-License-Identifier: MIT
// Base64 family: the lenient b64_* codec with its table b64_chr, and the
// strict base64_* codec with its streaming decoder.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "qvs_utils.h"
#include "qvsctl.hpp"

namespace {

// Text arguments: "hex:<digits>" gives raw bytes; otherwise the text itself,
// with "\n" standing for a line feed.
bool bytes_arg(const char *text, std::string &out) {
    if (std::strncmp(text, "hex:", 4) == 0) {
        std::vector<unsigned char> v;
        if (!qvsctl::parse_hex(text + 4, v)) return false;
        out.assign(v.begin(), v.end());
        return true;
    }
    out.clear();
    for (const char *p = text; *p != '\0'; ++p) {
        if (p[0] == '\\' && p[1] == 'n') {
            out.push_back('\n');
            ++p;
        } else {
            out.push_back(*p);
        }
    }
    return true;
}

void print_bytes(const char *name, const std::string &bytes) {
    qvsctl::print_hex(name, reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size());
    std::string shown;
    for (unsigned char c : bytes) shown.push_back(c >= 0x20 && c < 0x7f ? static_cast<char>(c) : '.');
    std::printf("%s_text: %s\n", name, shown.c_str());
}

bool size_arg(const char *text, unsigned int &out) {
    long long v = 0;
    if (!qvsctl::parse_int(text, 0, 4294967295LL, v)) return false;
    out = static_cast<unsigned int>(v);
    return true;
}

int run_b64_chr(char **) {
    qvsctl::print_text("b64_chr", b64_chr);
    return qvsctl::kRan;
}

int run_b64_int(char **argv) {
    unsigned int code;
    if (std::strlen(argv[0]) == 1) {
        code = static_cast<unsigned char>(argv[0][0]);
    } else if (!size_arg(argv[0], code)) {
        return qvsctl::kBadArgs;
    }
    qvsctl::print_result(b64_int(code));
    return qvsctl::kRan;
}

int run_b64e_size(char **argv) {
    unsigned int n;
    if (!size_arg(argv[0], n)) return qvsctl::kBadArgs;
    qvsctl::print_result(b64e_size(n));
    return qvsctl::kRan;
}

int run_b64d_size(char **argv) {
    unsigned int n;
    if (!size_arg(argv[0], n)) return qvsctl::kBadArgs;
    qvsctl::print_result(b64d_size(n));
    return qvsctl::kRan;
}

int run_b64_encode(char **argv) {
    std::string in;
    if (!bytes_arg(argv[0], in)) return qvsctl::kBadArgs;
    std::vector<unsigned char> out(b64e_size(static_cast<unsigned>(in.size())) + 1);
    unsigned r = b64_encode(reinterpret_cast<const unsigned char *>(in.data()), static_cast<unsigned>(in.size()),
                            out.data());
    qvsctl::print_result(r);
    qvsctl::print_text("text", reinterpret_cast<const char *>(out.data()));
    return qvsctl::kRan;
}

int run_b64_decode(char **argv) {
    std::string in;
    if (!bytes_arg(argv[0], in)) return qvsctl::kBadArgs;
    std::vector<unsigned char> out(b64d_size(static_cast<unsigned>(in.size())) + 1);
    unsigned r = b64_decode(reinterpret_cast<const unsigned char *>(in.data()), static_cast<unsigned>(in.size()),
                            out.data());
    qvsctl::print_result(r);
    print_bytes("bytes", std::string(reinterpret_cast<const char *>(out.data()), r));
    return qvsctl::kRan;
}

int run_base64_encode(char **argv) {
    std::string in;
    long long cap = 0;
    if (!bytes_arg(argv[0], in) || !qvsctl::parse_int(argv[1], 0, 65536, cap)) return qvsctl::kBadArgs;
    std::vector<char> out(static_cast<std::size_t>(cap) + 1, '\0');
    base64_encode(in.data(), in.size(), out.data(), static_cast<std::size_t>(cap));
    std::size_t n = 0;
    while (n < static_cast<std::size_t>(cap) && out[n] != '\0') ++n;
    qvsctl::print_text("text", std::string(out.data(), n).c_str());
    qvsctl::print_int("terminated", n < static_cast<std::size_t>(cap) ? 1 : 0);
    return qvsctl::kRan;
}

int run_base64_encode_alloc(char **argv) {
    std::string in;
    if (!bytes_arg(argv[0], in)) return qvsctl::kBadArgs;
    char *out = nullptr;
    std::size_t r = base64_encode_alloc(in.data(), in.size(), &out);
    qvsctl::print_result(static_cast<long long>(r));
    qvsctl::print_text("text", out);
    std::free(out);
    return qvsctl::kRan;
}

int run_isbase64(char **argv) {
    if (std::strlen(argv[0]) != 1) {
        std::fprintf(stderr, "qvsctl: isbase64 takes one character\n");
        return qvsctl::kBadArgs;
    }
    qvsctl::print_result(isbase64(argv[0][0]) ? 1 : 0);
    return qvsctl::kRan;
}

int run_base64_decode_ctx_init(char **) {
    base64_decode_context ctx;
    std::memset(&ctx, 0x55, sizeof ctx);
    base64_decode_ctx_init(&ctx);
    qvsctl::print_int("i", ctx.i);
    return qvsctl::kRan;
}

bool context_arg(const char *text, bool &with_ctx) {
    if (std::strcmp(text, "ctx") == 0 || std::strcmp(text, "none") == 0) {
        with_ctx = text[0] == 'c';
        return true;
    }
    std::fprintf(stderr, "qvsctl: say 'ctx' (one context for all pieces) or 'none'\n");
    return false;
}

int run_base64_decode_ctx(char **argv) {
    bool with_ctx = false;
    if (!context_arg(argv[0], with_ctx)) return qvsctl::kBadArgs;
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    // Each piece is one call ("" is a flush call with a context).
    for (int i = 1; argv[i] != nullptr; ++i) {
        std::string in;
        if (!bytes_arg(argv[i], in)) return qvsctl::kBadArgs;
        std::vector<char> out(in.size() + 3);
        std::size_t len = out.size();
        bool ok = base64_decode_ctx(with_ctx ? &ctx : nullptr, in.data(), in.size(), out.data(), &len);
        std::printf("call %d:\n", i);
        qvsctl::print_result(ok ? 1 : 0);
        print_bytes("bytes", std::string(out.data(), len));
        if (with_ctx) qvsctl::print_int("ctx.i", ctx.i);
    }
    return qvsctl::kRan;
}

int run_base64_decode_alloc_ctx(char **argv) {
    bool with_ctx = false;
    std::string in;
    if (!context_arg(argv[0], with_ctx) || !bytes_arg(argv[1], in)) return qvsctl::kBadArgs;
    base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    char *out = nullptr;
    std::size_t len = 0;
    bool ok = base64_decode_alloc_ctx(with_ctx ? &ctx : nullptr, in.data(), in.size(), &out, &len);
    qvsctl::print_result(ok ? 1 : 0);
    if (out != nullptr) print_bytes("bytes", std::string(out, len));
    else qvsctl::print_text("bytes", nullptr);
    std::free(out);
    return qvsctl::kRan;
}

const qvsctl::Command kCommands[] = {
    {"b64_chr", "", "the alphabet table b64_encode writes from", 0, 0, run_b64_chr},
    {"b64_int", "<character|code>", "6-bit value of one character (64 for '=', 0 if not Base64)", 1, 1, run_b64_int},
    {"b64e_size", "<n>", "encoded size of n bytes (32-bit)", 1, 1, run_b64e_size},
    {"b64d_size", "<n>", "decoded size bound of n characters (32-bit)", 1, 1, run_b64d_size},
    {"b64_encode", "<text|hex:bytes>", "lenient encoder", 1, 1, run_b64_encode},
    {"b64_decode", "<text>", "lenient decoder (bad characters count as 0, partial groups dropped)", 1, 1,
     run_b64_decode},
    {"base64_encode", "<text|hex:bytes> <capacity>", "bounded encoder, cut at the capacity", 2, 2,
     run_base64_encode},
    {"base64_encode_alloc", "<text|hex:bytes>", "encoder into a new block", 1, 1, run_base64_encode_alloc},
    {"isbase64", "<character>", "1 if the character is in the alphabet", 1, 1, run_isbase64},
    {"base64_decode_ctx_init", "", "a fresh decoding context", 0, 0, run_base64_decode_ctx_init},
    {"base64_decode_ctx", "<ctx|none> <piece>...",
     "strict decoder, one call per piece (\\n = line feed; with ctx, \"\" flushes)", 2, 16, run_base64_decode_ctx},
    {"base64_decode_alloc_ctx", "<ctx|none> <text>", "strict decoder into a new block", 2, 2,
     run_base64_decode_alloc_ctx},
};

}  // namespace

QVSCTL_FAMILY(g_base64, "base64", "the two Base64 codecs", kCommands);
