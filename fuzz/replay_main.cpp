// SPDX-License-Identifier: MIT
// Plain driver for the fuzz harnesses: runs the harness body once over every
// file of the corpus directories (or files) given, in name order. Used by
// the test suites on every preset (under qemu on armhf, where libFuzzer is
// not available). Exit status 0 when every input ran, 1 when none was found.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace {

std::vector<uint8_t> read_all(const std::string &path) {
    std::vector<uint8_t> out;
    std::FILE *f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) return out;
    uint8_t buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) out.insert(out.end(), buf, buf + n);
    std::fclose(f);
    return out;
}

}  // namespace

int main(int argc, char **argv) {
    if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argc, &argv);
    std::vector<std::string> inputs;
    for (int i = 1; i < argc; ++i) {
        struct stat st {};
        if (::stat(argv[i], &st) != 0) continue;
        if (!S_ISDIR(st.st_mode)) {
            inputs.push_back(argv[i]);
            continue;
        }
        DIR *d = ::opendir(argv[i]);
        if (d == nullptr) continue;
        while (dirent *e = ::readdir(d)) {
            std::string name = e->d_name;
            if (name != "." && name != "..") inputs.push_back(std::string(argv[i]) + "/" + name);
        }
        ::closedir(d);
    }
    std::sort(inputs.begin(), inputs.end());
    for (const std::string &path : inputs) {
        std::vector<uint8_t> data = read_all(path);
        LLVMFuzzerTestOneInput(data.data(), data.size());
    }
    std::printf("replayed %zu inputs\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
