// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/MetadataValues.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <utility>

#include "PlatformKit/Array.h"
#include "PlatformKit/Data.h"
#include "PlatformKit/Number.h"
#include "PlatformKit/String.h"

namespace fi {

namespace {

/// No standard tag of the table has nearly as many; a damaged count must not make a million objects.
constexpr size_t kMostValues = 256;

Ref<const NSObject> textValue(const TiffField& field) {
    const bool isText = field.type == kTiffAscii || field.type == kTiffByte || field.type == kTiffUndefined;
    return isText ? CFString::create(field.asText()) : nullptr;
}

Ref<const NSObject> bytesValue(const TiffField& field) {
    return field.data.empty() ? nullptr : CFData::create(field.data);
}

Ref<const CFNumber> integerAt(const TiffField& field, size_t index) {
    const auto value = field.asSigned(index);
    return value ? CFNumber::create(*value) : nullptr;
}

Ref<const CFNumber> realAt(const TiffField& field, size_t index) {
    const auto value = field.asRational(index);
    return value && std::isfinite(*value) ? CFNumber::create(*value) : nullptr;
}

/// A single number as itself, several as an array; null when one of them is missing.
template <typename NumberAt>
Ref<const NSObject> numbersValue(const TiffField& field, const NumberAt& numberAt) {
    if (field.count == 0 || field.count > kMostValues) return nullptr;
    if (field.count == 1) return numberAt(field, 0);
    CFArray::Elements elements;
    for (size_t i = 0; i < field.count; ++i) {
        Ref<const CFNumber> number = numberAt(field, i);
        if (!number) return nullptr;
        elements.push_back(std::move(number));
    }
    return CFArray::create(std::move(elements));
}

/// Three numbers of 60 steps each. Cameras may leave out the lower ones, or write 0/0 for them.
std::optional<std::array<double, 3>> sexagesimal(const TiffField& field) {
    std::array<double, 3> parts = {};
    for (size_t i = 0; i < parts.size(); ++i) {
        const auto part = field.asRational(i);
        if (part && !std::isfinite(*part)) return std::nullopt;
        if (!part && i == 0) return std::nullopt;
        parts[i] = part.value_or(0);
    }
    return parts;
}

Ref<const NSObject> degreesValue(const TiffField& field) {
    const auto parts = sexagesimal(field);
    if (!parts) return nullptr;
    const auto& [degrees, minutes, seconds] = *parts;
    return CFNumber::create(degrees + minutes / 60 + seconds / 3600);
}

Ref<const NSObject> clockTimeValue(const TiffField& field) {
    const auto parts = sexagesimal(field);
    if (!parts) return nullptr;
    const auto& [hours, minutes, seconds] = *parts;
    const auto within = [](double value, double limit) { return value >= 0 && value < limit; };
    // 61: a leap second.
    if (!within(hours, 24) || !within(minutes, 60) || !within(seconds, 61)) return nullptr;
    std::array<char, 16> text = {};
    const int length = std::snprintf(text.data(), text.size(), "%02d:%02d:%02d", static_cast<int>(hours),
                                     static_cast<int>(minutes), static_cast<int>(seconds));
    return CFString::create(std::string_view(text.data(), static_cast<size_t>(length)));
}

}  // namespace

Ref<const NSObject> metadataValue(const TiffField& field, MetadataKind kind) {
    switch (kind) {
        case MetadataKind::Text:
            return textValue(field);
        case MetadataKind::Integer:
            return numbersValue(field, integerAt);
        case MetadataKind::Real:
            return numbersValue(field, realAt);
        case MetadataKind::Bytes:
            return bytesValue(field);
        case MetadataKind::Degrees:
            return degreesValue(field);
        case MetadataKind::ClockTime:
            return clockTimeValue(field);
    }
    return nullptr;
}

}  // namespace fi
