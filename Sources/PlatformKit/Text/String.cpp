// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/String.h"

#include <cstring>
#include <functional>
#include <new>

#include "PlatformKit/Text/Encodings.h"
#include "PlatformKit/Text/PascalText.h"
#include "PlatformKit/Text/Unicode.h"

namespace fi {

/// One block holds the object, its bytes and a NUL: names and paths are made by the ten thousand.
struct StringAccess {
    static Ref<const CFString> create(std::string_view bytes) {
        void* block = ::operator new(sizeof(CFString) + bytes.size() + 1);
        char* copy = static_cast<char*>(block) + sizeof(CFString);
        if (!bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
        copy[bytes.size()] = '\0';
        return adopt<const CFString>(new (block) CFString(copy, bytes.size()));
    }
};

Ref<const CFString> CFString::create(std::string_view bytes) {
    return StringAccess::create(bytes);
}

Ref<const CFString> CFString::create(std::string_view bytes, TextEncoding encoding) {
    const auto text = toUTF8(bytes, encoding);
    return text ? create(*text) : nullptr;
}

Ref<const CFString> CFString::createFromPascal(const unsigned char* pascal) {
    return create(pascalView(pascal), TextEncoding::UTF8);
}

size_t CFString::length() const noexcept {
    return utf16Length(view());
}

bool CFString::isEqual(const NSObject* other) const {
    const auto* text = dynamic_cast<const CFString*>(other);
    return text != nullptr && text->view() == view();
}

size_t CFString::hash() const {
    return std::hash<std::string_view>{}(view());
}

}  // namespace fi
