// SPDX-License-Identifier: MIT
// Control of the simulated gateway for tests and tools (qvsim.h).
#include "qvsim.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "kernel_modules.hpp"
#include "sim.hpp"

using namespace qvsim;

namespace {

const ObjClass *target(int oid, const char *instance, std::string &inst) {
    const ObjClass *c = find_class(oid);
    Inst i;
    if (c == nullptr || !parse_inst(instance, i) || i.count != c->levels) return nullptr;
    inst = i.text();
    return c;
}

char *dup_text(const std::string &s) {
    char *p = static_cast<char *>(std::malloc(s.size() + 1));
    if (p == nullptr) return nullptr;
    std::memcpy(p, s.c_str(), s.size() + 1);
    return p;
}

bool fault_text_valid(const char *text) {
    std::istringstream in(text);
    std::string w[5];
    int n = 0;
    while (n < 5 && in >> w[n]) ++n;
    std::string extra;
    if (in >> extra) return false;
    auto number = [](const std::string &s) {
        return !s.empty() && s.find_first_not_of("0123456789") == std::string::npos;
    };
    auto instance = [](const std::string &s) {
        Inst i;
        return parse_inst(s.c_str(), i);
    };
    if (n == 1) return w[0] == "attach" || w[0] == "paramlist" || w[0] == "write";
    if (n == 2) return (w[0] == "object" && number(w[1])) || w[0] == "write" || w[0] == "read" || w[0] == "device" ||
                      w[0] == "listadd";
    if (n == 3) return w[0] == "object" && number(w[1]) && instance(w[2]);
    if (n == 4) return w[0] == "read" && w[2] == "after" && number(w[3]);
    return false;
}

}  // namespace

