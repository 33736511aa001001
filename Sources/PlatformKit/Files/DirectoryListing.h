// SPDX-License-Identifier: Apache-2.0
// The entries of one folder in a fixed order, with what the listing itself tells of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fi {

enum class EntryKind : uint8_t { File, Folder, Link, Other, Unknown };

struct DirectoryEntry {
    const char* name;  ///< NUL-terminated, in the listing's own memory
    uint32_t length;
    EntryKind kind;

    [[nodiscard]] std::string_view view() const { return {name, length}; }
};

class DirectoryListing {
public:
    /// Reads a folder, without "." and "..": names ordered by the bytes of their case-folded form, ties
    /// by their own bytes, so that two readings of an unchanged folder agree. Nothing when it cannot be
    /// read.
    [[nodiscard]] static std::optional<DirectoryListing> read(const char* path);

    [[nodiscard]] const std::vector<DirectoryEntry>& entries() const { return m_entries; }
    /// The folder lies on a FAT or exFAT file system, where files carry a hidden attribute.
    [[nodiscard]] bool onFAT() const { return m_onFAT; }

private:
    std::vector<char> m_names;
    std::vector<DirectoryEntry> m_entries;
    bool m_onFAT = false;
};

}  // namespace fi
