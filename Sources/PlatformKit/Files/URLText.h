// SPDX-License-Identifier: Apache-2.0
// Percent-encoding of file URLs.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace fi {

/// The path of a file URL's text; nullopt for another scheme, another host, or an empty or broken path.
[[nodiscard]] std::optional<std::string> pathOfFileURLText(std::string_view text);

/// The path with every byte that a URL may not hold as %XX.
[[nodiscard]] std::string percentEncodedPath(std::string_view path);

/// True for text that begins with "file:", in any case.
[[nodiscard]] bool isFileURLText(std::string_view text);

}  // namespace fi
