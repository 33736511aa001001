// SPDX-License-Identifier: Apache-2.0
// Any bytes: facts and pixels of a PNG file agree, keep their bounds, or fail with a reason.
#include "Contract.h"
#include "PlatformKit/Codecs/PngReader.h"
#include "PlatformKit/Limits.h"

using namespace fi;
using fi::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    decodeLimits().maximumPixels = 1 << 18;
    decodeLimits().maximumBytes = uint64_t{64} << 20;
    MemorySource source(std::span<const uint8_t>(data, size));
    const auto header = readPngHeader(source);
    const uint32_t side = size > 0 ? data[size - 1] % 3U * 7U : 0U;
    const auto picture = decodePng(source, SizeFloor{side, side});
    if (!picture) require(!picture.reason().text.empty(), "a failure has a reason");
    if (!header) {
        require(!header.reason().text.empty(), "a failure has a reason");
        require(!picture.ok(), "what decodes has a header");
        return 0;
    }
    require(looksLikePng(ByteView(data, size)), "a header comes from a PNG file");
    require(header->width > 0 && header->height > 0, "a picture is not empty");
    if (!picture) return 0;
    const PixelBuffer& pixels = picture->pixels;
    require(pixels.width() <= header->width && pixels.height() <= header->height,
            "the stored size at most");
    require(pixels.width() >= side || pixels.width() == header->width, "the wanted width at least");
    require(pixels.height() >= side || pixels.height() == header->height, "the wanted height at least");
    if (side == 0) require(pixels.width() == header->width, "without a floor the stored size");
    return 0;
}
