// SPDX-License-Identifier: Apache-2.0
// What is refused before pixels are read, and the two ways to read them.
#include "PlatformKit/Codecs/BmpReader.h"

#include <new>

#include "PlatformKit/Base/CheckedMath.h"
#include "PlatformKit/Codecs/BmpHeader.h"
#include "PlatformKit/Codecs/BmpPixels.h"
#include "PlatformKit/Codecs/BmpRows.h"
#include "PlatformKit/Codecs/BmpRuns.h"
#include "PlatformKit/Limits.h"

namespace fi {

namespace {

constexpr uint32_t kMaximumProfileBytes = 16U << 20;
constexpr uint32_t kMaximumHeaderBytes = 1024;  // more than any header has, less than any two letters say

/// A file with less than a sixteenth of its rows is no cut picture but a head that promises a huge one.
constexpr uint64_t kRoomForCuts = 16;
/// Of a run-length coded file: two bytes code at most 255 pixels.
constexpr uint64_t kMostPixelsPerByte = 128;

Failure<CodecFailure> fail(CodecError code, const char* text) {
    return Failure{CodecFailure{code, text}};
}

bool hasRuns(const BmpHeader& header) {
    return header.packing == BmpPacking::Runs8 || header.packing == BmpPacking::Runs4;
}

std::optional<CodecFailure> checkKind(const BmpHeader& header) {
    const auto refusal = [](const char* text) { return CodecFailure{CodecError::Unsupported, text}; };
    switch (header.packing) {
        case BmpPacking::Runs24:
            return refusal("BMP pictures with 24-bit run-length coding (OS/2) are not read.");
        case BmpPacking::Huffman:
            return refusal("BMP pictures with Huffman coding (OS/2) are not read.");
        case BmpPacking::Jpeg:
            return refusal("BMP files that hold a JPEG picture are not read.");
        case BmpPacking::Png:
            return refusal("BMP files that hold a PNG picture are not read.");
        default:
            return std::nullopt;
    }
}

/// The floor that is kept to: only rows of gray and opaque colors can be reduced on the way.
SizeFloor usableFloor(const BmpHeader& header, SizeFloor floor) {
    const PixelLayout layout = header.layout();
    const bool reducible = layout == PixelLayout::Gray8 || layout == PixelLayout::RGBX32;
    return reducible && !hasRuns(header) ? floor : SizeFloor{};
}

std::optional<uint64_t> memoryFor(const BmpHeader& header, SizeFloor floor) {
    const BandedPicture::Shape shape = BmpRows::shapeOf(header);
    if (shape.layout != PixelLayout::Gray1) return BandedPicture::bytesNeeded(shape, floor);
    const auto rowBytes = checkedRoundUp(bytesOfRow(shape.width, shape.layout), 64);
    return rowBytes ? checkedMultiply<uint64_t>(*rowBytes, shape.height) : std::nullopt;
}

bool isHollow(const BmpHeader& header, uint64_t fileBytes) {
    if (hasRuns(header)) {
        const uint64_t pixels = uint64_t{header.width} * header.height;
        return pixels / (kMostPixelsPerByte * kRoomForCuts) > fileBytes;
    }
    return BmpRows::storedBytes(header).value_or(UINT64_MAX) / kRoomForCuts > fileBytes;
}

std::optional<CodecFailure> checkLimits(const BmpHeader& header, SizeFloor floor, uint64_t fileBytes) {
    const auto tooMuch = [](const char* text) { return CodecFailure{CodecError::LimitExceeded, text}; };
    const DecodeLimits& limits = decodeLimits();
    if (header.width > limits.maximumSide || header.height > limits.maximumSide) {
        return tooMuch("A side of the picture is longer than is allowed.");
    }
    if (uint64_t{header.width} * header.height > limits.maximumPixels) {
        return tooMuch("The picture has more pixels than is allowed.");
    }
    const auto memory = memoryFor(header, floor);
    if (!memory || *memory > limits.maximumBytes) {
        return tooMuch("The picture needs more memory than is allowed.");
    }
    if (isHollow(header, fileBytes)) {
        return CodecFailure{CodecError::Damaged, "The file is far too short for its picture."};
    }
    return std::nullopt;
}

CodecResult<DecodedPicture> finish(PixelBuffer pixels, bool any, bool complete) {
    if (!any) return fail(CodecError::Damaged, "The file ends before the picture begins.");
    return DecodedPicture{std::move(pixels), !complete};
}

CodecResult<DecodedPicture> decodeRows(ByteSource& source, const BmpHeader& header, SizeFloor floor) {
    auto picture = BandedPicture::create(BmpRows::shapeOf(header), floor);
    if (!picture) return fail(CodecError::NoMemory, "There is not enough memory for the picture.");
    BmpRows rows(source, header);
    const bool complete = rows.decode(*picture);
    return finish(picture->takeResult(), rows.any(), complete);
}

CodecResult<DecodedPicture> decodeRuns(ByteSource& source, const BmpHeader& header) {
    auto picture = PixelBuffer::create(header.width, header.height, header.layout());
    if (!picture) return fail(CodecError::NoMemory, "There is not enough memory for the picture.");
    const BmpPixels pixels(header);
    BmpRuns runs(source, header, pixels, *picture);
    const bool complete = runs.decode();
    return finish(std::move(*picture), runs.any(), complete);
}

CodecResult<DecodedPicture> decode(ByteSource& source, SizeFloor floor) {
    SourceWindow window(source);
    const auto header = parseBmpHeader(window);
    if (!header) return header.failure();
    if (const auto refusal = checkKind(*header)) return Failure{*refusal};
    const SizeFloor usable = usableFloor(*header, floor);
    if (const auto refusal = checkLimits(*header, usable, source.size())) return Failure{*refusal};
    return hasRuns(*header) ? decodeRuns(source, *header) : decodeRows(source, *header, usable);
}

ImageHeader factsOf(const BmpHeader& header) {
    ImageHeader facts;
    facts.width = header.width;
    facts.height = header.height;
    facts.bitsPerComponent = 8;
    facts.components = header.layout() == PixelLayout::RGBA32 ? 4 : 3;
    facts.density = header.density;
    if (!header.hasPalette()) return facts;
    const PixelLayout layout = header.layout();
    facts.bitsPerComponent = header.bits;
    facts.components = 1;
    const bool gray = layout == PixelLayout::Gray1 || layout == PixelLayout::Gray8;
    facts.model = gray ? ColorModel::Gray : ColorModel::RGB;
    return facts;
}

}  // namespace

bool looksLikeBmp(ByteView head) {
    if (head.startsWith("BA")) return head.startsWith("BM", 14);
    // Texts begin with these two letters, too. The size of the header behind them is a small number.
    const auto size = head.u16(14);
    return head.startsWith("BM") && size && *size >= 12 && *size <= kMaximumHeaderBytes;
}

CodecResult<ImageHeader> readBmpHeader(ByteSource& source) {
    try {
        SourceWindow window(source);
        const auto header = parseBmpHeader(window);
        if (!header) return header.failure();
        ImageHeader facts = factsOf(*header);
        if (header->profileBytes > 0 && header->profileBytes <= kMaximumProfileBytes) {
            facts.iccProfile = window.copy(header->profileStart, header->profileBytes);
        }
        // What could not be read in full is no profile.
        if (facts.iccProfile.size() < header->profileBytes) facts.iccProfile.clear();
        return facts;
    } catch (const std::bad_alloc&) {
        return fail(CodecError::NoMemory, "Out of memory.");
    }
}

CodecResult<DecodedPicture> decodeBmp(ByteSource& source, SizeFloor floor) {
    try {
        return decode(source, floor);
    } catch (const std::bad_alloc&) {
        return fail(CodecError::NoMemory, "Out of memory.");
    }
}

}  // namespace fi
