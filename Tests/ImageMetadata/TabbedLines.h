// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fi::test {

/// The cells of a line, empty ones included.
[[nodiscard]] inline std::vector<std::string> splitAtTabs(std::string_view line) {
    std::vector<std::string> cells(1);
    for (const char c : line) {
        if (c == '\t') {
            cells.emplace_back();
        } else {
            cells.back().push_back(c);
        }
    }
    return cells;
}

}  // namespace fi::test
