// Helpers shared by the steering lists (VPN routes, application routes).
#pragma once

namespace qvs::steering {

// 1-based number of the first line of the file that contains needle as a
// plain, case-sensitive substring; 0 when none does or the file cannot be
// opened. A substring test on purpose: 10.0.0.1 finds a stored 10.0.0.12.
int find_line_in_file(const char *path, const char *needle);

// Lower-cases text in place through the C library's tolower table; returns text.
char *str_tolower(char *text);

}  // namespace qvs::steering
