// Helpers shared by the steering lists (VPN routes, application routes,
// application filters).
#pragma once

namespace qvs::steering {

// Outcome of the directory step that comes first in the list functions.
enum class DirStep {
    kPresent,  // the directory was writable already
    kCreated,  // it was missing and has just been created (mode 0755)
    kFailed,   // it could not be created; fail_text has been logged
};

// If dir is not writable, creates it with one mkdir, mode 0755 (its parent
// must exist: missing parents are not created). When that fails, logs
// fail_text at level 1 under func, the calling exported function's name.
DirStep list_dir_step(const char *dir, const char *func, const char *fail_text);

// 1-based number of the first line of the file that contains needle as a
// plain, case-sensitive substring; 0 when none does or the file cannot be
// opened. A substring test on purpose: 10.0.0.1 finds a stored 10.0.0.12.
int find_line_in_file(const char *path, const char *needle);

// Lower-cases text in place through the C library's tolower table; returns text.
char *str_tolower(char *text);

}  // namespace qvs::steering
