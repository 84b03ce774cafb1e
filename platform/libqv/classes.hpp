// SPDX-License-Identifier: MIT
// The object classes of the simulated data model: OID, TR-069 path, number
// of instance levels and the record layout (every parameter is a record
// field at a fixed offset).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvsim {

enum class Kind : uint8_t { Text, U8, I8, U16, U32, Mac };

struct Field {
    const char *name;
    Kind kind;
    uint32_t offset;
    uint32_t size;
};

struct ObjClass {
    int oid;
    const char *path;  // with one "%d" per instance level
    int levels;        // 0: single instance
    uint32_t record_size;
    const Field *fields;
    std::size_t field_count;
};

// Instance list: up to three instance numbers.
struct Inst {
    int count = 0;
    long v[3] = {0, 0, 0};
    std::string text() const;  // "", "3", "1,2", "1,2,3"
};

bool parse_inst(const char *text, Inst &out);  // "" or up to three numbers

const ObjClass *find_class(int oid);
const Field *find_field(const ObjClass &c, const char *name);
const ObjClass *const *all_classes(std::size_t &count);
// Resolves an object path ("InternetGatewayDevice.WiFi.SSID.3", a trailing
// "." allowed) to its class and instance list.
const ObjClass *resolve_path(const char *path, Inst &inst);
std::string format_path(const ObjClass &c, const Inst &inst);
// The parent class (path is this class's path minus its last "%d" level), or
// null. Children of a class are those whose parent chain reaches it.
bool is_descendant(const ObjClass &child, const ObjClass &parent);

// Text forms of field values.
std::string zero_value(const Field &f);
// Normalises a text value for the field; false when it does not parse.
bool normalise(const Field &f, const char *text, std::string &out);
// Writes a normalised text value into a record field.
void put_field(const Field &f, const std::string &value, unsigned char *record);

}  // namespace qvsim
