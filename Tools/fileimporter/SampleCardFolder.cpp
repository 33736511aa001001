// SPDX-License-Identifier: Apache-2.0
#include "SampleCardFolder.h"

#include <system_error>

namespace fi {

namespace fs = std::filesystem;

SampleCardFolder::~SampleCardFolder() {
    std::error_code ignored;
    for (const fs::path& folder : m_made)
        fs::remove(folder, ignored);
}

std::vector<fs::path> SampleCardFolder::missingFolders() const {
    std::vector<fs::path> missing;
    std::error_code ignored;
    for (fs::path folder = m_path; !folder.empty() && !fs::exists(folder, ignored);
         folder = folder.parent_path())
        missing.push_back(folder);
    return missing;
}

std::optional<std::string> SampleCardFolder::prepare() {
    std::error_code error;
    if (fs::exists(m_path, error)) {
        if (!fs::is_directory(m_path, error)) return "it is not a folder";
        const fs::directory_iterator entries(m_path, error);
        if (!error && entries != fs::directory_iterator()) return "the folder is not empty";
    } else {
        m_made = missingFolders();
        fs::create_directories(m_path, error);
    }
    if (error) return error.message();
    return std::nullopt;
}

}  // namespace fi
