// SPDX-License-Identifier: MIT
// Small helpers over the simulated gateway for the platform suites.
#pragma once

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "libqv.h"
#include "qvsim.h"

namespace simtest {

inline std::string get(int oid, const char *inst, const char *param) {
    char out[2048] = {};
    if (qvsim_get(oid, inst, param, out, sizeof out) != 0) return "<none>";
    return out;
}

inline std::string journal() {
    char *t = qvsim_journal_text();
    std::string s = t != nullptr ? t : "";
    std::free(t);
    return s;
}

inline std::vector<std::string> journal_lines(const std::string &kind = "") {
    std::vector<std::string> out;
    std::istringstream in(journal());
    std::string line;
    while (std::getline(in, line))
        if (kind.empty() || line.rfind(kind + "\t", 0) == 0 || line == kind) out.push_back(line);
    return out;
}

inline QVS_IA ia1(int a) { return qvsXml_ConstructIAValue("t.cpp", "ia1", 1, 1, "%d", a); }
inline QVS_IA ia2(int a, int b) { return qvsXml_ConstructIAValue("t.cpp", "ia2", 1, 2, "%d,%d", a, b); }
inline QVS_IA ia3(int a, int b, int c) { return qvsXml_ConstructIAValue("t.cpp", "ia3", 1, 3, "%d,%d,%d", a, b, c); }

// Attached for the scope of a test.
struct Attached {
    QVS_XMLSHM_HANDLE h = qvs_xmlShmInit();
    ~Attached() { qvs_xmlShmDeInit(&h); }
};

}  // namespace simtest
