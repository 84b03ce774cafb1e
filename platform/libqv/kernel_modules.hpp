// SPDX-License-Identifier: MIT
// The two kernel modules' control files ("/proc/approute/rule",
// "/proc/appfilter/rule") cannot exist on a PC. The command runners hand
// every line to run_module_command first; a line that writes into one of
// those files is carried out against the simulated module instead (the
// module keeps each rule index's lists as its ADD_DATA, DEL_DATA and
// CLR_DATA lines say) and is not given to the shell.
#pragma once

namespace qvsim {

// True when the line was a write into a simulated module and has been applied.
bool run_module_command(const char *line);
// Empties both simulated modules (part of qvsim_reset).
void reset_modules();

}  // namespace qvsim
