// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/PropertyReaders.h"

#include "PlatformKit/ImageProperties.h"
#include "PlatformKit/Number.h"

namespace fi {

namespace {

int32_t componentsOf(const NSObject* model) {
    if (CFEqual(model, kCGImagePropertyColorModelRGB) || CFEqual(model, kCGImagePropertyColorModelLab))
        return 3;
    return CFEqual(model, kCGImagePropertyColorModelCMYK) ? 4 : 1;
}

/// Nullopt when the entry is missing or no number.
std::optional<int64_t> integerOf(const CFDictionary& properties, CFStringRef key) {
    const Ref<const NSObject> value = properties.copyValue(key->view());
    const auto* number = dynamic_cast<const CFNumber*>(value.get());
    return number == nullptr ? std::nullopt : std::optional(number->int64Value());
}

}  // namespace

std::optional<int32_t> pixelDepth(const CFDictionary& properties) {
    const auto bits = integerOf(properties, kCGImagePropertyDepth);
    if (!bits) return std::nullopt;
    const auto model = properties.copyValue(kCGImagePropertyColorModel->view());
    return static_cast<int16_t>(*bits) * componentsOf(model.get());
}

uint16_t uprightOrientation(const CFDictionary& properties) {
    const int64_t value = integerOf(properties, kCGImagePropertyOrientation).value_or(1);
    return value >= 1 && value <= 8 ? static_cast<uint16_t>(value) : 1;
}

}  // namespace fi
