// SPDX-License-Identifier: Apache-2.0
// Any bytes: facts and pixels of a QuickDraw picture agree, keep their bounds, or fail with a reason.
#include <cmath>

#include "Contract.h"
#include "PlatformKit/Codecs/PictReader.h"
#include "PlatformKit/Limits.h"

using namespace fi;
using fi::fuzz::require;

namespace {

void checkHeader(const ImageHeader& header) {
    require(header.width > 0 && header.height > 0, "a picture is not empty");
    require(header.components == 1 || header.components == 3, "gray or color");
    if (!header.density) return;
    const double points = header.width * 72 / header.density->x;
    require(points > 0.5 && points < 65536, "the frame in points can be found");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    decodeLimits().maximumPixels = 1 << 18;
    decodeLimits().maximumBytes = uint64_t{16} << 20;
    decodeLimits().maximumScans = 5;
    MemorySource source(std::span<const uint8_t>(data, size));
    const auto header = readPictHeader(source);
    const auto picture = decodePict(source, SizeFloor{});
    if (!picture) require(!picture.reason().text.empty(), "a failure has a reason");
    if (!header) {
        require(!header.reason().text.empty(), "a failure has a reason");
        require(!picture.ok(), "what decodes has a header");
        return 0;
    }
    require(looksLikePict(ByteView(data, size)), "a header comes from a PICT file");
    checkHeader(*header);
    if (!picture) return 0;
    const PixelBuffer& pixels = picture->pixels;
    require(pixels.width() == header->width, "the stored width");
    require(pixels.height() == header->height, "the stored height");
    const uint32_t bits = header->bitsPerComponent * (header->components == 3 ? 4 : 1);
    require(bitsPerPixel(pixels.layout()) == bits, "the layout is that of the header");
    return 0;
}
