// SPDX-License-Identifier: MIT
// The one place where the library meets the gateway platform (libqv, liblog).
// Building against the maker's platform means pointing the include path at
// its headers; nothing else in src/ includes a platform header directly.
#pragma once

#include <libqv.h>
#include <liblog.h>
