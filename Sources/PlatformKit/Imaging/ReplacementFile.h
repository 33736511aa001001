// SPDX-License-Identifier: Apache-2.0
// A file that is written under another name and takes its place in one step, when it is complete.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace fi {

class ReplacementFile {
public:
    /// For a file at `path`; a link is followed, so that the file that it points at is replaced. The new
    /// file has the permissions of the one that it replaces.
    explicit ReplacementFile(const std::string& path);
    /// Removes what was written, unless it took its place.
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    /// False when something that is no regular file is there, or no file can be made in its folder.
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] bool write(std::span<const uint8_t> bytes);
    /// Puts the file in its place once its bytes are stored. False, and the old file stays, when that or a
    /// write before failed.
    [[nodiscard]] bool commit();

    /// The system's words for the first thing that failed; empty when the system refused nothing.
    [[nodiscard]] std::string reason() const;

private:
    void openHidden(uint32_t permissions);

    std::string m_path;
    std::string m_writtenPath;
    int m_descriptor = -1;
    int m_error = 0;  // as errno has it
};

}  // namespace fi
