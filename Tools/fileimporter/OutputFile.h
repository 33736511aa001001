// SPDX-License-Identifier: Apache-2.0
// The picture file that a command is to write.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "PhotoFacts.h"
#include "PlatformKit/CGImage.h"
#include "PlatformKit/String.h"

namespace fi {

/// The kind of file that a name asks for by its extension, BORROWED and constant; null for other names.
[[nodiscard]] CFStringRef writableType(std::string_view path);

/// Extensions that writableType() knows, for people.
inline constexpr const char* kWritableExtensions = ".jpg, .jpeg, .tif or .tiff";

/// Why no file of this name can be made there, as far as that shows before the work is done; nothing when
/// it can.
[[nodiscard]] std::optional<std::string> faultOfPlace(const std::string& path);

/// What is there and must stay; nothing when a file may be written. A file that is one of `sources` is
/// never overwritten.
[[nodiscard]] std::optional<std::string> obstacleTo(const std::string& path,
                                                    const std::vector<std::string>& sources);

/// Writes the picture under another name and renames it at the end. What went wrong; nothing when it is
/// there.
[[nodiscard]] std::optional<PhotoError> writePicture(const CGImage& picture, const std::string& path);

}  // namespace fi
