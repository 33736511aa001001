// SPDX-License-Identifier: Apache-2.0
// The file system as the library needs it: facts of items, listings, copies and removals. Paths are bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "PlatformKit/Data.h"

namespace fi {

enum class Links : uint8_t { Follow, Keep };
enum class Parents : uint8_t { Create, MustExist };

/// A moment since 1970.
struct FileTime {
    int64_t seconds = 0;
    uint32_t nanoseconds = 0;

    [[nodiscard]] double secondsSince1970() const {
        return static_cast<double>(seconds) + static_cast<double>(nanoseconds) * 1e-9;
    }
    friend bool operator==(const FileTime&, const FileTime&) = default;
};

struct FileFacts {
    uint64_t size = 0;
    FileTime modified;
    FileTime created;  ///< the earlier of modification and status change where the file system keeps none
    bool isFolder = false;
    bool isRegular = false;
};

/// Nothing when no item can be looked at there. A dangling link exists only when links are kept.
[[nodiscard]] std::optional<FileFacts> fileFacts(const char* path, Links links);

/// True when an item exists; a link counts as what it points at.
[[nodiscard]] bool itemExists(const char* path);

/// The path with every link resolved, as far as its components exist.
[[nodiscard]] std::string resolvingLinks(const std::string& path);

/// Removes an item, a folder with all it holds; links are removed, not followed. False when anything
/// is left.
[[nodiscard]] bool removeItem(const std::string& path);

/// Copies a file or a tree to a path where nothing exists. A failure may leave a part behind.
[[nodiscard]] bool copyItem(const std::string& from, const std::string& to);

/// Makes a folder; true when it is there already.
[[nodiscard]] bool makeFolder(const std::string& path, Parents parents);

/// All bytes of a regular file; null when they cannot be read.
[[nodiscard]] Ref<const CFData> contentsOfFile(const char* path);

}  // namespace fi
