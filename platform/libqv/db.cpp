// SPDX-License-Identifier: MIT
// The store on SQLite: one database file "store.db" under the state
// directory holds the runtime store (area 0), the saved copy (area 1), the
// active faults and the simulated device state. Every process opens its own
// connection; SQLite's locking (WAL, busy timeout) serialises the writers.
#include <dlfcn.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "sim.hpp"

namespace qvsim {
namespace {

sqlite3 *g_db = nullptr;
pid_t g_db_pid = 0;
// Connections a forked child inherited: never used or closed here (the
// parent owns them), but still pointed at, so that memcheck doesn't count
// them as lost in the child.
std::vector<sqlite3 *> g_inherited;
std::string g_db_dir;

const char kSchema[] =
    "CREATE TABLE IF NOT EXISTS obj(area INTEGER, oid INTEGER, inst TEXT, PRIMARY KEY(area, oid, inst));"
    "CREATE TABLE IF NOT EXISTS param(area INTEGER, oid INTEGER, inst TEXT, name TEXT, value TEXT,"
    " PRIMARY KEY(area, oid, inst, name));"
    "CREATE TABLE IF NOT EXISTS fault(id INTEGER PRIMARY KEY AUTOINCREMENT, text TEXT, hits INTEGER DEFAULT 0);"
    "CREATE TABLE IF NOT EXISTS device(key TEXT PRIMARY KEY, value TEXT);"
    "CREATE TABLE IF NOT EXISTS meta(key TEXT PRIMARY KEY, value TEXT);";

// A prepared statement, finalised on every path.
class Stmt {
public:
    Stmt(sqlite3 *d, const char *sql) {
        if (d == nullptr || sqlite3_prepare_v2(d, sql, -1, &s_, nullptr) != SQLITE_OK) {
            if (d != nullptr) std::fprintf(stderr, "qvsim: sql error: %s (%s)\n", sqlite3_errmsg(d), sql);
            s_ = nullptr;
        }
    }
    ~Stmt() { sqlite3_finalize(s_); }
    Stmt(const Stmt &) = delete;
    Stmt &operator=(const Stmt &) = delete;
    explicit operator bool() const { return s_ != nullptr; }
    Stmt &bind(int i, long long v) {
        if (s_) sqlite3_bind_int64(s_, i, v);
        return *this;
    }
    Stmt &bind(int i, const std::string &v) {
        if (s_) sqlite3_bind_text(s_, i, v.c_str(), static_cast<int>(v.size()), SQLITE_TRANSIENT);
        return *this;
    }
    // SQLITE_ROW / SQLITE_DONE / error code.
    int step() { return s_ ? sqlite3_step(s_) : SQLITE_ERROR; }
    bool run() {
        int r = step();
        return r == SQLITE_DONE || r == SQLITE_ROW;
    }
    long long col_int(int i) { return sqlite3_column_int64(s_, i); }
    std::string col_text(int i) {
        const unsigned char *t = sqlite3_column_text(s_, i);
        return t ? std::string(reinterpret_cast<const char *>(t), static_cast<std::size_t>(sqlite3_column_bytes(s_, i)))
                 : std::string();
    }

private:
    sqlite3_stmt *s_ = nullptr;
};

sqlite3 *open_store() {
    const char *dir = qvsim_common::state_dir();
    if (!qvsim_common::make_dirs(dir)) {
        std::fprintf(stderr, "qvsim: cannot create %s\n", dir);
        return nullptr;
    }
    std::string path = std::string(dir) + "/store.db";
    sqlite3 *d = nullptr;
    if (sqlite3_open_v2(path.c_str(), &d, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                        nullptr) != SQLITE_OK) {
        std::fprintf(stderr, "qvsim: cannot open %s\n", path.c_str());
        sqlite3_close(d);
        return nullptr;
    }
    sqlite3_busy_timeout(d, 30000);
    exec(d, "PRAGMA journal_mode=WAL;");
    exec(d, "PRAGMA synchronous=NORMAL;");
    {
        Tx tx(d);
        if (!tx.ok() || !exec(d, kSchema)) {
            sqlite3_close(d);
            return nullptr;
        }
        bool initialised = false;
        {
            Stmt s(d, "SELECT value FROM meta WHERE key='initialised'");
            initialised = s.step() == SQLITE_ROW;
        }
        if (!initialised) {
            std::string error;
            std::string model = default_model_path();
            if (!load_model_into(d, model.c_str(), error)) {
                std::fprintf(stderr, "qvsim: default model %s: %s\n", model.c_str(), error.c_str());
                sqlite3_close(d);
                return nullptr;
            }
            g_db = d;  // device_defaults() writes through db()
            g_db_pid = ::getpid();
            g_db_dir = dir;
            device_defaults();
            Stmt s(d, "INSERT OR REPLACE INTO meta(key, value) VALUES('initialised', '1')");
            s.run();
        }
        if (!tx.commit()) {
            g_db = nullptr;
            sqlite3_close(d);
            return nullptr;
        }
    }
    return d;
}

std::recursive_mutex g_api_mutex;

}  // namespace

ApiLock::ApiLock() { g_api_mutex.lock(); }
ApiLock::~ApiLock() { g_api_mutex.unlock(); }

bool exec(sqlite3 *d, const char *sql) {
    char *err = nullptr;
    if (sqlite3_exec(d, sql, nullptr, nullptr, &err) != SQLITE_OK) {
        std::fprintf(stderr, "qvsim: sql error: %s (%s)\n", err ? err : "?", sql);
        sqlite3_free(err);
        return false;
    }
    return true;
}

Tx::Tx(sqlite3 *d) : d_(d), ok_(false) {
    if (d_ == nullptr) return;
    // Nested use (inside an open transaction) joins the outer one.
    if (!sqlite3_get_autocommit(d_)) {
        done_ = true;
        ok_ = true;
        return;
    }
    ok_ = exec(d_, "BEGIN IMMEDIATE;");
    if (!ok_) done_ = true;
}

Tx::~Tx() {
    if (!done_) exec(d_, "ROLLBACK;");
}

bool Tx::commit() {
    if (done_) return ok_;
    done_ = true;
    return exec(d_, "COMMIT;");
}

sqlite3 *db() {
    const char *dir = qvsim_common::state_dir();
    if (g_db != nullptr && (g_db_pid != ::getpid() || g_db_dir != dir)) {
        // Inherited from a parent process (or another state directory): the
        // connection must not be used here; an inherited one is set aside
        // without closing, one of another directory is closed.
        if (g_db_pid == ::getpid())
            sqlite3_close_v2(g_db);
        else
            g_inherited.push_back(g_db);
        g_db = nullptr;
    }
    if (g_db == nullptr) {
        sqlite3 *d = open_store();
        if (d == nullptr) return nullptr;
        g_db = d;
        g_db_pid = ::getpid();
        g_db_dir = dir;
    }
    return g_db;
}

bool object_exists(int area, int oid, const std::string &inst) {
    Stmt s(db(), "SELECT 1 FROM obj WHERE area=? AND oid=? AND inst=?");
    s.bind(1, area).bind(2, oid).bind(3, inst);
    return s.step() == SQLITE_ROW;
}

std::vector<std::pair<std::string, std::string>> object_params(int area, int oid, const std::string &inst) {
    std::vector<std::pair<std::string, std::string>> out;
    Stmt s(db(), "SELECT name, value FROM param WHERE area=? AND oid=? AND inst=?");
    s.bind(1, area).bind(2, oid).bind(3, inst);
    while (s.step() == SQLITE_ROW) out.emplace_back(s.col_text(0), s.col_text(1));
    return out;
}

bool object_add(int area, int oid, const std::string &inst) {
    Stmt s(db(), "INSERT INTO obj(area, oid, inst) VALUES(?, ?, ?)");
    s.bind(1, area).bind(2, oid).bind(3, inst);
    return s.step() == SQLITE_DONE;
}

bool object_delete(int area, const ObjClass &c, const std::string &inst) {
    sqlite3 *d = db();
    if (!object_exists(area, c.oid, inst)) return false;
    std::size_t n = 0;
    const ObjClass *const *all = all_classes(n);
    auto drop = [&](int oid, const std::string &i, bool prefix) {
        const char *sql_obj = prefix ? "DELETE FROM obj WHERE area=? AND oid=? AND (inst=? OR substr(inst, 1, ?)=?)"
                                     : "DELETE FROM obj WHERE area=? AND oid=? AND inst=?";
        const char *sql_par = prefix
                                  ? "DELETE FROM param WHERE area=? AND oid=? AND (inst=? OR substr(inst, 1, ?)=?)"
                                  : "DELETE FROM param WHERE area=? AND oid=? AND inst=?";
        for (const char *sql : {sql_obj, sql_par}) {
            Stmt s(d, sql);
            s.bind(1, area).bind(2, oid).bind(3, i);
            if (prefix) s.bind(4, static_cast<long long>(i.size() + 1)).bind(5, i + ",");
            s.run();
        }
    };
    drop(c.oid, inst, false);
    for (std::size_t k = 0; k < n; ++k)
        if (is_descendant(*all[k], c)) drop(all[k]->oid, inst, true);
    return true;
}

bool param_put(int area, int oid, const std::string &inst, const std::string &name, const std::string &value) {
    Stmt s(db(), "INSERT OR REPLACE INTO param(area, oid, inst, name, value) VALUES(?, ?, ?, ?, ?)");
    s.bind(1, area).bind(2, oid).bind(3, inst).bind(4, name).bind(5, value);
    return s.step() == SQLITE_DONE;
}

bool param_get(int area, const ObjClass &c, const std::string &inst, const Field &f, std::string &out) {
    if (!object_exists(area, c.oid, inst)) return false;
    Stmt s(db(), "SELECT value FROM param WHERE area=? AND oid=? AND inst=? AND name=?");
    s.bind(1, area).bind(2, c.oid).bind(3, inst).bind(4, std::string(f.name));
    out = s.step() == SQLITE_ROW ? s.col_text(0) : zero_value(f);
    return true;
}

std::vector<std::string> instances(int area, int oid) {
    std::vector<std::pair<Inst, std::string>> v;
    Stmt s(db(), "SELECT inst FROM obj WHERE area=? AND oid=?");
    s.bind(1, area).bind(2, oid);
    while (s.step() == SQLITE_ROW) {
        Inst i;
        std::string t = s.col_text(0);
        parse_inst(t.c_str(), i);
        v.emplace_back(i, t);
    }
    std::sort(v.begin(), v.end(), [](const auto &a, const auto &b) {
        for (int k = 0; k < 3; ++k)
            if (a.first.v[k] != b.first.v[k]) return a.first.v[k] < b.first.v[k];
        return false;
    });
    std::vector<std::string> out;
    for (auto &p : v) out.push_back(p.second);
    return out;
}

long next_instance(int area, const ObjClass &c, const Inst &parent) {
    long top = 0;
    for (const std::string &t : instances(area, c.oid)) {
        Inst i;
        if (!parse_inst(t.c_str(), i) || i.count != c.levels) continue;
        bool under = true;
        for (int k = 0; k < parent.count; ++k)
            if (i.v[k] != parent.v[k]) under = false;
        if (under && i.v[c.levels - 1] > top) top = i.v[c.levels - 1];
    }
    return top + 1;
}

bool copy_area(int from, int to) {
    sqlite3 *d = db();
    Tx tx(d);
    if (!tx.ok()) return false;
    bool ok = true;
    for (const char *sql : {"DELETE FROM obj WHERE area=?2", "DELETE FROM param WHERE area=?2",
                            "INSERT INTO obj(area, oid, inst) SELECT ?2, oid, inst FROM obj WHERE area=?1",
                            "INSERT INTO param(area, oid, inst, name, value) SELECT ?2, oid, inst, name, value "
                            "FROM param WHERE area=?1"}) {
        Stmt s(d, sql);
        s.bind(1, from).bind(2, to);
        ok = ok && s.run();
    }
    return ok && tx.commit();
}

std::string default_model_path() {
    const char *env = std::getenv("QVSIM_MODEL");
    if (env != nullptr && *env != '\0') return env;
    Dl_info info;
    if (dladdr(reinterpret_cast<void *>(&default_model_path), &info) != 0 && info.dli_fname != nullptr) {
        std::string lib = info.dli_fname;
        std::size_t slash = lib.rfind('/');
        std::string candidate = (slash == std::string::npos ? std::string(".") : lib.substr(0, slash)) +
                                "/qvsim-default.model";
        if (::access(candidate.c_str(), R_OK) == 0) return candidate;
    }
    return QVSIM_SOURCE_MODEL;
}

// Model file: "[<object path>]" opens an instance (created even without
// parameters), "<Param> = <value>" lines fill it; a value may be put in
// double quotes to keep blanks. "[device]" holds simulated device facts.
// "#" starts a comment line.
bool load_model_into(sqlite3 *d, const char *path, std::string &error) {
    std::ifstream in(path);
    if (!in) {
        error = "cannot read the model file";
        return false;
    }
    Tx tx(d);
    if (!tx.ok()) {
        error = "store busy";
        return false;
    }
    for (const char *sql : {"DELETE FROM obj", "DELETE FROM param"}) {
        Stmt s(d, sql);
        s.run();
    }
    auto trim = [](std::string s) {
        std::size_t b = s.find_first_not_of(" \t\r");
        std::size_t e = s.find_last_not_of(" \t\r");
        return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
    };
    std::string line;
    int lineno = 0;
    const ObjClass *cls = nullptr;
    bool device_section = false;
    std::string inst;
    while (std::getline(in, line)) {
        ++lineno;
        std::string t = trim(line);
        if (t.empty() || t[0] == '#') continue;
        if (t.front() == '[') {
            if (t.back() != ']') {
                error = "line " + std::to_string(lineno) + ": unterminated section";
                return false;
            }
            std::string p = t.substr(1, t.size() - 2);
            device_section = p == "device";
            if (device_section) continue;
            Inst i;
            cls = resolve_path(p.c_str(), i);
            if (cls == nullptr || i.count != cls->levels) {
                error = "line " + std::to_string(lineno) + ": unknown object " + p;
                return false;
            }
            inst = i.text();
            for (int area : {kRuntime, kSaved}) {
                Stmt s(d, "INSERT OR IGNORE INTO obj(area, oid, inst) VALUES(?, ?, ?)");
                s.bind(1, area).bind(2, cls->oid).bind(3, inst);
                s.run();
            }
            continue;
        }
        std::size_t eq = t.find('=');
        if (eq == std::string::npos || (cls == nullptr && !device_section)) {
            error = "line " + std::to_string(lineno) + ": expected <name> = <value> inside a section";
            return false;
        }
        std::string name = trim(t.substr(0, eq));
        std::string value = trim(t.substr(eq + 1));
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
        if (device_section) {
            Stmt s(d, "INSERT OR REPLACE INTO device(key, value) VALUES(?, ?)");
            s.bind(1, name).bind(2, value);
            s.run();
            continue;
        }
        const Field *f = find_field(*cls, name.c_str());
        std::string norm;
        if (f == nullptr || !normalise(*f, value.c_str(), norm)) {
            error = "line " + std::to_string(lineno) + ": bad parameter " + name;
            return false;
        }
        for (int area : {kRuntime, kSaved}) {
            Stmt s(d, "INSERT OR REPLACE INTO param(area, oid, inst, name, value) VALUES(?, ?, ?, ?, ?)");
            s.bind(1, area).bind(2, cls->oid).bind(3, inst).bind(4, name).bind(5, norm);
            s.run();
        }
    }
    if (!tx.commit()) {
        error = "commit failed";
        return false;
    }
    return true;
}

bool load_model_file(const char *path, std::string &error) {
    sqlite3 *d = db();
    if (d == nullptr) {
        error = "no store";
        return false;
    }
    return load_model_into(d, path, error);
}

// ---- faults -------------------------------------------------------------

static std::vector<std::pair<long long, std::string>> faults() {
    std::vector<std::pair<long long, std::string>> out;
    Stmt s(db(), "SELECT id, text FROM fault ORDER BY id");
    while (s.step() == SQLITE_ROW) out.emplace_back(s.col_int(0), s.col_text(1));
    return out;
}

static std::vector<std::string> words(const std::string &text) {
    std::vector<std::string> w;
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && text[i] == ' ') ++i;
        std::size_t j = i;
        while (j < text.size() && text[j] != ' ') ++j;
        if (j > i) w.push_back(text.substr(i, j - i));
        i = j;
    }
    return w;
}

