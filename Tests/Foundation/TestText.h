// SPDX-License-Identifier: Apache-2.0
// Texts and places in the shapes that the library takes, made in one word.
#pragma once

#include <string_view>

#include "PlatformKit/Text/PascalText.h"
#include "PlatformKit/URL.h"

namespace fi::test {

inline Ref<const CFString> text(std::string_view bytes) {
    return CFString::create(bytes);
}

inline Ref<const CFURL> urlAt(std::string_view path) {
    return CFURL::createFromPath(path);
}

/// A URL that names no place in the file system.
inline Ref<const CFURL> urlWithoutPath() {
    return CFURL::createFromString("https://example.org/DCIM/photo.jpg");
}

/// A length-prefixed string; at most 255 bytes of `bytes`.
inline PascalBuffer pascal(std::string_view bytes) {
    PascalBuffer buffer{};
    (void)storePascal(bytes.substr(0, buffer.size() - 1), buffer);
    return buffer;
}

}  // namespace fi::test
