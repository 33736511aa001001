// SPDX-License-Identifier: Apache-2.0
// A folder for a benchmark's files, removed with them at the end.
#pragma once

#include <string>

namespace fi::bench {

class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

}  // namespace fi::bench
