// SPDX-License-Identifier: Apache-2.0
#include "Support/MakePictures.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <stdexcept>
#include <utility>

#include "PlatformKit/Codecs/JpegWriter.h"
#include "PlatformKit/Drawing/Turns.h"

namespace fi::test {

namespace {

using Color = std::array<uint8_t, 3>;

Color colorAt(uint32_t x, uint32_t y, uint32_t width, uint32_t height) {
    const bool left = x < (width + 3) / 4;
    const bool right = x >= width - (width + 3) / 4;
    const bool top = y < (height + 3) / 4;
    const bool bottom = y >= height - (height + 3) / 4;
    if (top && left) return kCorners.topLeft;
    if (top && right) return kCorners.topRight;
    if (bottom && right) return kCorners.bottomRight;
    if (bottom && left) return kCorners.bottomLeft;
    const auto shade = static_cast<uint8_t>(90 + 60 * uint64_t{x} / width + 60 * uint64_t{y} / height);
    return {shade, shade, shade};
}

Turn inverse(Turn turn) {
    if (turn == Turn::Clockwise) return Turn::CounterClockwise;
    if (turn == Turn::CounterClockwise) return Turn::Clockwise;
    return turn;
}

void append(Bytes& out, std::span<const uint8_t> bytes) {
    std::copy(bytes.begin(), bytes.end(), std::back_inserter(out));
}

Bytes samplesOf(const PixelBuffer& picture) {
    const bool gray = picture.layout() == PixelLayout::Gray8;
    Bytes samples;
    for (uint32_t y = 0; y < picture.height(); ++y) {
        for (uint32_t x = 0; x < picture.width(); ++x) {
            const uint8_t* pixel = picture.row(y) + size_t{x} * bytesPerPixel(picture.layout());
            append(samples, {pixel, gray ? 1U : 3U});
        }
    }
    return samples;
}

}  // namespace

PixelBuffer testPicture(uint32_t width, uint32_t height, PixelLayout layout) {
    auto picture = PixelBuffer::create(width, height, layout);
    if (!picture) throw std::bad_alloc();
    for (uint32_t y = 0; y < height; ++y) {
        uint8_t* at = picture->row(y);
        for (uint32_t x = 0; x < width; ++x) {
            const Color color = colorAt(x, y, width, height);
            if (layout == PixelLayout::Gray8) {
                *at++ = color[1];
                continue;
            }
            at = std::copy(color.begin(), color.end(), at);
            *at++ = 255;
        }
    }
    return std::move(*picture);
}

PixelBuffer storedFor(const PixelBuffer& upright, uint16_t orientation) {
    auto stored = turned(upright, inverse(turnForOrientation(orientation)));
    if (!stored) throw std::bad_alloc();
    return std::move(*stored);
}

Bytes jpegOf(const PixelBuffer& picture, double quality, std::optional<Density> density) {
    Bytes file;
    const auto failure = encodeJpeg(picture, {quality, density}, [&](std::span<const uint8_t> bytes) {
        append(file, bytes);
        return true;
    });
    if (failure) throw std::runtime_error(failure->text);
    return file;
}

TiffDirectory exifDirectory(const ExifFacts& facts) {
    TiffDirectory exif;
    if (!facts.date.empty()) exif.text(0x9003, facts.date);
    if (facts.width != 0) exif.longs(0xA002, {facts.width});
    if (facts.height != 0) exif.longs(0xA003, {facts.height});
    TiffDirectory first;
    if (!facts.maker.empty()) first.text(0x010F, facts.maker);
    if (facts.orientation != 0) first.shorts(0x0112, {facts.orientation});
    return first.directory(0x8769, std::move(exif));
}

Bytes withExif(std::span<const uint8_t> jpeg, std::span<const uint8_t> exifBlock) {
    constexpr std::array<uint8_t, 6> kName = {'E', 'x', 'i', 'f', 0, 0};
    const size_t length = 2 + kName.size() + exifBlock.size();
    if (length > 0xFFFF) throw std::length_error("too long for a segment");
    Bytes file;
    append(file, jpeg.first(2));
    append(file, std::array<uint8_t, 4>{0xFF, 0xE1, static_cast<uint8_t>(length >> 8),
                                        static_cast<uint8_t>(length & 0xFF)});
    append(file, kName);
    append(file, exifBlock);
    append(file, jpeg.subspan(2));
    return file;
}

Bytes withExif(std::span<const uint8_t> jpeg, const ExifFacts& facts, ByteOrder order) {
    return withExif(jpeg, tiffBlock({exifDirectory(facts)}, order));
}

TiffDirectory tiffPage(const PixelBuffer& picture) {
    const bool gray = picture.layout() == PixelLayout::Gray8;
    Bytes samples = samplesOf(picture);
    TiffDirectory page;
    page.longs(0x0100, {picture.width()})
        .longs(0x0101, {picture.height()})
        .shorts(0x0102, gray ? std::vector<uint16_t>{8} : std::vector<uint16_t>{8, 8, 8})
        .shorts(0x0103, {1})
        .shorts(0x0106, {gray ? uint16_t{1} : uint16_t{2}})
        .shorts(0x0115, {gray ? uint16_t{1} : uint16_t{3}})
        .longs(0x0116, {picture.height()})
        .longs(0x0117, {static_cast<uint32_t>(samples.size())})
        .block(0x0111, std::move(samples));
    return page;
}

Bytes tiffOf(const PixelBuffer& picture, uint16_t orientation, ByteOrder order) {
    TiffDirectory page = tiffPage(picture);
    if (orientation != 0) page.shorts(0x0112, {orientation});
    return tiffBlock({page}, order);
}

}  // namespace fi::test
