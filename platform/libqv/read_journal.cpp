// SPDX-License-Identifier: MIT
// The opt-in read journal: when switched on (qvsim_journal_reads), lookups
// and parameter reads leave "lookup" and "get" lines, so a test can count the
// polls or station reads a call made. Off by default and after a reset; the
// switch lives in the store's meta table, so it reaches every process.
#include <sqlite3.h>

#include "qvsim.h"
#include "sim.hpp"

namespace qvsim {

namespace {

constexpr char kKey[] = "journal_reads";

}  // namespace

bool reads_journaled() {
    sqlite3 *d = db();
    if (d == nullptr) return false;
    sqlite3_stmt *s = nullptr;
    if (sqlite3_prepare_v2(d, "SELECT value FROM meta WHERE key=?", -1, &s, nullptr) != SQLITE_OK) return false;
    sqlite3_bind_text(s, 1, kKey, -1, SQLITE_STATIC);
    bool on = false;
    if (sqlite3_step(s) == SQLITE_ROW) {
        const unsigned char *v = sqlite3_column_text(s, 0);
        on = v != nullptr && v[0] == '1';
    }
    sqlite3_finalize(s);
    return on;
}

void journal_lookup(const std::string &oid, const std::string &inst, bool found) {
    if (reads_journaled()) journal("lookup", oid, inst, found ? "found" : "missing");
}

void journal_get(int oid, const std::string &inst, const char *param, int result) {
    if (reads_journaled()) journal("get", std::to_string(oid), inst, param, std::to_string(result));
}

}  // namespace qvsim

extern "C" int qvsim_journal_reads(int on) {
    qvsim::ApiLock api_lock;
    sqlite3 *d = qvsim::db();
    if (d == nullptr) return -1;
    const char *sql = on != 0 ? "INSERT OR REPLACE INTO meta(key, value) VALUES('journal_reads', '1')"
                              : "DELETE FROM meta WHERE key='journal_reads'";
    return qvsim::exec(d, sql) ? 0 : -1;
}
