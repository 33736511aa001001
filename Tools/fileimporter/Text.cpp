// SPDX-License-Identifier: Apache-2.0
#include "Text.h"

#include <fmt/format.h>
#include <wchar.h>

#include <algorithm>
#include <array>

namespace fi {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr char32_t kNoCharacter = 0xFFFFFFFF;

struct Character {
    char32_t code = kNoCharacter;  ///< kNoCharacter: a byte that is no UTF-8
    size_t size = 1;
};

size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

bool isScalar(char32_t code, size_t size) {
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    return code >= kSmallest[size] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

/// The character that `bytes`, which are not empty, begin with.
Character firstCharacter(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes.front());
    const size_t size = sequenceLength(lead);
    if (size == 0 || size > bytes.size()) return {};
    if (size == 1) return {lead, 1};
    char32_t code = lead & (0x7FU >> size);
    for (size_t i = 1; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xC0U) != 0x80) return {};
        code = code << 6U | (byte & 0x3FU);
    }
    return isScalar(code, size) ? Character{code, size} : Character{};
}

/// Calls `take(code, bytes)` for each character.
template <typename Take>
void forEachCharacter(std::string_view bytes, Take take) {
    while (!bytes.empty()) {
        const Character character = firstCharacter(bytes);
        take(character.code, bytes.substr(0, character.size));
        bytes.remove_prefix(character.size);
    }
}

bool isControl(char32_t code) {
    const bool turnsDirection = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069) ||
                                code == 0x200E || code == 0x200F || code == 0x061C;
    const bool endsLine = code == 0x2028 || code == 0x2029;
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || turnsDirection || endsLine;
}

std::string escaped(char32_t code) {
    if (code == '\n') return "\\n";
    if (code == '\t') return "\\t";
    if (code == '\r') return "\\r";
    const auto number = static_cast<uint32_t>(code);
    return number < 0x100 ? fmt::format("\\x{:02x}", number) : fmt::format("\\u{:04x}", number);
}

size_t columnsOf(char32_t code) {
    const int columns = code == kNoCharacter ? 1 : wcwidth(static_cast<wchar_t>(code));
    return columns < 0 ? 1 : static_cast<size_t>(columns);
}

}  // namespace

bool isUtf8(std::string_view bytes) {
    bool valid = true;
    forEachCharacter(bytes,
                     [&](char32_t code, std::string_view) { valid = valid && code != kNoCharacter; });
    return valid;
}

std::string asUtf8(std::string_view bytes) {
    std::string text;
    forEachCharacter(bytes, [&](char32_t code, std::string_view sequence) {
        text += code == kNoCharacter ? kReplacement : sequence;
    });
    return text;
}

std::string printable(std::string_view bytes) {
    std::string text;
    forEachCharacter(bytes, [&](char32_t code, std::string_view sequence) {
        if (code == kNoCharacter) {
            text += kReplacement;
        } else if (isControl(code)) {
            text += escaped(code);
        } else {
            text += sequence;
        }
    });
    return text;
}

size_t displayWidth(std::string_view text) {
    size_t width = 0;
    forEachCharacter(text, [&](char32_t code, std::string_view) { width += columnsOf(code); });
    return width;
}

std::string shortened(std::string_view text, size_t columns) {
    if (displayWidth(text) <= columns) return std::string(text);
    std::string start;
    size_t width = 1;  // of the ellipsis
    forEachCharacter(text, [&](char32_t code, std::string_view sequence) {
        width += columnsOf(code);
        if (width <= columns) start += sequence;
    });
    return start + "\u2026";
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - i);
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k)
            group = group << 8U | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (size_t k = 0; k < 4; ++k)
            text += k <= count ? kDigits[group >> (18 - 6 * k) & 0x3FU] : '=';
    }
    return text;
}

std::string readableSize(uint64_t bytes) {
    constexpr std::array<const char*, 5> kUnits = {"kB", "MB", "GB", "TB", "PB"};
    if (bytes < 1000) return fmt::format("{} B", bytes);
    double value = static_cast<double>(bytes) / 1000;
    size_t unit = 0;
    // 999.95 would be shown as 1000.0.
    for (; value >= 999.95 && unit + 1 < kUnits.size(); ++unit)
        value /= 1000;
    return fmt::format("{:.1f} {}", value, kUnits[unit]);
}

std::string_view fileName(std::string_view path) {
    const size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace fi
