// SPDX-License-Identifier: Apache-2.0
// A folder of a test's own, removed with everything in it at the end.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace fi::test {

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }
    /// The absolute path of `relative` in this folder.
    [[nodiscard]] std::string at(std::string_view relative) const;
    /// Writes a file (folders on the way are made) and returns its absolute path.
    std::string write(std::string_view relative, std::string_view bytes) const;
    std::string write(std::string_view relative, std::span<const uint8_t> bytes) const;
    /// Makes a folder with those on the way and returns its absolute path.
    std::string makeFolder(std::string_view relative) const;
    /// Makes a symbolic link `relative` that says `target`, and returns its absolute path.
    std::string link(std::string_view relative, std::string_view target) const;

private:
    std::string m_path;
};

/// The bytes of a file; a test that reads a missing file fails.
[[nodiscard]] std::string readFile(const std::string& path);

}  // namespace fi::test
