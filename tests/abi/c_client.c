/* SPDX-License-Identifier: MIT */
/* A plain C program that uses the library as other gateway processes do:
 * cJSON and MD5 resolved through libqvs_utils.so alone. */
#include <stdio.h>
#include <string.h>

#include "cJSON.h"
#include "md5.h"
#include "qvs_utils.h"

static int failures;

static void check(int ok, const char *what) {
    if (!ok) {
        printf("FAIL: %s\n", what);
        failures++;
    }
}

static void md5_hex(const char *text, char out[33]) {
    MD5_CTX ctx;
    uint8_t digest[16];
    int i;
    MD5Init(&ctx);
    MD5Update(&ctx, (const uint8_t *)text, strlen(text));
    MD5Final(digest, &ctx);
    for (i = 0; i < 16; i++) sprintf(out + 2 * i, "%02x", digest[i]);
    out[32] = '\0';
}

/* The test suite of RFC 1321. */
static const char *const md5_suite[][2] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "57edf4a22be3c955ac49da2e2107b67a"},
};

static void test_md5(void) {
    size_t i;
    char hex[33];
    MD5_CTX ctx;
    uint8_t digest[16];
    for (i = 0; i < sizeof md5_suite / sizeof md5_suite[0]; i++) {
        md5_hex(md5_suite[i][0], hex);
        if (strcmp(hex, md5_suite[i][1]) != 0) {
            printf("MD5(\"%s\") = %s, expected %s\n", md5_suite[i][0], hex, md5_suite[i][1]);
            failures++;
        }
    }
    /* The same digest fed in pieces. */
    MD5Init(&ctx);
    MD5Update(&ctx, (const uint8_t *)"message ", 8);
    MD5Update(&ctx, (const uint8_t *)"digest", 6);
    MD5Final(digest, &ctx);
    for (i = 0; i < 16; i++) sprintf(hex + 2 * i, "%02x", digest[i]);
    check(strcmp(hex, "f96b697d7cb7938d525a2f31aaf161d0") == 0, "MD5 in two updates");
}

static void test_cjson(void) {
    const char *text = "{\"name\":\"vpn\",\"port\":443,\"list\":[true,null]}";
    cJSON *root = cJSON_Parse(text);
    char *printed;
    check(root != NULL, "cJSON_Parse");
    if (root == NULL) return;
    check(strcmp(cJSON_GetStringValue(cJSON_GetObjectItem(root, "name")), "vpn") == 0, "string member");
    check(cJSON_GetObjectItem(root, "port")->valueint == 443, "number member");
    printed = cJSON_Print(root);
    check(printed != NULL, "cJSON_Print");
    if (printed != NULL) {
        const char *want = "{\n\t\"name\":\t\"vpn\",\n\t\"port\":\t443,\n\t\"list\":\t[true, null]\n}";
        if (strcmp(printed, want) != 0) {
            printf("cJSON_Print gave:\n%s\n", printed);
            failures++;
        }
        cJSON_free(printed);
    }
    cJSON_Delete(root);
    check(cJSON_Parse("{\"open\":") == NULL, "cJSON_Parse refuses broken text");
}

int main(void) {
    const unsigned char broadcast[6] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    test_md5();
    test_cjson();
    /* And one of the library's own functions, from C. */
    check(isValidMac(broadcast) == 0, "isValidMac from C");
    if (failures == 0) printf("c_client: all checks passed\n");
    return failures == 0 ? 0 : 1;
}
