// SPDX-License-Identifier: Apache-2.0
// Any bytes: facts and pixels of a TIFF page agree, keep their bounds, or fail with a reason.
#include "Contract.h"
#include "PlatformKit/Codecs/TiffReader.h"
#include "PlatformKit/Limits.h"

using namespace fi;
using fi::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    decodeLimits().maximumPixels = 1 << 18;
    decodeLimits().maximumBytes = uint64_t{64} << 20;
    decodeLimits().maximumPages = 100;
    MemorySource source(std::span<const uint8_t>(data, size));
    const uint32_t page = size > 0 ? data[size - 1] % 3U : 0U;
    const auto header = readTiffHeader(source, page);
    const auto picture = decodeTiff(source, page, SizeFloor{});
    if (!picture) require(!picture.reason().text.empty(), "a failure has a reason");
    if (!header) {
        require(!header.reason().text.empty(), "a failure has a reason");
        require(!picture.ok(), "what decodes has a header");
        return 0;
    }
    require(looksLikeTiff(ByteView(data, size)), "a header comes from a TIFF file");
    require(header->width > 0 && header->height > 0, "a picture is not empty");
    require(header->pages > page && header->pages <= 100, "pages are counted up to the limit");
    if (!picture) return 0;
    require(picture->pixels.width() == header->width, "the stored width");
    require(picture->pixels.height() == header->height, "the stored height");
    return 0;
}
