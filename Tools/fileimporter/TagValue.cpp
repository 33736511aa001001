// SPDX-License-Identifier: Apache-2.0
#include "TagValue.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>

#include "Text.h"

namespace fi {

namespace {

using Json = nlohmann::ordered_json;

enum Type : uint16_t {
    Byte = 1,
    Ascii,
    Short,
    Long,
    Rational,
    SByte,
    Undefined,
    SShort,
    SLong,
    SRational,
    Float,
    Double,
};

template <typename T>
struct Fraction {
    T numerator;
    T denominator;
};

/// Calls `take` with each unit of the value, as long as it answers true.
template <typename T, typename Take>
void forEach(const PhotoTag& tag, Take take) {
    T unit{};
    for (size_t at = 0; tag.value.size() - at >= sizeof unit; at += sizeof unit) {
        std::memcpy(&unit, tag.value.data() + at, sizeof unit);
        if (!take(unit)) return;
    }
}

/// The same with the type that the tag says. Texts and bytes without a meaning count as bytes.
template <typename Take>
void forEachUnit(const PhotoTag& tag, Take take) {
    switch (tag.type) {
        case Short:
            return forEach<uint16_t>(tag, take);
        case Long:
            return forEach<uint32_t>(tag, take);
        case Rational:
            return forEach<Fraction<uint32_t>>(tag, take);
        case SByte:
            return forEach<int8_t>(tag, take);
        case SShort:
            return forEach<int16_t>(tag, take);
        case SLong:
            return forEach<int32_t>(tag, take);
        case SRational:
            return forEach<Fraction<int32_t>>(tag, take);
        case Float:
            return forEach<float>(tag, take);
        case Double:
            return forEach<double>(tag, take);
        default:
            return forEach<uint8_t>(tag, take);
    }
}

template <typename T>
Json asJson(T number) {
    if constexpr (std::is_floating_point_v<T>) {
        if (!std::isfinite(number)) return nullptr;
    }
    return number;
}

template <typename T>
Json asJson(const Fraction<T>& fraction) {
    return Json::array({fraction.numerator, fraction.denominator});
}

template <typename T>
std::string asWords(T number) {
    return fmt::format("{}", number);
}

template <typename T>
std::string asWords(const Fraction<T>& fraction) {
    return fmt::format("{}/{}", fraction.numerator, fraction.denominator);
}

/// Without the zero bytes at its end.
std::string_view textOf(const PhotoTag& tag) {
    const std::string_view text = tag.value;
    return text.substr(0, text.find_last_not_of('\0') + 1);
}

bool isPlainText(std::string_view bytes) {
    return !bytes.empty() && std::ranges::all_of(bytes, [](char c) { return c >= ' ' && c <= '~'; });
}

/// Words with `between` them, as many as fit; then how many there are in all.
class Series {
public:
    Series(std::string_view between, size_t columns) : m_between(between), m_columns(columns) {}

    bool add(const std::string& word) {
        m_cut = !m_text.empty() && m_text.size() + m_between.size() + word.size() > m_columns;
        if (m_cut) return false;
        if (!m_text.empty()) m_text += m_between;
        m_text += word;
        return true;
    }

    [[nodiscard]] std::string text(size_t count, std::string_view units) const {
        return m_cut ? fmt::format("{}{}\u2026 ({} {})", m_text, m_between, count, units) : m_text;
    }

private:
    std::string_view m_between;
    size_t m_columns;
    std::string m_text;
    bool m_cut = false;
};

std::string bytesInWords(const PhotoTag& tag, size_t columns) {
    if (isPlainText(tag.value) && tag.value.size() + 2 <= columns) return '"' + tag.value + '"';
    Series series(" ", columns);
    forEach<uint8_t>(tag, [&](uint8_t byte) { return series.add(fmt::format("{:02x}", byte)); });
    return series.text(tag.value.size(), "bytes");
}

std::string numbersInWords(const PhotoTag& tag, size_t columns) {
    Series series(", ", columns);
    forEachUnit(tag, [&](auto unit) { return series.add(asWords(unit)); });
    return series.text(tagCount(tag), "values");
}

}  // namespace

size_t tagCount(const PhotoTag& tag) {
    const size_t unit = tagUnitSize(tag.type);
    return unit == 0 ? 0 : tag.value.size() / unit;
}

Json tagJsonValue(const PhotoTag& tag) {
    if (tag.type == Ascii) return asUtf8(textOf(tag));
    if (tag.type == Byte || tag.type == Undefined) return base64(tag.value);
    Json values = Json::array();
    forEachUnit(tag, [&](auto unit) {
        values.push_back(asJson(unit));
        return true;
    });
    return values.size() == 1 ? Json(values.front()) : values;
}

std::optional<std::string> tagExactText(const PhotoTag& tag) {
    if (tag.type != Ascii || isUtf8(textOf(tag))) return std::nullopt;
    return base64(textOf(tag));
}

std::string tagWords(const PhotoTag& tag, size_t columns) {
    if (tag.type == Ascii) return shortened(printable(textOf(tag)), columns);
    if (tag.type == Undefined) return bytesInWords(tag, columns);
    return numbersInWords(tag, columns);
}

}  // namespace fi
