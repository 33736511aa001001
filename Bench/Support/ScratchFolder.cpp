// SPDX-License-Identifier: Apache-2.0
#include "Support/ScratchFolder.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace fi::bench {

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
    std::string pattern = (fs::temp_directory_path() / "fibench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    m_path = fs::canonical(pattern).string();
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

}  // namespace fi::bench
