// SPDX-License-Identifier: Apache-2.0
// The place of a file. Immutable; a path's bytes survive whether they are UTF-8 or not.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "PlatformKit/String.h"

namespace fi {

class FI_EXPORT CFURL final : public NSObject {
public:
    /// OWNED. The file URL of a path, slashes at its end left out (behind one, the system would take a link
    /// for the folder it points at); a relative one is taken from the current folder. Null for an empty
    /// path or one with a NUL in it.
    static Ref<const CFURL> createFromPath(std::string_view path);
    /// OWNED. From a URL's text, "file:///a%20b" or "file:/a"; other schemes give a URL without a path.
    /// Null for text without a scheme.
    static Ref<const CFURL> createFromString(std::string_view text);

    /// The decoded file-system path, BORROWED; null when this is no file URL.
    [[nodiscard]] CFStringRef path() const noexcept { return m_path.get(); }
    /// The text of the URL ("file://…", percent-encoded), BORROWED; never null.
    [[nodiscard]] CFStringRef string() const noexcept { return m_string.get(); }

    /// OWNED. The last path component, null when this is no file URL.
    [[nodiscard]] Ref<const CFString> copyLastPathComponent() const;
    /// OWNED. The path extension without its dot, null when there is none.
    [[nodiscard]] Ref<const CFString> copyPathExtension() const;
    /// OWNED. Always a new object; null when this is no file URL.
    [[nodiscard]] Ref<const CFURL> createAppending(std::string_view component) const;
    [[nodiscard]] Ref<const CFURL> createWithoutLastPathComponent() const;

    /// Writes the path and a NUL into `buffer`. False, nothing written, when it does not fit or there is
    /// none.
    [[nodiscard]] bool fileSystemRepresentation(char* buffer, size_t size) const noexcept;

    /// Equality of the texts.
    [[nodiscard]] bool isEqual(const NSObject* other) const override;
    [[nodiscard]] size_t hash() const override;

private:
    CFURL(Ref<const CFString> string, Ref<const CFString> path)
    noexcept : m_string(std::move(string)), m_path(std::move(path)) {}
    ~CFURL() override = default;

    Ref<const CFString> m_string;
    Ref<const CFString> m_path;
};

using CFURLRef = const CFURL*;
using NSURL = CFURL;

}  // namespace fi
