// Placeholder until the simulated modules land: nothing is intercepted.
#include "kernel_modules.hpp"

#include <cstdlib>
#include <cstring>

#include "qvsim.h"

namespace qvsim {

bool run_module_command(const char *) { return false; }
void reset_modules() {}

}  // namespace qvsim

extern "C" char *qvsim_module_list(const char *, int, int) { return strdup(""); }
