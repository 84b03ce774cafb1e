// SPDX-License-Identifier: MIT
// Tables that every family extends from a file of its own (the injection
// and fault tables): each row file registers a maker at start-up, and the
// table reads the families sorted by name, so the order of files does not
// matter.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace qvstest {

template <class Family>
class FamilyRegistry {
public:
    static bool add(Family (*make)()) {
        makers().push_back(make);
        return true;
    }
    static const std::vector<Family> &all() {
        static const std::vector<Family> families = [] {
            std::vector<Family> out;
            for (auto make : makers()) out.push_back(make());
            std::sort(out.begin(), out.end(), [](const Family &a, const Family &b) {
                return std::string(a.name) < std::string(b.name);
            });
            return out;
        }();
        return families;
    }

private:
    static std::vector<Family (*)()> &makers() {
        static std::vector<Family (*)()> m;
        return m;
    }
};

}  // namespace qvstest
