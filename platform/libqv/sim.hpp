// SPDX-License-Identifier: MIT
// Internals of the simulated gateway shared by the libqv sources: the
// SQLite store, faults, the journal and the default model.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "classes.hpp"
#include "sim_journal.hpp"

struct sqlite3;

namespace qvsim {

using qvsim_common::journal;

// Serialises the entry points within one process (threads of one caller).
class ApiLock {
public:
    ApiLock();
    ~ApiLock();
    ApiLock(const ApiLock &) = delete;
    ApiLock &operator=(const ApiLock &) = delete;
};

// Areas of the store: the runtime store and the saved copy.
inline constexpr int kRuntime = 0;
inline constexpr int kSaved = 1;

// The process's connection to the store (opened on first use, reopened after
// a fork or a change of $QVSIM_DIR). The store is created from the default
// model when it does not exist yet. Null when the store cannot be opened.
sqlite3 *db();

// Runs SQL without results; false on error (printed to stderr).
bool exec(sqlite3 *d, const char *sql);

// A write transaction (BEGIN IMMEDIATE), rolled back unless committed.
class Tx {
public:
    explicit Tx(sqlite3 *d);
    ~Tx();
    bool ok() const { return ok_; }
    bool commit();

private:
    sqlite3 *d_;
    bool ok_;
    bool done_ = false;
};

// Store content (no journal, no faults).
bool object_exists(int area, int oid, const std::string &inst);
// Parameter values of one instance as (name, value) pairs.
std::vector<std::pair<std::string, std::string>> object_params(int area, int oid, const std::string &inst);
bool object_add(int area, int oid, const std::string &inst);
// Deletes the instance and every instance below it; false when missing.
bool object_delete(int area, const ObjClass &c, const std::string &inst);
bool param_put(int area, int oid, const std::string &inst, const std::string &name, const std::string &value);
// Value of one parameter (its zero value when never written); false when the
// instance does not exist.
bool param_get(int area, const ObjClass &c, const std::string &inst, const Field &f, std::string &out);
// Instances of a class, as instance texts, in numeric order.
std::vector<std::string> instances(int area, int oid);
// Next free instance number below a parent instance list.
long next_instance(int area, const ObjClass &c, const Inst &parent);
// Copies one area onto the other (save, restart).
bool copy_area(int from, int to);
// Replaces both areas with the model file's content.
bool load_model_file(const char *path, std::string &error);
// The default model file's path.
std::string default_model_path();

// Faults.
bool fault_active(const char *kind, const char *arg1 = nullptr, const char *arg2 = nullptr);
// "read <param>" / "read <param> after <n>": true when this read must fail
// (counts the read).
bool fault_read(const char *param);
bool fault_object(int oid, const std::string &inst);

// Device state (simulated hardware), kept in the store next to the areas.
bool device_get(const std::string &key, std::string &out);
bool device_put(const std::string &key, const std::string &value);
bool device_del(const std::string &key);
std::vector<std::pair<std::string, std::string>> device_all(const std::string &prefix);
void device_defaults();

// Refreshes the cached records of one instance in this process (after writes).
void refresh_records(int oid, const std::string &inst);

// The opt-in read journal (read_journal.cpp): whether it is on, and its
// "lookup <oid> <instance> found|missing" and "get <oid> <instance> <param>
// <result>" lines (written only when it is on).
bool reads_journaled();
void journal_lookup(const std::string &oid, const std::string &inst, bool found);
void journal_get(int oid, const std::string &inst, const char *param, int result);

// Loads a model file into the open store (both areas); used by db() and qvsim.
bool load_model_into(sqlite3 *d, const char *path, std::string &error);

}  // namespace qvsim