bool fault_active(const char *kind, const char *arg1, const char *arg2) {
    for (auto &f : faults()) {
        std::vector<std::string> w = words(f.second);
        if (w.empty() || w[0] != kind) continue;
        if (w.size() == 1) return true;
        if (arg1 == nullptr || w[1] != arg1) continue;
        if (w.size() == 2) return true;
        if (arg2 != nullptr && w.size() == 3 && w[2] == arg2) return true;
    }
    return false;
}

bool fault_object(int oid, const std::string &inst) {
    std::string o = std::to_string(oid);
    for (auto &f : faults()) {
        std::vector<std::string> w = words(f.second);
        if (w.size() < 2 || w[0] != "object" || w[1] != o) continue;
        if (w.size() == 2) return true;
        if (w.size() == 3 && w[2] == inst) return true;
    }
    return false;
}

bool fault_read(const char *param) {
    if (param == nullptr) return false;
    for (auto &f : faults()) {
        std::vector<std::string> w = words(f.second);
        if (w.size() < 2 || w[0] != "read" || w[1] != param) continue;
        if (w.size() == 2) return true;
        if (w.size() == 4 && w[2] == "after") {
            long long limit = std::atoll(w[3].c_str());
            sqlite3 *d = db();
            Tx tx(d);
            long long hits = 0;
            {
                Stmt s(d, "SELECT hits FROM fault WHERE id=?");
                s.bind(1, f.first);
                if (s.step() == SQLITE_ROW) hits = s.col_int(0);
            }
            {
                Stmt s(d, "UPDATE fault SET hits=hits+1 WHERE id=?");
                s.bind(1, f.first);
                s.run();
            }
            tx.commit();
            if (hits >= limit) return true;
        }
    }
    return false;
}

