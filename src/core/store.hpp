// SPDX-License-Identifier: MIT
// Store conventions: attach/detach on every path, parameter lists, instance
// addresses built under the caller's own name.
#pragma once

#include <cstdint>

#include "log.hpp"

namespace qvs {

using Handle = QVS_XMLSHM_HANDLE;

inline constexpr std::uint32_t kTypeString = QVS_TYPE_STRING;
inline constexpr std::uint32_t kTypeBool = QVS_TYPE_BOOL;
inline constexpr std::uint32_t kTypeUInt32 = QVS_TYPE_UINT32;
inline constexpr std::uint32_t kTypeInt8 = QVS_TYPE_INT8;
inline constexpr std::uint32_t kTypeDateTime = QVS_TYPE_DATETIME;
inline constexpr std::uint32_t kTypeHostValue = QVS_TYPE_HOSTVALUE;

// Result codes shared by the store readers.
inline constexpr int kOk = 0;
inline constexpr int kFail = -1;
inline constexpr int kErrZeroHandle = -22;
inline constexpr int kErrEmpty = -1000;
inline constexpr int kErrAttach = -1001;
inline constexpr int kErrNoObject = -1003;
inline constexpr int kErrNoParamList = -14;
inline constexpr int kErrSelector = -1105;

// Own attachment: attaches in the constructor (logging fail_text at level 1
// under the caller's name when the store refuses, unless fail_text is null)
// and detaches in the destructor, so no return path stays attached.
class StoreSession {
public:
    StoreSession(const char *func, int line, const char *fail_text) : handle_(0) {
        handle_ = ::qvs_xmlShmInit();
        if (handle_ == 0 && fail_text != nullptr)
            ::qvs_log_print(kSourceFile, func, line, kLogError, "%s", fail_text);
    }
    ~StoreSession() {
        if (handle_ != 0)
            ::qvs_xmlShmDeInit(&handle_);
    }
    StoreSession(const StoreSession &) = delete;
    StoreSession &operator=(const StoreSession &) = delete;

    explicit operator bool() const { return handle_ != 0; }
    Handle handle() const { return handle_; }

private:
    Handle handle_;
};

// A parameter list, freed on every path. Values are read when the list is
// applied, so they must outlive apply().
class ParamList {
public:
    ParamList() : list_(::newParameterList()) {}
    ~ParamList() {
        if (list_ != nullptr)
            ::freeParameterList(list_);
    }
    ParamList(const ParamList &) = delete;
    ParamList &operator=(const ParamList &) = delete;

    explicit operator bool() const { return list_ != nullptr; }
    QVS_PARAM_LIST *get() const { return list_; }

    int add(const char *name, std::uint32_t type, const void *value) {
        return ::setParameterToList(list_, name, type, value);
    }
    // Applies to the object whose record is given; the store's result as is.
    int apply(Handle h, const void *record) {
        return ::qvsXml_setParameterIndirectByParaList(h, ::qvsXmlGetPtrOffset(h, record), list_);
    }

private:
    QVS_PARAM_LIST *list_;
};

// Typed record lookup.
template <typename Record>
inline const Record *object(Handle h, int oid, QVS_IA ia) {
    return static_cast<const Record *>(::qvsXml_GetObjectByOID(h, oid, ia, 1));
}

}  // namespace qvs

// Instance address built under the calling function's own name and line.
#define QVS_IA_VALUE(count, ...) \
    ::qvsXml_ConstructIAValue(::qvs::kSourceFile, __func__, __LINE__, (count), __VA_ARGS__)

// Attach for this scope: QVS_ATTACH(store, "XMLSHMINIT fail\n"); if (!store) return -1;
#define QVS_ATTACH(var, fail_text) ::qvs::StoreSession var(__func__, __LINE__, (fail_text))
