// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Text/PathText.h"

namespace fi {

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

std::string_view lastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    if (path == "/") return path;
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view withoutLastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return {};
    return withoutTrailingSlashes(path.substr(0, slash == 0 ? 1 : slash));
}

std::string_view pathExtension(std::string_view path) {
    const std::string_view name = lastPathComponent(path);
    const size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || name.find_first_not_of('.') >= dot) return {};
    return name.substr(dot + 1);
}

std::string joinedPath(std::string_view folder, std::string_view name) {
    while (!folder.empty() && folder.back() == '/')
        folder.remove_suffix(1);
    while (!name.empty() && name.front() == '/')
        name.remove_prefix(1);
    std::string result;
    result.reserve(folder.size() + 1 + name.size());
    result.append(folder).append("/").append(name);
    return result;
}

}  // namespace fi
