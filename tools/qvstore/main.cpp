// SPDX-License-Identifier: MIT
// qvstore: the simulated gateway's store and state from the command line.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "qvsim.h"

namespace {

void usage() {
    std::puts(
        "usage: qvstore <command> [arguments]\n"
        "  dump [saved]                       the whole store (runtime, or the saved copy) as a model file\n"
        "  classes                            object classes: OID, path, record layout\n"
        "  get <object> <param>               one parameter\n"
        "  set <object> <param> <value>       write one parameter (runtime store)\n"
        "  add <object>                       add an instance (or the next one under a parent)\n"
        "  delete <object>                    delete an instance and what lies below it\n"
        "  exists <object>                    1 or 0\n"
        "  <object> is an object path (InternetGatewayDevice.WiFi.SSID.3) or an OID and an\n"
        "  instance list (399 3; '-' for a single object)\n"
        "  load <model file>                  load a model as runtime store and saved copy\n"
        "  reset                              fresh gateway from the default model\n"
        "  save | restart                     runtime -> saved copy | saved copy -> runtime\n"
        "  journal [clear]                    show (or clear) the journal\n"
        "  journal reads on|off               journal lookups and reads too (off after reset)\n"
        "  fault <text> | fault clear         inject a fault (see qvsim.h) | clear all\n"
        "  modules <module> <index> <type>    what a simulated kernel module holds\n"
        "  device [<key> [<value>]]           simulated device state\n"
        "state directory: $QVSIM_DIR or /var/qvsim");
}

const char *inst_arg(const char *a) { return std::strcmp(a, "-") == 0 ? "" : a; }

bool oid_arg(const char *a, int &oid) {
    char *end = nullptr;
    long v = std::strtol(a, &end, 10);
    if (end == a || *end != '\0' || v <= 0 || v > 100000) {
        std::fprintf(stderr, "qvstore: bad OID %s\n", a);
        return false;
    }
    oid = static_cast<int>(v);
    return true;
}

int print_owned(char *text) {
    if (text == nullptr) return 1;
    std::fputs(text, stdout);
    std::free(text);
    return 0;
}

int done(int r) {
    if (r != 0) std::fprintf(stderr, "qvstore: failed (%d)\n", r);
    return r == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 2) {
        usage();
        return 2;
    }
    std::string cmd = argv[1];
    int n = argc - 2;
    char **a = argv + 2;
    int oid = 0;
    if (cmd == "dump" && n <= 1) return print_owned(qvsim_dump_text(n == 1 && std::strcmp(a[0], "saved") == 0));
    if (cmd == "classes" && n == 0) return print_owned(qvsim_classes_text());
    // An object path stands for "<oid> <instance>".
    char inst_buf[64] = {};
    char oid_buf[16] = {};
    std::string resolved_args[8];
    char *expanded[8] = {};
    if (n >= 1 && n <= 6 && std::strchr(a[0], '.') != nullptr && cmd != "load" && cmd != "fault" &&
        cmd != "device") {
        int o = 0;
        if (qvsim_resolve(a[0], &o, inst_buf, sizeof inst_buf) != 0) {
            std::fprintf(stderr, "qvstore: no object %s\n", a[0]);
            return 1;
        }
        std::snprintf(oid_buf, sizeof oid_buf, "%d", o);
        resolved_args[0] = oid_buf;
        resolved_args[1] = inst_buf[0] != '\0' ? inst_buf : "-";
        for (int i = 1; i < n; ++i) resolved_args[i + 1] = a[i];
        ++n;
        for (int i = 0; i < n; ++i) expanded[i] = resolved_args[i].data();
        a = expanded;
    }
    if (cmd == "get" && n == 3 && oid_arg(a[0], oid)) {
        char out[2048] = {};
        int r = qvsim_get(oid, inst_arg(a[1]), a[2], out, sizeof out);
        if (r == 0) std::puts(out);
        return done(r);
    }
    if (cmd == "set" && n == 4 && oid_arg(a[0], oid)) return done(qvsim_set(oid, inst_arg(a[1]), a[2], a[3]));
    if (cmd == "add" && n == 2 && oid_arg(a[0], oid)) return done(qvsim_add_instance(oid, inst_arg(a[1])));
    if (cmd == "delete" && n == 2 && oid_arg(a[0], oid)) return done(qvsim_delete_instance(oid, inst_arg(a[1])));
    if (cmd == "exists" && n == 2 && oid_arg(a[0], oid)) {
        std::printf("%d\n", qvsim_exists(oid, inst_arg(a[1])));
        return 0;
    }
    if (cmd == "load" && n == 1) return done(qvsim_load_model(a[0]));
    if (cmd == "reset" && n == 0) return done(qvsim_reset());
    if (cmd == "save" && n == 0) return done(qvsim_save());
    if (cmd == "restart" && n == 0) return done(qvsim_restart());
    if (cmd == "journal" && n == 0) return print_owned(qvsim_journal_text());
    if (cmd == "journal" && n == 1 && std::strcmp(a[0], "clear") == 0) return done(qvsim_journal_clear());
    if (cmd == "journal" && n == 2 && std::strcmp(a[0], "reads") == 0) {
        if (std::strcmp(a[1], "on") == 0) return done(qvsim_journal_reads(1));
        if (std::strcmp(a[1], "off") == 0) return done(qvsim_journal_reads(0));
    }
    if (cmd == "fault" && n == 1 && std::strcmp(a[0], "clear") == 0) return done(qvsim_fault_clear());
    if (cmd == "fault" && n >= 1) {
        std::string text;
        for (int i = 0; i < n; ++i) {
            if (i > 0) text += ' ';
            text += a[i];
        }
        return done(qvsim_fault_add(text.c_str()));
    }
    if (cmd == "modules" && n == 3) {
        int r = print_owned(qvsim_module_list(a[0], std::atoi(a[1]), std::atoi(a[2])));
        std::fputc('\n', stdout);
        return r;
    }
    if (cmd == "device" && n == 0) return print_owned(qvsim_device_text());
    if (cmd == "device" && n == 1) {
        char out[256] = {};
        int r = qvsim_device_get(a[0], out, sizeof out);
        if (r == 0) std::puts(out);
        return done(r);
    }
    if (cmd == "device" && n == 2) return done(qvsim_device_set(a[0], a[1]));
    usage();
    return 2;
}
