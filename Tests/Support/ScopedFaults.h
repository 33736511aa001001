// SPDX-License-Identifier: Apache-2.0
// Lets chosen faults of the system happen for the length of a scope.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <vector>

#include "PlatformKit/Base/Faults.h"

namespace fi::test {

class ScopedFaults {
public:
    ScopedFaults(std::initializer_list<Fault> faults) {
        chosen() = faults;
        g_faultInjector = [](Fault fault, std::string_view) {
            return std::find(chosen().begin(), chosen().end(), fault) != chosen().end();
        };
    }
    ~ScopedFaults() { g_faultInjector = nullptr; }
    ScopedFaults(const ScopedFaults&) = delete;
    ScopedFaults& operator=(const ScopedFaults&) = delete;

private:
    static std::vector<Fault>& chosen() {
        static std::vector<Fault> faults;
        return faults;
    }
};

}  // namespace fi::test
