// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Files/ProgramName.h"

#include <filesystem>

#include "PlatformKit/Text/PathText.h"

namespace fi {

std::string programName() {
    std::error_code error;
    const std::string path = std::filesystem::read_symlink("/proc/self/exe", error).string();
    const std::string_view name = lastPathComponent(path);
    const std::string_view extension = pathExtension(name);
    if (name.empty()) return "FileImporter";
    return std::string(extension.empty() ? name : name.substr(0, name.size() - extension.size() - 1));
}

}  // namespace fi
