// Command runners: run the line with /bin/sh, as the gateway does.
#include <cstdlib>
#include <cstring>

#include "libqv.h"

extern "C" {

int qv_do_cmd(const char *cmd) { return std::system(cmd); }
int qvs_system(const char *cmd) { return std::system(cmd); }
int libqv_dosystem(const char *cmd) { return std::system(cmd); }

char *libqv_safe_strncpy(char *dst, const char *src, size_t size) {
    if (dst == nullptr || size == 0) return dst;
    std::strncpy(dst, src != nullptr ? src : "", size - 1);
    dst[size - 1] = '\0';
    return dst;
}

}  // extern "C"
