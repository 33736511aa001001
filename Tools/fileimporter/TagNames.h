// SPDX-License-Identifier: Apache-2.0
// The names that TIFF 6.0 and Exif 2.32 give their tags.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace fi {

/// Directories whose numbers mean the same.
enum class TagFamily : uint8_t { Image, Gps, Interoperability };

/// Nothing for a tag that the standards do not name. Static text.
[[nodiscard]] std::optional<std::string_view> tagName(TagFamily family, uint16_t number);

}  // namespace fi
