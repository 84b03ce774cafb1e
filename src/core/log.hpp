// SPDX-License-Identifier: MIT
// Diagnostic lines. Every line carries the library's source unit name, the
// logging function's own name and the source line.
#pragma once

#include "platform.hpp"
#include "qvs_utils.h"

namespace qvs {

// The whole library is one source unit as far as its log lines are concerned.
inline constexpr char kSourceFile[] = "qvs_utils.cpp";

inline constexpr int kLogError = 1;  // failures and notable changes
inline constexpr int kLogTrace = 5;  // routine trace

}  // namespace qvs

// Platform logger, under the calling function's own name.
#define QVS_LOG(level, ...) ::qvs_log_print(::qvs::kSourceFile, __func__, __LINE__, (level), __VA_ARGS__)
// The same where the function name comes from a variable.
#define QVS_LOG_AS(func, level, ...) ::qvs_log_print(::qvs::kSourceFile, (func), __LINE__, (level), __VA_ARGS__)
// The library's own stderr formatter.
#define QVS_UTIL_PRINTF(...) ::util_printf(::qvs::kSourceFile, __func__, __LINE__, __VA_ARGS__)
#define QVS_UTIL_PRINTF_AS(func, ...) ::util_printf(::qvs::kSourceFile, (func), __LINE__, __VA_ARGS__)
