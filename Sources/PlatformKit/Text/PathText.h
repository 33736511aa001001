// SPDX-License-Identifier: Apache-2.0
// What the text of a path says, without asking the file system.
#pragma once

#include <string>
#include <string_view>

namespace fi {

/// The path without slashes at its end; "/" stays. The result looks into `path`.
[[nodiscard]] std::string_view withoutTrailingSlashes(std::string_view path);

/// The text after the last "/", trailing slashes ignored; "/" for the root, "" for an empty path. The
/// result looks into `path`.
[[nodiscard]] std::string_view lastPathComponent(std::string_view path);

/// The path without its last component and the slashes before it; "/" for items of the root, "" for a
/// path of one component. The result looks into `path`.
[[nodiscard]] std::string_view withoutLastPathComponent(std::string_view path);

/// The text after the last "." of the last component; "" when there is none, when nothing follows it or
/// when the component's only dots lead it. The result looks into `path`.
[[nodiscard]] std::string_view pathExtension(std::string_view path);

/// The two joined by exactly one "/".
[[nodiscard]] std::string joinedPath(std::string_view folder, std::string_view name);

}  // namespace fi
