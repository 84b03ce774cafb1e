// SPDX-License-Identifier: MIT
// The configuration store API of libqv over the SQLite store: handles,
// instance addresses, records, parameter lists, reads, writes, instances,
// statistics, saving and events. Every effect is journaled.
#include <sqlite3.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "libqv.h"
#include "sim.hpp"

struct qvs_param_list {
    struct Entry {
        std::string name;
        uint32_t type;
        const void *value;
    };
    std::vector<Entry> entries;
};

namespace qvsim {
namespace {

// ---- instance addresses ---------------------------------------------------
// Bits 0-15, 16-31 and 32-47 hold instance numbers 1 to 3, bits 48-49 their
// count; bits 60-62 mark a level whose number lies outside 0 to 65535 and
// bit 63 an address that did not parse: no lookup finds such an address.
constexpr uint64_t kIaBad = 1ull << 63;
constexpr uint64_t kIaBadLevels = 7ull << 60;

QVS_IA ia_make(const Inst &inst) {
    uint64_t ia = 0;
    for (int i = 0; i < inst.count; ++i) {
        if (inst.v[i] < 0 || inst.v[i] > 0xffff) ia |= 1ull << (60 + i);
        ia |= (static_cast<uint64_t>(inst.v[i]) & 0xffffu) << (16 * i);
    }
    ia |= static_cast<uint64_t>(inst.count) << 48;
    return ia;
}

bool ia_inst(QVS_IA ia, Inst &inst) {
    inst = Inst();
    if (ia & (kIaBad | kIaBadLevels)) return false;
    inst.count = static_cast<int>((ia >> 48) & 3u);
    for (int i = 0; i < inst.count; ++i) inst.v[i] = static_cast<long>((ia >> (16 * i)) & 0xffffu);
    return true;
}

// ---- handles and records ---------------------------------------------------

std::set<QVS_XMLSHM_HANDLE> g_handles;
unsigned g_handle_seq = 0;

struct Record {
    int oid;
    std::string inst;
    unsigned char *buf;
    uint32_t size;
};
std::vector<Record> g_records;  // position = index + 1
std::map<std::pair<int, std::string>, std::size_t> g_record_index;

bool handle_ok(QVS_XMLSHM_HANDLE h) { return h != 0 && g_handles.count(h) != 0; }

void free_records() {
    for (auto &r : g_records) std::free(r.buf);
    g_records.clear();
    g_record_index.clear();
}

void fill_record(const ObjClass &c, const std::string &inst, unsigned char *buf) {
    std::memset(buf, 0, c.record_size);
    for (auto &p : object_params(kRuntime, c.oid, inst)) {
        const Field *f = find_field(c, p.first.c_str());
        if (f != nullptr) put_field(*f, p.second, buf);
    }
}

// The record of an existing instance, materialised and kept until the last
// handle of this process detaches.
void *record_of(const ObjClass &c, const std::string &inst) {
    auto key = std::make_pair(c.oid, inst);
    auto it = g_record_index.find(key);
    std::size_t idx;
    if (it == g_record_index.end()) {
        unsigned char *buf = static_cast<unsigned char *>(std::calloc(1, c.record_size + 1));
        if (buf == nullptr) return nullptr;
        g_records.push_back(Record{c.oid, inst, buf, c.record_size});
        idx = g_records.size() - 1;
        g_record_index[key] = idx;
    } else {
        idx = it->second;
    }
    fill_record(c, inst, g_records[idx].buf);
    return g_records[idx].buf;
}

// Re-reads the cached record of one instance (and of the instances below it
// when deleted) so that this process's records show its own writes.
void refresh_records_local(int oid, const std::string &inst) {
    auto it = g_record_index.find(std::make_pair(oid, inst));
    if (it == g_record_index.end()) return;
    const ObjClass *c = find_class(oid);
    if (c != nullptr) fill_record(*c, inst, g_records[it->second].buf);
}

// Instance list text of an address for the read journal; "invalid" for an
// address that finds nothing whatever the store holds.
std::string ia_text(QVS_IA ia) {
    Inst i;
    return ia_inst(ia, i) ? i.text() : std::string("invalid");
}

// Looks an instance up for the library: honours the "object" faults.
const ObjClass *lookup(int oid, QVS_IA ia, std::string &inst) {
    const ObjClass *c = find_class(oid);
    Inst i;
    if (c == nullptr || !ia_inst(ia, i) || i.count != c->levels) return nullptr;
    inst = i.text();
    if (fault_object(oid, inst)) return nullptr;
    if (!object_exists(kRuntime, oid, inst)) return nullptr;
    return c;
}

std::string type_text(uint32_t type) {
    char buf[16];
    if (type > 0xff)
        std::snprintf(buf, sizeof buf, "0x%08x", type);
    else
        std::snprintf(buf, sizeof buf, "%u", type);
    return buf;
}

// Converts a written value (type code and pointer) to the caller's text (for
// the journal) and to the field's stored form. False for an unknown type code
// or a value that does not fit the field.
bool encode(const Field &f, uint32_t type, const void *value, std::string &given, std::string &stored) {
    if (value == nullptr) return false;
    switch (type) {
        case QVS_TYPE_STRING:
        case QVS_TYPE_DATETIME: given = static_cast<const char *>(value); break;
        case QVS_TYPE_BOOL: {
            uint8_t v;
            std::memcpy(&v, value, 1);
            given = std::to_string(v);
            break;
        }
        case QVS_TYPE_INT8: {
            int8_t v;
            std::memcpy(&v, value, 1);
            given = std::to_string(v);
            break;
        }
        case QVS_TYPE_UINT32:
        case QVS_TYPE_HOSTVALUE: {
            uint32_t v;
            std::memcpy(&v, value, 4);
            given = std::to_string(v);
            break;
        }
        default: return false;
    }
    return normalise(f, given.c_str(), stored);
}

struct Write {
    const Field *field;
    uint32_t type;
    std::string given;
    std::string stored;
};

// The Wi-Fi driver's side of a scan request: a radio's
// "X_QV_DiagnosticsState" written with a request ("Requested",
// "Request_Force", "Request_partial") is answered at once as the device fact
// "wifi.scan" says: "complete" sets it to "Complete" and the radio's
// neighbour table count to the fact "wifi.scan_results" (when set), "error"
// sets "Error"; anything else (the default) leaves the request pending.
// While "wifi.scan_errors" holds a count above 0, a request is answered
// "Error" instead and the count goes down by one.
void simulate_driver(const ObjClass &c, const std::string &inst, const std::vector<Write> &writes) {
    if (c.oid != QVS_OID_WIFI_RADIO) return;
    for (auto &w : writes) {
        if (std::strcmp(w.field->name, "X_QV_DiagnosticsState") != 0 || w.stored.rfind("Request", 0) != 0) continue;
        std::string mode, count, errors;
        // A driver busy for the next few requests: each answered "Error".
        if (device_get("wifi.scan_errors", errors)) {
            const unsigned long left = std::strtoul(errors.c_str(), nullptr, 10);
            if (left > 0) {
                param_put(kRuntime, c.oid, inst, w.field->name, "Error");
                device_put("wifi.scan_errors", std::to_string(left - 1));
                continue;
            }
        }
        if (!device_get("wifi.scan", mode)) return;
        if (mode == "complete") {
            param_put(kRuntime, c.oid, inst, w.field->name, "Complete");
            if (device_get("wifi.scan_results", count) && object_exists(kRuntime, QVS_OID_WIFI_NEIGHBOR, inst))
                param_put(kRuntime, QVS_OID_WIFI_NEIGHBOR, inst, "ResultNumberOfEntries",
                          std::to_string(std::strtoul(count.c_str(), nullptr, 10)));
        } else if (mode == "error") {
            param_put(kRuntime, c.oid, inst, w.field->name, "Error");
        }
    }
}

// Applies writes to one instance in one transaction: all or nothing. The
// "write" faults fail the whole batch with -1 before anything is written.
int apply_writes(const ObjClass &c, const std::string &inst, const std::vector<Write> &writes, bool notify) {
    for (auto &w : writes)
        if (fault_active("write", w.field->name)) return -1;
    sqlite3 *d = db();
    Tx tx(d);
    if (!tx.ok() || !object_exists(kRuntime, c.oid, inst)) return -1;
    for (auto &w : writes)
        if (!param_put(kRuntime, c.oid, inst, w.field->name, w.stored)) return -1;
    simulate_driver(c, inst, writes);
    if (!tx.commit()) return -1;
    if (!notify) journal("nnotify", std::to_string(c.oid), inst);
    for (auto &w : writes) journal("set", std::to_string(c.oid), inst, w.field->name, type_text(w.type), w.given);
    refresh_records_local(c.oid, inst);
    return 0;
}

// Builds the writes of a list for one class; -1 on an unknown name or value.
int writes_of(const ObjClass &c, const QVS_PARAM_LIST *list, std::vector<Write> &out) {
    for (auto &e : list->entries) {
        const Field *f = find_field(c, e.name.c_str());
        if (f == nullptr) return -1;
        Write w{f, e.type, {}, {}};
        if (!encode(*f, e.type, e.value, w.given, w.stored)) return -1;
        out.push_back(std::move(w));
    }
    return 0;
}

int apply_list(QVS_XMLSHM_HANDLE handle, QVS_PTR_OFFSET pos, QVS_PARAM_LIST *list, bool notify) {
    if (!handle_ok(handle) || list == nullptr || pos == 0 || pos > g_records.size()) return -1;
    const Record &r = g_records[pos - 1];
    const ObjClass *c = find_class(r.oid);
    if (c == nullptr) return -1;
    std::vector<Write> writes;
    if (writes_of(*c, list, writes) != 0) return -1;
    return apply_writes(*c, r.inst, writes, notify);
}

}  // namespace

void refresh_records(int oid, const std::string &inst) { refresh_records_local(oid, inst); }

}  // namespace qvsim

