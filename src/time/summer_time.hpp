// SPDX-License-Identifier: MIT
// Summer time shared by qvsTimeToDST (the 32-bit time_t of the 32-bit ABI)
// and its 64-bit twin: types that mean the same in both kinds of file.
#pragma once

namespace qvs::time {

// seconds + 3600 when that moment, broken down in the process's zone, lies
// in summer time (qvsCheckDST), else seconds; prints "isDST=%d\n" through
// util_printf under "qvsTimeToDST". Computed with 64-bit time.
long long time_to_dst(long long seconds);

}  // namespace qvs::time
