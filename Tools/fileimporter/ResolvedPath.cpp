// SPDX-License-Identifier: Apache-2.0
#include "ResolvedPath.h"

#include <cstdlib>
#include <memory>

namespace fi {

std::string resolvedPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
    return resolved ? resolved.get() : path;
}

}  // namespace fi
