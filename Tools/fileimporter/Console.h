// SPDX-License-Identifier: Apache-2.0
// Where a command speaks: answers on standard output, complaints and progress on standard error.
#pragma once

#include <string_view>

#include "Output.h"
#include "Progress.h"

namespace fi {

class Console {
public:
    explicit Console(Progress::Meter meter) : m_progress(meter) {}

    [[nodiscard]] Output& out() { return m_out; }
    [[nodiscard]] Progress& progress() { return m_progress; }

    /// "fileimporter: SUBJECT: REASON"; the subject is a file's name or path.
    void complain(std::string_view subject, std::string_view reason);
    /// "fileimporter: REASON".
    void complain(std::string_view reason);

private:
    Output m_out;
    Progress m_progress;
};

}  // namespace fi
