// SPDX-License-Identifier: Apache-2.0
// Text of other encodings to UTF-8 and back. A text that cannot be converted whole is not converted.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "PlatformKit/String.h"

namespace fi {

[[nodiscard]] std::optional<std::string> toUTF8(std::string_view bytes, TextEncoding encoding);
[[nodiscard]] std::optional<std::string> fromUTF8(std::string_view text, TextEncoding encoding);

/// The character set that the environment names (LC_ALL, LC_CTYPE, LANG), without touching the
/// process's locale; "UTF-8" when it names none.
[[nodiscard]] std::string systemCharacterSet();

}  // namespace fi
