// SPDX-License-Identifier: MIT
// Fixture files at the gateway's own paths, for files a PC lacks or whose
// content a test must choose ("/proc/mtd", "/proc/bus/pci/devices",
// "/proc/meminfo"). The shipped code reads its real paths; these helpers
// change what is found there, inside the test's own sandbox only (each test
// case runs in a throwaway mount namespace, so nothing needs undoing).
//
// Under /proc, the first call replaces /proc by a tmpfs whose entries link
// to a second, real procfs mount (so "/proc/self/exe" and the rest still
// answer). A fixture is then a plain file at its name, and a hidden entry is
// a removed link. Process directories created after that first call are not
// listed in /proc: a test that runs `ps` afterwards sees only the processes
// that existed then.
// Elsewhere, the file is simply written (the sandbox's root is an overlay).
#pragma once

#include <string>

namespace qvstest {

// Makes path read as content. Fails the current test on a mount error.
void present_file(const std::string &path, const std::string &content);
// Makes path absent.
void hide_file(const std::string &path);

}  // namespace qvstest
