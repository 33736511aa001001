// SPDX-License-Identifier: Apache-2.0
#include "Foundation/ImageFacts.h"

#include <string_view>

#include "Foundation/FileTypes.h"
#include "PlatformKit/Base/CheckedMath.h"
#include "PlatformKit/ImageProperties.h"
#include "PlatformKit/ImageSource.h"
#include "PlatformKit/Imaging/PropertyReaders.h"
#include "PlatformKit/Number.h"

namespace fi {

namespace {

double sideOf(const CFDictionary& properties, CFStringRef key) {
    const auto* number = properties.value<CFNumber>(key);
    return number != nullptr ? number->doubleValue() : 0;
}

}  // namespace

Ref<const CFDictionary> imagePropertiesAt(CFURLRef url) {
    if (url == nullptr) return nullptr;
    const auto source = ImageSource::open(url);
    return source && source->count() > 0 ? source->copyProperties(0) : nullptr;
}

Rect imageBoundsAt(CFURLRef url) {
    if (url == nullptr || url->path() == nullptr) return {};
    if (isPDFFile(url->path()) || isPictFile(url->path())) return {};
    const auto properties = imagePropertiesAt(url);
    if (!properties) return {};
    return {0, 0, truncateToInt16(sideOf(*properties, kCGImagePropertyPixelHeight)),
            truncateToInt16(sideOf(*properties, kCGImagePropertyPixelWidth))};
}

OSErr imageDepthAt(CFURLRef url, int32_t* depth) {
    return url == nullptr ? kNotFoundErr : imageDepthAtPath(url->string(), depth);
}

OSErr imageDepthAtPath(CFStringRef path, int32_t* depth) {
    if (path == nullptr || isQALFile(path)) return kNotFoundErr;
    const auto url = path->view().find("file://") != std::string_view::npos
                         ? CFURL::createFromString(path->view())
                         : CFURL::createFromPath(path->view());
    const auto properties = imagePropertiesAt(url.get());
    if (!properties) return kNotFoundErr;
    *depth = pixelDepth(*properties).value_or(0);
    return kNoErr;
}

}  // namespace fi