extern "C" {

const char *qvsim_dir(void) { return qvsim_common::state_dir(); }

int qvsim_reset(void) {
    qvsim::ApiLock api_lock;
    sqlite3 *d = db();
    if (d == nullptr) return -1;
    {
        Tx tx(d);
        if (!tx.ok()) return -1;
        std::string error;
        std::string model = default_model_path();
        exec(d, "DELETE FROM fault; DELETE FROM device; DELETE FROM meta WHERE key='journal_reads';");
        device_defaults();
        if (!load_model_into(d, model.c_str(), error)) {
            std::fprintf(stderr, "qvsim: default model %s: %s\n", model.c_str(), error.c_str());
            return -1;
        }
        if (!tx.commit()) return -1;
    }
    qvsim_journal_clear();
    qvsim::reset_modules();
    return 0;
}

int qvsim_restart(void) {
    qvsim::ApiLock api_lock;
    if (db() == nullptr) return -1;
    if (!copy_area(kSaved, kRuntime)) return -1;
    // A reboot loses the kernel's and the switch's state: the simulated
    // modules, the QoS host entries, port and VLAN settings. Facts (area,
    // province, CPU load, the Wi-Fi driver's behaviour) and the network
    // devices (real interfaces of the namespace) stay.
    for (const char *prefix : {"qos.", "port.", "switch.", "vlanmode"})
        for (auto &p : device_all(prefix)) device_del(p.first);
    qvsim::reset_modules();
    return 0;
}

int qvsim_save(void) {
    qvsim::ApiLock api_lock;
    if (db() == nullptr) return -1;
    return copy_area(kRuntime, kSaved) ? 0 : -1;
}

int qvsim_load_model(const char *path) {
    qvsim::ApiLock api_lock;
    if (path == nullptr || db() == nullptr) return -1;
    std::string error;
    if (!load_model_file(path, error)) {
        std::fprintf(stderr, "qvsim: model %s: %s\n", path, error.c_str());
        return -1;
    }
    return 0;
}

int qvsim_get(int oid, const char *instance, const char *param, char *out, size_t size) {
    qvsim::ApiLock api_lock;
    if (param == nullptr || out == nullptr || size == 0 || db() == nullptr) return -1;
    std::string inst;
    const ObjClass *c = target(oid, instance, inst);
    if (c == nullptr) return -1;
    const Field *f = find_field(*c, param);
    std::string v;
    if (f == nullptr || !param_get(kRuntime, *c, inst, *f, v)) return -1;
    std::snprintf(out, size, "%s", v.c_str());
    return 0;
}

int qvsim_set(int oid, const char *instance, const char *param, const char *value) {
    qvsim::ApiLock api_lock;
    if (param == nullptr || db() == nullptr) return -1;
    std::string inst;
    const ObjClass *c = target(oid, instance, inst);
    if (c == nullptr) return -1;
    const Field *f = find_field(*c, param);
    std::string norm;
    if (f == nullptr) {
        std::fprintf(stderr, "qvsim_set: object %d has no parameter %s\n", oid, param);
        return -1;
    }
    if (!normalise(*f, value, norm)) return -1;
    Tx tx(db());
    if (!tx.ok() || !object_exists(kRuntime, oid, inst) || !param_put(kRuntime, oid, inst, param, norm) ||
        !tx.commit())
        return -1;
    refresh_records(oid, inst);
    return 0;
}

int qvsim_add_instance(int oid, const char *instance) {
    qvsim::ApiLock api_lock;
    if (db() == nullptr) return -1;
    const ObjClass *c = find_class(oid);
    Inst i;
    if (c == nullptr || c->levels == 0 || !parse_inst(instance, i)) return -1;
    Tx tx(db());
    if (!tx.ok()) return -1;
    if (i.count == c->levels - 1) i.v[i.count++] = next_instance(kRuntime, *c, i);
    if (i.count != c->levels || i.v[c->levels - 1] < 1) return -1;
    if (!object_add(kRuntime, oid, i.text()) || !tx.commit()) return -1;
    return 0;
}

int qvsim_delete_instance(int oid, const char *instance) {
    qvsim::ApiLock api_lock;
    if (db() == nullptr) return -1;
    std::string inst;
    const ObjClass *c = target(oid, instance, inst);
    if (c == nullptr || c->levels == 0) return -1;
    Tx tx(db());
    if (!tx.ok() || !object_delete(kRuntime, *c, inst) || !tx.commit()) return -1;
    return 0;
}

int qvsim_exists(int oid, const char *instance) {
    qvsim::ApiLock api_lock;
    if (db() == nullptr) return 0;
    std::string inst;
    if (target(oid, instance, inst) == nullptr) return 0;
    return object_exists(kRuntime, oid, inst) ? 1 : 0;
}

int qvsim_resolve(const char *path, int *oid, char *instance, size_t size) {
    qvsim::ApiLock api_lock;
    if (path == nullptr || oid == nullptr || instance == nullptr || size == 0) return -1;
    Inst i;
    const ObjClass *c = resolve_path(path, i);
    if (c == nullptr || i.count != c->levels) return -1;
    *oid = c->oid;
    std::snprintf(instance, size, "%s", i.text().c_str());
    return 0;
}

char *qvsim_journal_text(void) {
    qvsim::ApiLock api_lock;
    std::ifstream in(qvsim_common::journal_path());
    std::stringstream ss;
    if (in) ss << in.rdbuf();
    return dup_text(ss.str());
}

int qvsim_journal_count(const char *kind) {
    qvsim::ApiLock api_lock;
    if (kind == nullptr) return -1;
    std::ifstream in(qvsim_common::journal_path());
    std::string line, prefix = std::string(kind) + "\t";
    int n = 0;
    while (std::getline(in, line))
        if (line == kind || line.compare(0, prefix.size(), prefix) == 0) ++n;
    return n;
}

int qvsim_journal_clear(void) {
    qvsim::ApiLock api_lock;
    if (!qvsim_common::make_dirs(qvsim_common::state_dir())) return -1;
    std::FILE *f = std::fopen(qvsim_common::journal_path().c_str(), "w");
    if (f == nullptr) return -1;
    std::fclose(f);
    return 0;
}

int qvsim_fault_add(const char *fault) {
    qvsim::ApiLock api_lock;
    if (fault == nullptr || !fault_text_valid(fault) || db() == nullptr) return -1;
    sqlite3_stmt *s = nullptr;
    if (sqlite3_prepare_v2(db(), "INSERT INTO fault(text) VALUES(?)", -1, &s, nullptr) != SQLITE_OK) return -1;
    sqlite3_bind_text(s, 1, fault, -1, SQLITE_TRANSIENT);
    int r = sqlite3_step(s);
    sqlite3_finalize(s);
    return r == SQLITE_DONE ? 0 : -1;
}

int qvsim_fault_clear(void) {
    qvsim::ApiLock api_lock;
    if (db() == nullptr) return -1;
    return exec(db(), "DELETE FROM fault;") ? 0 : -1;
}

int qvsim_device_get(const char *key, char *out, size_t size) {
    qvsim::ApiLock api_lock;
    if (key == nullptr || out == nullptr || size == 0 || db() == nullptr) return -1;
    std::string v;
    if (!device_get(key, v)) return -1;
    std::snprintf(out, size, "%s", v.c_str());
    return 0;
}

int qvsim_device_set(const char *key, const char *value) {
    qvsim::ApiLock api_lock;
    if (key == nullptr || db() == nullptr) return -1;
    if (value == nullptr) return device_del(key) ? 0 : -1;
    return device_put(key, value) ? 0 : -1;
}

char *qvsim_device_text(void) {
    qvsim::ApiLock api_lock;
    if (db() == nullptr) return dup_text("");
    std::string out;
    for (auto &p : device_all("")) out += p.first + " = " + p.second + "\n";
    return dup_text(out);
}

char *qvsim_dump_text(int saved) {
    qvsim::ApiLock api_lock;
    if (db() == nullptr) return dup_text("");
    int area = saved ? kSaved : kRuntime;
    std::string out;
    std::size_t n = 0;
    const ObjClass *const *all = all_classes(n);
    for (std::size_t k = 0; k < n; ++k) {
        const ObjClass &c = *all[k];
        for (const std::string &inst : instances(area, c.oid)) {
            Inst i;
            parse_inst(inst.c_str(), i);
            // Appended piecewise: GCC 12 at -O3 warns falsely on "[" + string.
            out += '[';
            out += format_path(c, i);
            out += "]\n";
            for (std::size_t f = 0; f < c.field_count; ++f) {
                std::string v;
                param_get(area, c, inst, c.fields[f], v);
                bool quote = v.empty() || v.front() == ' ' || v.back() == ' ';
                out += std::string(c.fields[f].name) + " = " + (quote ? "\"" + v + "\"" : v) + "\n";
            }
            out += "\n";
        }
    }
    return dup_text(out);
}

char *qvsim_classes_text(void) {
    qvsim::ApiLock api_lock;
    std::string out;
    std::size_t n = 0;
    const ObjClass *const *all = all_classes(n);
    static const char *const kinds[] = {"text", "u8", "i8", "u16", "u32", "mac"};
    for (std::size_t k = 0; k < n; ++k) {
        const ObjClass &c = *all[k];
        out += std::to_string(c.oid) + "\t" + c.path + "\tlevels " + std::to_string(c.levels) + "\tsize " +
               std::to_string(c.record_size) + "\n";
        for (std::size_t f = 0; f < c.field_count; ++f) {
            const Field &fd = c.fields[f];
            out += std::string("\t") + fd.name + "\t" + kinds[static_cast<int>(fd.kind)] + "\toffset " +
                   std::to_string(fd.offset) + "\tsize " + std::to_string(fd.size) + "\n";
        }
    }
    return dup_text(out);
}

}  // extern "C"
