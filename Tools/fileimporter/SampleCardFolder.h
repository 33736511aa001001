// SPDX-License-Identifier: Apache-2.0
// The folder that becomes the made-up card.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace fi {

/// Takes what it has made away again, as far as it is empty, unless it is kept.
class SampleCardFolder {
public:
    explicit SampleCardFolder(std::filesystem::path path) : m_path(std::move(path)) {}
    ~SampleCardFolder();
    SampleCardFolder(const SampleCardFolder&) = delete;
    SampleCardFolder& operator=(const SampleCardFolder&) = delete;

    /// Makes the folder, with those above it, when it is not there. Why the card cannot be made there;
    /// nothing when the folder is there and empty.
    [[nodiscard]] std::optional<std::string> prepare();
    void keep() { m_made.clear(); }

private:
    [[nodiscard]] std::vector<std::filesystem::path> missingFolders() const;

    std::filesystem::path m_path;
    std::vector<std::filesystem::path> m_made;  ///< the innermost one first
};

}  // namespace fi