using namespace qvsim;

extern "C" {

QVS_XMLSHM_HANDLE qvs_xmlShmInit(void) {
    qvsim::ApiLock api_lock;
    if (db() == nullptr) return 0;
    if (fault_active("attach")) {
        journal("attach-refused");
        return 0;
    }
    QVS_XMLSHM_HANDLE h;
    do {
        h = ((static_cast<uint32_t>(::getpid()) & 0xffffu) << 16) | (++g_handle_seq & 0xffffu);
    } while (h == 0 || g_handles.count(h) != 0);
    g_handles.insert(h);
    journal("attach", std::to_string(h));
    return h;
}

int qvs_xmlShmDeInit(QVS_XMLSHM_HANDLE *handle) {
    qvsim::ApiLock api_lock;
    if (handle == nullptr) return -1;
    if (*handle == 0) return 0;
    QVS_XMLSHM_HANDLE h = *handle;
    *handle = 0;
    if (g_handles.erase(h) == 0) return -1;
    journal("detach", std::to_string(h));
    if (g_handles.empty()) free_records();
    return 0;
}

QVS_IA qvsXml_ConstructIAValue(const char *file, const char *func, int line, int count, const char *format, ...) {
    qvsim::ApiLock api_lock;
    char text[128] = {};
    if (format != nullptr) {
        va_list ap;
        va_start(ap, format);
        std::vsnprintf(text, sizeof text, format, ap);
        va_end(ap);
    }
    Inst inst;
    if (count < 1 || count > 3 || !parse_inst(text, inst) || inst.count != count) {
        std::fprintf(stderr, "[%s:%s:%d] qvsXml_ConstructIAValue: bad instance list \"%s\" for count %d\n",
                     file ? file : "", func ? func : "", line, text, count);
        Inst bad;
        bad.count = count >= 1 && count <= 3 ? count : 1;
        return ia_make(bad) | kIaBad;
    }
    return ia_make(inst);
}

QVS_IA qvsXmlSetIAValue(int level, QVS_IA ia, int instance) {
    qvsim::ApiLock api_lock;
    if (level == 0) level = 1;  // 0 and 1 both name the first level
    if (level < 1 || level > 3) return ia;
    int count = static_cast<int>((ia >> 48) & 3u);
    if (count < level) count = level;
    uint64_t shift = 16u * static_cast<unsigned>(level - 1);
    uint64_t bad = 1ull << (60 + level - 1);
    QVS_IA out = (ia & ~((0xffffull << shift) | (3ull << 48) | bad)) |
                 ((static_cast<uint64_t>(static_cast<uint32_t>(instance)) & 0xffffu) << shift) |
                 (static_cast<uint64_t>(count) << 48);
    if (instance < 0 || instance > 0xffff) out |= bad;
    return out;
}

void *qvsXml_GetObjectByOID(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA ia, int flag) {
    qvsim::ApiLock api_lock;
    (void)flag;
    if (!handle_ok(handle)) return nullptr;
    std::string inst;
    const ObjClass *c = lookup(oid, ia, inst);
    void *rec = c != nullptr ? record_of(*c, inst) : nullptr;
    journal_lookup(std::to_string(oid), ia_text(ia), rec != nullptr);
    return rec;
}

void *qvsXml_GetObjectByName(QVS_XMLSHM_HANDLE handle, const char *path, int flag) {
    qvsim::ApiLock api_lock;
    (void)flag;
    if (!handle_ok(handle) || path == nullptr) return nullptr;
    Inst i;
    const ObjClass *c = resolve_path(path, i);
    if (c == nullptr || i.count != c->levels) {
        journal_lookup("-", path, false);
        return nullptr;
    }
    QVS_IA ia = ia_make(i);
    const int oid = c->oid;
    std::string inst;
    c = (ia & kIaBadLevels) ? nullptr : lookup(oid, ia, inst);
    void *rec = c != nullptr ? record_of(*c, inst) : nullptr;
    journal_lookup(std::to_string(oid), i.text(), rec != nullptr);
    return rec;
}

QVS_PTR_OFFSET qvsXmlGetPtrOffset(QVS_XMLSHM_HANDLE handle, const void *record) {
    qvsim::ApiLock api_lock;
    if (!handle_ok(handle) || record == nullptr) return 0;
    for (std::size_t i = 0; i < g_records.size(); ++i)
        if (g_records[i].buf == record) return static_cast<QVS_PTR_OFFSET>(i + 1);
    return 0;
}

QVS_PARAM_LIST *newParameterList(void) {
    qvsim::ApiLock api_lock;
    if (db() != nullptr && fault_active("paramlist")) return nullptr;
    return new (std::nothrow) qvs_param_list();
}

int setParameterToList(QVS_PARAM_LIST *list, const char *name, uint32_t type, const void *value) {
    qvsim::ApiLock api_lock;
    if (list == nullptr || name == nullptr || value == nullptr) return -1;
    if (db() != nullptr && fault_active("listadd", name)) return -1;
    list->entries.push_back({name, type, value});
    return 0;
}

void freeParameterList(QVS_PARAM_LIST *list) { delete list; }

int qvsXml_setParameterIndirectByParaList(QVS_XMLSHM_HANDLE handle, QVS_PTR_OFFSET pos, QVS_PARAM_LIST *list) {
    qvsim::ApiLock api_lock;
    return apply_list(handle, pos, list, true);
}

int qvsXml_setParameterNnotify(QVS_XMLSHM_HANDLE handle, QVS_PTR_OFFSET pos, QVS_PARAM_LIST *list, int flag) {
    qvsim::ApiLock api_lock;
    (void)flag;
    return apply_list(handle, pos, list, false);
}

int qvsXml_setOneParameterByOIDIndirect(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA ia, const char *name,
                                        uint32_t type, const void *value) {
    qvsim::ApiLock api_lock;
    if (!handle_ok(handle) || name == nullptr) return -1;
    std::string inst;
    const ObjClass *c = lookup(oid, ia, inst);
    if (c == nullptr) return -2;
    const Field *f = find_field(*c, name);
    if (f == nullptr) return -3;
    std::vector<Write> writes{Write{f, type, {}, {}}};
    if (!encode(*f, type, value, writes[0].given, writes[0].stored)) return -1;
    return apply_writes(*c, inst, writes, true);
}

// The read itself; qvsXml_getParameterByOID journals its result.
static int get_parameter(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA ia, const char *name, void *out) {
    if (!handle_ok(handle) || name == nullptr || out == nullptr) return -1;
    std::string inst;
    const ObjClass *c = lookup(oid, ia, inst);
    if (c == nullptr) return -2;
    const Field *f = find_field(*c, name);
    if (f == nullptr) return -3;
    if (fault_read(name)) return -5;
    std::string v;
    if (!param_get(kRuntime, *c, inst, *f, v)) return -2;
    switch (f->kind) {
        case Kind::Text: {
            std::size_t n = v.size() < 31 ? v.size() : 31;
            std::memcpy(out, v.data(), n);
            static_cast<char *>(out)[n] = '\0';
            break;
        }
        case Kind::Mac: {
            unsigned char rec[8] = {};
            Field tmp = *f;
            tmp.offset = 0;
            put_field(tmp, v, rec);
            std::memcpy(out, rec, 6);
            break;
        }
        case Kind::U8:
        case Kind::I8: {
            unsigned char rec[1] = {};
            Field tmp = *f;
            tmp.offset = 0;
            put_field(tmp, v, rec);
            std::memcpy(out, rec, 1);
            break;
        }
        case Kind::U16:
        case Kind::U32: {
            uint32_t x = static_cast<uint32_t>(std::strtoull(v.c_str(), nullptr, 10));
            std::memcpy(out, &x, 4);
            break;
        }
    }
    return 0;
}

int qvsXml_getParameterByOID(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA ia, const char *name, void *out) {
    qvsim::ApiLock api_lock;
    const int result = get_parameter(handle, oid, ia, name, out);
    journal_get(oid, ia_text(ia), name != nullptr ? name : "(null)", result);
    return result;
}

int qvsXml_addObjectByOIDIWithParaListIndirect(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA parent,
                                               QVS_PARAM_LIST *list) {
    qvsim::ApiLock api_lock;
    if (!handle_ok(handle)) return -1;
    const ObjClass *c = find_class(oid);
    Inst i;
    if (c == nullptr || c->levels == 0 || !ia_inst(parent, i)) return -1;
    if (i.count != c->levels && i.count != c->levels - 1) return -1;
    std::vector<Write> writes;
    if (list != nullptr && writes_of(*c, list, writes) != 0) return -1;
    for (auto &w : writes)
        if (fault_active("write", w.field->name)) return -1;
    sqlite3 *d = db();
    Tx tx(d);
    if (!tx.ok()) return -1;
    if (i.count == c->levels - 1) i.v[i.count++] = next_instance(kRuntime, *c, i);
    if (i.v[c->levels - 1] < 1 || i.v[c->levels - 1] > 0xffff) return -1;
    std::string inst = i.text();
    if (fault_object(oid, inst) || !object_add(kRuntime, oid, inst)) return -1;
    for (auto &w : writes)
        if (!param_put(kRuntime, oid, inst, w.field->name, w.stored)) return -1;
    if (!tx.commit()) return -1;
    journal("add", std::to_string(oid), inst);
    for (auto &w : writes) journal("set", std::to_string(oid), inst, w.field->name, type_text(w.type), w.given);
    refresh_records_local(oid, inst);
    return 0;
}

int qvsXml_delObjectByOIDIAIndirect(QVS_XMLSHM_HANDLE handle, int oid, QVS_IA ia) {
    qvsim::ApiLock api_lock;
    if (!handle_ok(handle)) return -1;
    std::string inst;
    const ObjClass *c = lookup(oid, ia, inst);
    if (c == nullptr || c->levels == 0) return -1;
    sqlite3 *d = db();
    Tx tx(d);
    if (!tx.ok() || !object_delete(kRuntime, *c, inst) || !tx.commit()) return -1;
    journal("del", std::to_string(oid), inst);
    return 0;
}

int qvsXml_ObjectStats(int oid, QVS_IA ia, int arg) {
    qvsim::ApiLock api_lock;
    Inst i;
    std::string inst = ia_inst(ia, i) ? i.text() : std::string("?");
    journal("stats", std::to_string(oid), inst, std::to_string(arg));
    if (db() == nullptr) return -1;
    std::string found;
    const ObjClass *c = lookup(oid, ia, found);
    if (c == nullptr) return -1;
    const Field *count = find_field(*c, "ResultNumberOfEntries");
    if (count == nullptr) return 0;
    std::string v;
    if (!param_get(kRuntime, *c, found, *count, v)) return -1;
    return static_cast<int>(std::strtol(v.c_str(), nullptr, 10));
}

int qvsXml_SaveIndirect(QVS_XMLSHM_HANDLE handle) {
    qvsim::ApiLock api_lock;
    if (!handle_ok(handle)) return -1;
    if (!copy_area(kRuntime, kSaved)) return -1;
    journal("save", "indirect");
    return 0;
}

int qvsXml_SaveNoReply(QVS_XMLSHM_HANDLE handle) {
    qvsim::ApiLock api_lock;
    if (!handle_ok(handle)) return -1;
    if (!copy_area(kRuntime, kSaved)) return -1;
    journal("save", "noreply");
    return 0;
}

int qvs_eventNotify(int event, int length, const void *data) {
    qvsim::ApiLock api_lock;
    std::string hex;
    if (data != nullptr && length > 0) {
        const unsigned char *p = static_cast<const unsigned char *>(data);
        char b[3];
        for (int k = 0; k < length; ++k) {
            std::snprintf(b, sizeof b, "%02x", p[k]);
            hex += b;
        }
    }
    journal("event", std::to_string(event), std::to_string(length), hex);
    return 0;
}

}  // extern "C"
