// SPDX-License-Identifier: Apache-2.0
// Any bytes: facts and pixels of a BMP file agree, keep their bounds, or fail with a reason.
#include <algorithm>

#include "Contract.h"
#include "PlatformKit/Codecs/BmpReader.h"
#include "PlatformKit/Limits.h"

using namespace fi;
using fi::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    decodeLimits().maximumPixels = 1 << 18;
    MemorySource source(std::span<const uint8_t>(data, size));
    const SizeFloor floor{size > 0 ? data[size - 1] : 0U, size > 1 ? data[size - 2] : 0U};
    const auto header = readBmpHeader(source);
    const auto picture = decodeBmp(source, floor);
    if (!picture) require(!picture.reason().text.empty(), "a failure has a reason");
    if (!header) {
        require(!header.reason().text.empty(), "a failure has a reason");
        require(!picture.ok(), "what decodes has a header");
        return 0;
    }
    require(looksLikeBmp(ByteView(data, size)), "a header comes from a BMP file");
    require(header->width > 0 && header->height > 0 && header->components > 0, "a picture is not empty");
    require(header->iccProfile.size() <= size, "a profile comes from the file");
    if (!picture) return 0;
    const PixelBuffer& pixels = picture->pixels;
    require(pixels.width() <= header->width && pixels.height() <= header->height,
            "never above the stored size");
    require(pixels.width() >= std::min(floor.width, header->width), "never below the wanted width");
    require(pixels.height() >= std::min(floor.height, header->height), "never below the wanted height");
    const bool gray = pixels.layout() == PixelLayout::Gray1 || pixels.layout() == PixelLayout::Gray8;
    require(gray == (header->model == ColorModel::Gray), "gray is gray");
    require((pixels.layout() == PixelLayout::RGBA32) == (header->components == 4), "alpha is a component");
    return 0;
}
