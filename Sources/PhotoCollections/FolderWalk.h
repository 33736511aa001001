// SPDX-License-Identifier: Apache-2.0
// The walk of a folder tree that finds photos.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "PlatformKit/Array.h"
#include "PlatformKit/Files/DirectoryListing.h"
#include "PlatformKit/Files/MountTable.h"

namespace fi {

/// True when a folder of this name may be entered.
[[nodiscard]] bool mayEnterFolder(std::string_view name);

/// True for a file that is listed: by its extension, and a PDF by the PDF query.
[[nodiscard]] bool isListedPhoto(std::string_view path);

/// One walk, which appends to an array. Folders are entered and files stored at their resolved paths; a
/// file that the array holds already is not added again.
class FolderWalk {
public:
    explicit FolderWalk(NSMutableArray& found);

    /// Walks `folder` down to `levels` levels (1: its own files only; 0 or less: nothing).
    void walk(const std::string& folder, int32_t levels);

    /// Folders that could not be read, each once, in the order in which they were met.
    [[nodiscard]] const std::vector<std::string>& unreadable() const { return m_unreadable; }

private:
    /// What a folder's walk does with the rest of its entries.
    enum class Then : uint8_t { GoOn, LeaveFolder };

    struct Folder {
        /// Levels of the deepest finished walk. Walking the folder again no deeper adds nothing: each of
        /// its files is in the list. Without this, two links to an ancestor cost 2^levels walks.
        int32_t finishedLevels = 0;
        /// Read once. Links lead back into a folder on every level of a loop, so once there is a link,
        /// listings stay until the walk ends.
        std::optional<DirectoryListing> listing;
        bool isUnreadable = false;
        uint32_t walksUnderWay = 0;
    };

    /// Where a link leads, asked once.
    struct Target {
        std::string path;  ///< resolved; empty for a dangling link
        bool isFolder = false;
        bool onFAT = false;  ///< of the folder that the file lies in
    };

    void walkResolved(const std::string& path, int32_t levels);
    void walkEntries(const std::string& path, Folder& folder, int32_t levels);
    Then visit(const std::string& folder, const DirectoryEntry& entry, bool onFAT, int32_t levels);
    [[nodiscard]] bool readOnce(const std::string& path, Folder& folder);
    [[nodiscard]] const Target& targetOf(const std::string& link);
    void visitFolder(std::string_view name, const std::string& resolved, int32_t levels);
    Then visitFile(const std::string& resolved, bool onFAT);
    [[nodiscard]] bool isKnown(const std::string& path) const;
    void rememberFound();

    NSMutableArray& m_found;
    MountTable m_mounts;
    std::unordered_map<std::string, Folder> m_folders;
    std::unordered_map<std::string, Target> m_targets;
    std::vector<std::string> m_unreadable;
    /// The paths in the array. Only links can lead to the same file twice, so an empty array is walked
    /// without it until the first link appears.
    std::unordered_set<std::string_view> m_known;
    bool m_keepsKnown = false;
};

}  // namespace fi
