// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Text/Unicode.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace fi {

namespace {

constexpr uint8_t kFirstBeyondASCII = 0x80;
constexpr utf8proc_int32_t kLastOfBasicPlane = 0xFFFF;

struct Character {
    utf8proc_int32_t codepoint = -1;  ///< negative: one byte that is not UTF-8
    size_t size = 1;
};

Character characterAt(std::string_view text, size_t position) {
    Character result;
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data()) + position;
    const auto rest = static_cast<utf8proc_ssize_t>(text.size() - position);
    const utf8proc_ssize_t size = utf8proc_iterate(bytes, rest, &result.codepoint);
    if (size > 0) {
        result.size = static_cast<size_t>(size);
    } else {
        result.codepoint = -1;
    }
    return result;
}

void append(std::string& out, utf8proc_int32_t codepoint) {
    utf8proc_uint8_t bytes[4];
    const utf8proc_ssize_t size = utf8proc_encode_char(codepoint, bytes);
    out.append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(size));
}

char lowerASCII(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
char upperASCII(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

template <typename MapASCII, typename MapAny>
std::string mapped(std::string_view text, MapASCII mapASCII, MapAny mapAny) {
    std::string out;
    out.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        if (static_cast<uint8_t>(text[at]) < kFirstBeyondASCII) {
            out.push_back(mapASCII(text[at]));
            ++at;
            continue;
        }
        const Character character = characterAt(text, at);
        if (character.codepoint < 0) {
            out.push_back(text[at]);
        } else {
            append(out, mapAny(character.codepoint));
        }
        at += character.size;
    }
    return out;
}

std::string foldedBeyondASCII(std::string_view text) {
    const auto options = static_cast<utf8proc_option_t>(UTF8PROC_CASEFOLD);
    utf8proc_uint8_t* result = nullptr;
    const utf8proc_ssize_t size =
        utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                     static_cast<utf8proc_ssize_t>(text.size()), &result, options);
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owned(result, &std::free);
    if (size < 0) return mapped(text, lowerASCII, utf8proc_tolower);
    return std::string(reinterpret_cast<const char*>(result), static_cast<size_t>(size));
}

}  // namespace

bool isASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<uint8_t>(c) < kFirstBeyondASCII; });
}

bool isValidUTF8(std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        if (static_cast<uint8_t>(text[at]) < kFirstBeyondASCII) {
            ++at;
            continue;
        }
        const Character character = characterAt(text, at);
        if (character.codepoint < 0) return false;
        at += character.size;
    }
    return true;
}

size_t utf16Length(std::string_view text) {
    size_t units = 0;
    for (size_t at = 0; at < text.size();) {
        const Character character = characterAt(text, at);
        units += character.codepoint > kLastOfBasicPlane ? 2 : 1;
        at += character.size;
    }
    return units;
}

std::string asciiUnits(std::string_view text) {
    std::string units;
    for (size_t at = 0; at < text.size();) {
        const Character character = characterAt(text, at);
        const bool ascii = character.codepoint >= 0 && character.codepoint < kFirstBeyondASCII;
        units.append(character.codepoint > kLastOfBasicPlane ? 2 : 1, ascii ? text[at] : '\xFF');
        at += character.size;
    }
    return units;
}

std::string lowercased(std::string_view text) {
    return mapped(text, lowerASCII, utf8proc_tolower);
}

std::string uppercased(std::string_view text) {
    return mapped(text, upperASCII, utf8proc_toupper);
}

std::string caseFolded(std::string_view text) {
    if (isASCII(text)) return mapped(text, lowerASCII, utf8proc_tolower);
    return foldedBeyondASCII(text);
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    if (isASCII(a) && isASCII(b)) {
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
                   return lowerASCII(x) == lowerASCII(y);
               });
    }
    return caseFolded(a) == caseFolded(b);
}

std::string canonicallyDecomposed(std::string_view text) {
    if (isASCII(text)) return std::string(text);
    const auto options = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE);
    utf8proc_uint8_t* result = nullptr;
    const utf8proc_ssize_t size =
        utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                     static_cast<utf8proc_ssize_t>(text.size()), &result, options);
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owned(result, &std::free);
    if (size < 0) return std::string(text);
    return std::string(reinterpret_cast<const char*>(result), static_cast<size_t>(size));
}

}  // namespace fi
