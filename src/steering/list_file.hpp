// SPDX-License-Identifier: MIT
// Helpers shared by the steering lists (VPN routes, application routes,
// application filters).
#pragma once

#include <cstdio>

#include "core/durable_file.hpp"

namespace qvs::steering {

// Outcome of the directory step that comes first in the list functions.
enum class DirStep {
    kPresent,  // the directory was writable already
    kCreated,  // it was missing and has just been created (mode 0755)
    kFailed,   // it could not be created; fail_text has been logged
};

// If dir is not writable, creates it with one mkdir, mode 0755 (its parent
// must exist: missing parents are not created). When that fails, logs
// fail_text at level 1 under func (the exported list function's name, or
// the helper's own name where the helper owns the directory).
DirStep list_dir_step(const char *dir, const char *func, const char *fail_text);

// 1-based number of the first line of the file that contains needle as a
// plain, case-sensitive substring; 0 when none does or the file cannot be
// opened. A substring test on purpose: 10.0.0.1 finds a stored 10.0.0.12.
int find_line_in_file(const char *path, const char *needle);

// Refuses text that would change a shell command line once one trailing line
// end is set aside (the line end of a list line is removed or harmless before
// the text reaches a command): logs "refused unsafe text [%s]\n" at level 1
// under func and line, as the refusal of caller text does, and gives true.
// A null text is not refused here.
bool refuse_unsafe_line(const char *func, int line, const char *text);

// The durable whole-file rewrite of every list file.
using qvs::FileRewrite;

// Appends "%s\n" to the list file durably (durable_append). When it cannot
// be opened, or the write, flush, sync or close fails (a full flash), the
// file is cut back to its old length, "open file %s failed.\n" is logged
// with the path at level 1 under func and the result is -1; 0 otherwise.
int append_list_line(const char *func, const char *path, const char *text);

// Replaces the file's content by text ("" leaves it empty) through a
// FileRewrite. When the temporary file cannot be opened, or a write, the
// flush, the close or the rename fails, logs "open file %s failed.\n" with
// the path at level 1 under func and gives -1 (the old file stays as it
// was); 0 otherwise.
int write_list_file(const char *func, const char *path, const char *text);

// Commits a rewrite; on failure logs "open file %s failed.\n" with the path
// at level 1 under func (nothing when func is null, for the calls that fail
// quietly). 0 or -1.
int commit_list_file(const char *func, FileRewrite &file, const char *path);

// Deletes line k (1-based) of the file with its line end, nothing else, as
// "sed '<k>d'" would, through one durable rewrite (no sed: a sed -i
// rewrite is never synced). True when the line was removed; otherwise (no
// such line, or the rewrite failed, e.g. on a full flash) logs "delete line
// %d of %s failed.\n" at level 1 under func and gives false: the caller
// then sends no kernel command for the line.
bool delete_list_line(const char *func, int k, const char *path);

// Joins the lines of the file into out (size bytes, at least 1; emptied
// first), separated by sep. Each line (read with a 512-byte buffer) is cut
// at its first character of cut_at; it is appended while its length plus
// the length already used plus 2 is below size, otherwise skipped. Number of
// lines appended; -1 when the file cannot be opened.
int join_list_lines(const char *path, char sep, const char *cut_at, char *out, int size);

// Where the listings cut each line: its first blank (space or tab, as the C
// library's isblank says) or its line end.
inline constexpr char kListingCut[] = " \t\n";

// Lower-cases text in place through the C library's tolower table; returns text.
char *str_tolower(char *text);

}  // namespace qvs::steering

