// SPDX-License-Identifier: Apache-2.0
// Immutable text. UTF-8 as a rule; a path whose bytes are not UTF-8 is carried unchanged.
#pragma once

#include <cstdint>
#include <string_view>

#include "PlatformKit/Ref.h"

namespace fi {

enum class TextEncoding : uint8_t {
    UTF8,
    ASCII,          ///< strict: a byte above 127 fails
    UTF16,          ///< native byte order, two bytes a unit
    ShiftJIS,       ///< CP932
    SystemDefault,  ///< the character set of the environment's locale
};

class FI_EXPORT CFString final : public NSObject {
public:
    /// OWNED. A string with exactly these bytes, whatever they are (paths).
    static Ref<const CFString> create(std::string_view bytes);
    /// OWNED. Text in an encoding; null when the bytes are not valid in it.
    static Ref<const CFString> create(std::string_view bytes, TextEncoding encoding);
    /// OWNED. From a length-prefixed string in UTF-8; null when its bytes are not valid UTF-8.
    static Ref<const CFString> createFromPascal(const unsigned char* pascal);

    /// A constant in static storage (see StringConstant).
    template <size_t N>
    constexpr CFString(Immortal immortal, const char (&text)[N]) noexcept
        : NSObject(immortal), m_bytes(text), m_size(N - 1) {}

    /// The bytes; BORROWED, valid as long as the string. A NUL follows them.
    [[nodiscard]] std::string_view view() const noexcept { return {m_bytes, m_size}; }
    [[nodiscard]] const char* c_str() const noexcept { return m_bytes; }

    /// Length in UTF-16 code units; a byte that is not part of valid UTF-8 counts as one.
    [[nodiscard]] size_t length() const noexcept;

    /// Equality by code units, without normalisation.
    [[nodiscard]] bool isEqual(const NSObject* other) const override;
    [[nodiscard]] size_t hash() const override;

    static void operator delete(void* block) { ::operator delete(block); }

private:
    friend struct StringAccess;
    CFString(const char* bytes, size_t size) noexcept : m_bytes(bytes), m_size(size) {}
    ~CFString() override = default;
    static void* operator new(size_t, void* where) noexcept { return where; }

    template <size_t N>
    friend union StringConstant;

    const char* m_bytes;
    size_t m_size;
};

using CFStringRef = const CFString*;
using NSString = CFString;

/// Storage of a constant string: built at compile time, never destroyed, usable by any static
/// constructor. `constinit StringConstant kName("text");` and `kName.ref()`.
template <size_t N>
union StringConstant {
    constexpr explicit StringConstant(const char (&text)[N]) noexcept
        : m_string(CFString::Immortal::Yes, text) {}
    ~StringConstant() {}  // the text is never destroyed
    StringConstant(const StringConstant&) = delete;
    StringConstant& operator=(const StringConstant&) = delete;

    [[nodiscard]] constexpr CFStringRef ref() const noexcept { return &m_string; }

private:
    CFString m_string;
};

}  // namespace fi
