// SPDX-License-Identifier: Apache-2.0
// Standard output, line by line.
#pragma once

#include <string_view>

namespace fi {

class Output {
public:
    /// Writes a line at once. False when nobody reads any more, or it cannot be written: nothing further
    /// will be.
    bool line(std::string_view text);

    [[nodiscard]] static bool isTerminal();

    /// What the system says about a line that could not be written; 0 when all went out, and when the
    /// reader has only closed its end, as `head` does.
    [[nodiscard]] int error() const { return m_error; }

private:
    bool m_open = true;
    int m_error = 0;
};

}  // namespace fi
