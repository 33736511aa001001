// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/JfifFrame.h"

#include <utility>

#include "ImageMetadata/TagEntry.h"

namespace fi {

namespace {

constexpr size_t kFirstSegment = 2;
constexpr size_t kFewestBytes = 6;
constexpr size_t kMarkerSize = 2;
constexpr size_t kHeightInFrame = 5;
constexpr size_t kWidthInFrame = 7;
constexpr size_t kFrameSize = 9;
constexpr uint8_t kBaseline = 0xC0;
constexpr uint8_t kProgressive = 0xC2;

/// Leaves the number at a place that was checked in host order, and returns it.
uint16_t swapInPlace(std::span<uint8_t> bytes, size_t offset) {
    std::swap(bytes[offset], bytes[offset + 1]);
    return readU16(bytes.data() + offset, false);
}

/// Where the frame's marker stands. One that the data cut off is none.
std::optional<size_t> findFrame(std::span<uint8_t> jpeg) {
    std::optional<size_t> progressive;
    size_t segment = kFirstSegment;
    do {
        const bool isMarker = jpeg[segment] == 0xFF;
        const bool isWhole = jpeg.size() - segment >= kFrameSize;
        if (isMarker && jpeg[segment + 1] == kBaseline) return isWhole ? segment : progressive;
        if (isMarker && jpeg[segment + 1] == kProgressive && isWhole) progressive = segment;
        segment += size_t{kMarkerSize} + swapInPlace(jpeg, segment + kMarkerSize);
    } while (segment + kFewestBytes < jpeg.size());
    return progressive;
}

}  // namespace

std::optional<JfifFrameSize> findJfifFrame(std::span<uint8_t> jpeg) {
    if (jpeg.size() < kFewestBytes) return std::nullopt;
    const auto frame = findFrame(jpeg);
    if (!frame) return std::nullopt;
    const uint16_t height = swapInPlace(jpeg, *frame + kHeightInFrame);
    return JfifFrameSize{swapInPlace(jpeg, *frame + kWidthInFrame), height};
}

}  // namespace fi
