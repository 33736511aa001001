// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/PropertyReaders.h"

#include "PlatformKit/ImageProperties.h"
#include "PlatformKit/Number.h"

namespace fi {

namespace {

int32_t componentsOf(const CFString* model) {
    if (CFEqual(model, kCGImagePropertyColorModelRGB) || CFEqual(model, kCGImagePropertyColorModelLab))
        return 3;
    return CFEqual(model, kCGImagePropertyColorModelCMYK) ? 4 : 1;
}

}  // namespace

std::optional<int32_t> pixelDepth(const CFDictionary& properties) {
    const auto* bits = properties.value<CFNumber>(kCGImagePropertyDepth);
    if (bits == nullptr) return std::nullopt;
    return bits->int16Value() * componentsOf(properties.value<CFString>(kCGImagePropertyColorModel));
}

uint16_t uprightOrientation(const CFDictionary& properties) {
    const auto* number = properties.value<CFNumber>(kCGImagePropertyOrientation);
    const int64_t value = number == nullptr ? 0 : number->int64Value();
    return value >= 1 && value <= 8 ? static_cast<uint16_t>(value) : 1;
}

}  // namespace fi
