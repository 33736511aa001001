// SPDX-License-Identifier: Apache-2.0
// From the words of the command line to the photos that they mean.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fi {

class Console;

struct SearchOrder {
    static constexpr uint32_t kDeepest = 256;

    std::vector<std::string> paths;  ///< cards, folders and single files
    std::string historyList;         ///< a property list of photos, read before the paths; may be empty
    uint32_t depth = kDeepest;       ///< levels of folders; 1 is a folder's own files only
};

struct SearchResult {
    std::vector<std::string> photos;  ///< absolute paths without links, in the order of the search
    bool complete = true;             ///< false when something could not be searched
};

/// Each photo once. What cannot be searched, also a folder on the way, is named on the console with its
/// reason.
[[nodiscard]] SearchResult findPhotos(const SearchOrder& order, Console& console);

}  // namespace fi
