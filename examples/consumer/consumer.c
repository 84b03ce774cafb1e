/* SPDX-License-Identifier: MIT */
/* A first program against an installed libqvs_utils: a Base64 round trip,
 * a WAN connection display name, and cJSON through the library. Plain C;
 * built with CMake (find_package) or with a Makefile (pkg-config).
 * Exit status 0 when every result is the expected one. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* qvs_utils.h is the one header to include; each family's header under
 * qvs_utils/ may also be included alone, as the Base64 one is here first. */
#include <qvs_utils/base64.h>
#include <qvs_utils.h>

/* cJSON's functions come with libqvs_utils (it exports them). The firmware
 * image's own cJSON.h declares them; this example declares the few it uses,
 * with the object kept opaque. */
typedef struct cJSON cJSON;
cJSON *cJSON_CreateObject(void);
cJSON *cJSON_CreateString(const char *string);
void cJSON_AddItemToObject(cJSON *object, const char *string, cJSON *item);
char *cJSON_Print(const cJSON *item);
cJSON *cJSON_Parse(const char *value);
cJSON *cJSON_GetObjectItem(const cJSON *object, const char *string);
char *cJSON_GetStringValue(const cJSON *item);
void cJSON_Delete(cJSON *item);
void cJSON_free(void *object);

static int failures;

static void expect_text(const char *what, const char *got, const char *want) {
    int ok = got != NULL && strcmp(got, want) == 0;
    printf("%-22s %s%s\n", what, got != NULL ? got : "(null)", ok ? "" : "   <- WRONG");
    if (!ok) {
        printf("%-22s %s   <- expected\n", "", want);
        ++failures;
    }
}

int main(void) {
    /* Base64: the bounded encoder and the strict decoder. */
    const char plain[] = "gateway\n";
    char encoded[16];
    base64_encode(plain, strlen(plain), encoded, sizeof encoded);
    expect_text("base64_encode", encoded, "Z2F0ZXdheQo=");

    char decoded[16] = {0};
    size_t decoded_len = sizeof decoded - 1;
    struct base64_decode_context ctx;
    base64_decode_ctx_init(&ctx);
    int ok = base64_decode_ctx(&ctx, encoded, strlen(encoded), decoded, &decoded_len);
    decoded[decoded_len] = '\0';
    expect_text("base64_decode_ctx", ok ? decoded : "(failed)", plain);

    /* The lenient codec gives the same text. */
    unsigned char lenient[16];
    unsigned int n = b64_encode((const unsigned char *)plain, (unsigned int)strlen(plain), lenient);
    expect_text("b64_encode", n == 12 ? (const char *)lenient : "(wrong length)", "Z2F0ZXdheQo=");

    /* A WAN connection's display name. */
    char name[QVS_GENERATE_NAME_SIZE];
    memset(name, 0, sizeof name);
    generateName(2, "INTERNET,TR069", "IP_Routed", 41, 2, name);
    expect_text("generateName", name, "2_INTERNET_TR069_R_VID_41");

    /* cJSON, resolved through libqvs_utils. */
    cJSON *req = cJSON_CreateObject();
    cJSON_AddItemToObject(req, "CmdType", cJSON_CreateString("GET_VPN_ACCOUNT"));
    char *text = cJSON_Print(req);
    cJSON *back = text != NULL ? cJSON_Parse(text) : NULL;
    expect_text("cJSON round trip", back != NULL ? cJSON_GetStringValue(cJSON_GetObjectItem(back, "CmdType")) : NULL,
                "GET_VPN_ACCOUNT");
    cJSON_Delete(back);
    cJSON_free(text);
    cJSON_Delete(req);

    printf("consumer: %s\n", failures == 0 ? "ok" : "FAILED");
    return failures == 0 ? 0 : 1;
}