// ---- simulated device state ----------------------------------------------

bool device_get(const std::string &key, std::string &out) {
    Stmt s(db(), "SELECT value FROM device WHERE key=?");
    s.bind(1, key);
    if (s.step() != SQLITE_ROW) return false;
    out = s.col_text(0);
    return true;
}

bool device_put(const std::string &key, const std::string &value) {
    Stmt s(db(), "INSERT OR REPLACE INTO device(key, value) VALUES(?, ?)");
    s.bind(1, key).bind(2, value);
    return s.step() == SQLITE_DONE;
}

bool device_del(const std::string &key) {
    Stmt s(db(), "DELETE FROM device WHERE key=?");
    s.bind(1, key);
    return s.step() == SQLITE_DONE;
}

std::vector<std::pair<std::string, std::string>> device_all(const std::string &prefix) {
    std::vector<std::pair<std::string, std::string>> out;
    Stmt s(db(), "SELECT key, value FROM device WHERE substr(key, 1, ?)=? ORDER BY key");
    s.bind(1, static_cast<long long>(prefix.size())).bind(2, prefix);
    while (s.step() == SQLITE_ROW) out.emplace_back(s.col_text(0), s.col_text(1));
    return out;
}

// Facts of the simulated hardware that a fresh gateway starts with (a model
// file's [device] section may override them).
void device_defaults() {
    const std::pair<const char *, const char *> defaults[] = {
        {"area", "CN"}, {"province", "GD"}, {"cpu_usage", "12"},
    };
    for (auto &p : defaults) {
        std::string v;
        if (!device_get(p.first, v)) device_put(p.first, p.second);
    }
}

}  // namespace qvsim
