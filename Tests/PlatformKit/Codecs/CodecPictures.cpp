// SPDX-License-Identifier: Apache-2.0
// Smooth gradients survive every lossy codec, so small differences mean something.
#include "PlatformKit/Codecs/CodecPictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

#include "PlatformKit/Codecs/JpegWriter.h"

namespace fi::test {

namespace {

uint8_t ramp(uint32_t at, uint32_t length, bool falling) {
    const uint32_t level = length > 1 ? 30 + at * 190 / (length - 1) : 125;
    return static_cast<uint8_t>(falling ? 250 - level : level);
}

}  // namespace

PixelBuffer makePicture(uint32_t width, uint32_t height, PixelLayout layout) {
    auto picture = PixelBuffer::create(width, height, layout);
    if (!picture) throw std::bad_alloc();
    for (uint32_t y = 0; y < height; ++y) {
        uint8_t* out = picture->row(y);
        for (uint32_t x = 0; x < width; ++x) {
            const uint8_t across = ramp(x, width, false);
            const uint8_t down = ramp(y, height, false);
            if (layout == PixelLayout::Gray8) {
                out[x] = static_cast<uint8_t>((2 * across + down) / 3);
                continue;
            }
            const uint8_t color[4] = {across, down, ramp(x, width, true), 255};
            std::copy_n(color, 4, out + size_t{x} * 4);
        }
    }
    return std::move(*picture);
}

double meanDifference(const PixelBuffer& a, const PixelBuffer& b) {
    if (a.width() != b.width() || a.height() != b.height() || a.layout() != b.layout()) return 255;
    const size_t bytes = size_t{a.width()} * bytesPerPixel(a.layout());
    uint64_t sum = 0;
    for (uint32_t y = 0; y < a.height(); ++y) {
        for (size_t i = 0; i < bytes; ++i) {
            sum += static_cast<uint64_t>(std::abs(int{a.row(y)[i]} - int{b.row(y)[i]}));
        }
    }
    return static_cast<double>(sum) / static_cast<double>(bytes * a.height());
}

namespace {

/// Sample `index` of a row, which are words in the layouts of 16 bits.
uint32_t sampleAt(const PixelBuffer& pixels, uint32_t y, size_t index) {
    const bool words = pixels.layout() == PixelLayout::Gray16 || pixels.layout() == PixelLayout::RGBX64;
    if (!words) return pixels.row(y)[index];
    uint16_t word = 0;
    std::memcpy(&word, pixels.row(y) + 2 * index, 2);
    return word;
}

/// Samples of a pixel.
uint32_t samplesIn(PixelLayout layout) {
    return layout == PixelLayout::Gray8 || layout == PixelLayout::Gray16 ? 1 : 4;
}

/// The mean of one color over the block of `large` that pixel `x`, `y` of `small` stands for.
uint32_t blockMean(const PixelBuffer& small, const PixelBuffer& large, uint32_t x, uint32_t y,
                   uint32_t color) {
    const uint32_t samples = samplesIn(large.layout());
    uint64_t sum = 0;
    uint64_t count = 0;
    for (uint32_t row = y * large.height() / small.height();
         row < (y + 1) * large.height() / small.height(); ++row) {
        for (uint32_t column = x * large.width() / small.width();
             column < (x + 1) * large.width() / small.width(); ++column) {
            sum += sampleAt(large, row, size_t{column} * samples + color);
            ++count;
        }
    }
    return static_cast<uint32_t>((2 * sum + count) / (2 * count));
}

}  // namespace

bool isBlockMeanOf(const PixelBuffer& small, const PixelBuffer& large) {
    if (small.layout() != large.layout()) return false;
    const uint32_t samples = samplesIn(small.layout());
    for (uint32_t y = 0; y < small.height(); ++y) {
        for (uint32_t x = 0; x < small.width(); ++x) {
            for (uint32_t color = 0; color < samples; ++color) {
                if (sampleAt(small, y, size_t{x} * samples + color) != blockMean(small, large, x, y, color))
                    return false;
            }
        }
    }
    return true;
}

std::vector<uint8_t> jpegOf(const PixelBuffer& picture, double quality) {
    std::vector<uint8_t> bytes;
    const auto failure =
        encodeJpeg(picture, JpegOptions{quality, std::nullopt}, [&](std::span<const uint8_t> piece) {
            bytes.insert(bytes.end(), piece.begin(), piece.end());
            return true;
        });
    EXPECT_FALSE(failure) << failure->text;
    return bytes;
}

std::vector<uint8_t> withSegment(const std::vector<uint8_t>& jpeg, uint8_t marker,
                                 const std::vector<uint8_t>& payload) {
    const size_t length = payload.size() + 2;
    const std::vector<uint8_t> head = {jpeg.at(0),
                                       jpeg.at(1),
                                       0xFF,
                                       marker,
                                       static_cast<uint8_t>(length >> 8),
                                       static_cast<uint8_t>(length & 0xFF)};
    const std::vector<uint8_t> rest(jpeg.begin() + 2, jpeg.end());
    return joined(joined(head, payload), rest);
}

std::vector<uint8_t> bytesOf(std::string_view text) {
    return std::vector<uint8_t>(text.begin(), text.end());
}

std::vector<uint8_t> joined(const std::vector<uint8_t>& first, const std::vector<uint8_t>& second) {
    std::vector<uint8_t> both(first.size() + second.size());
    std::copy(second.begin(), second.end(), std::copy(first.begin(), first.end(), both.begin()));
    return both;
}

std::vector<uint8_t> firstBytes(const std::vector<uint8_t>& bytes, size_t count) {
    return std::vector<uint8_t>(bytes.begin(), bytes.begin() + static_cast<long>(count));
}

std::vector<uint8_t> mutated(std::vector<uint8_t> bytes, uint32_t seed, uint32_t count) {
    std::minstd_rand random(seed + 1);
    for (uint32_t i = 0; i < count && !bytes.empty(); ++i) {
        bytes[random() % bytes.size()] = static_cast<uint8_t>(random() >> 8);
    }
    return bytes;
}

size_t CountingSource::read(uint64_t offset, std::span<uint8_t> out) {
    m_largestRead = std::max(m_largestRead, out.size());
    if (offset >= m_failsFrom && offset < m_failsTo) return 0;
    const uint64_t reach = offset < m_failsFrom ? m_failsFrom - offset : out.size();
    const auto wanted = static_cast<size_t>(std::min<uint64_t>(out.size(), reach));
    const size_t count = m_memory.read(offset, out.first(wanted));
    m_bytesRead += count;
    return count;
}

}  // namespace fi::test
