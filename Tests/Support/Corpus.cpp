// SPDX-License-Identifier: Apache-2.0
#include "Support/Corpus.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace fi::test {

namespace fs = std::filesystem;

std::optional<std::string> corpusFolder() {
    const char* chosen = std::getenv("FILEIMPORTER_CORPORA");
    const fs::path folder =
        chosen != nullptr ? fs::path(chosen) : fs::path(FI_SOURCE_DIR) / "../shared/corpora";
    std::error_code error;
    if (!fs::is_directory(folder, error)) return std::nullopt;
    return fs::canonical(folder).string();
}

std::vector<std::string> corpusFiles(const std::string& folder) {
    std::vector<std::string> files;
    const auto top = corpusFolder();
    if (!top) return files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(fs::path(*top) / folder, error)) {
        if (entry.is_regular_file()) files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace fi::test
