// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/BandedPicture.h"

#include <algorithm>
#include <cstring>

#include "PlatformKit/Base/CheckedMath.h"

namespace fi {

namespace {

/// How many times both sides can be divided without falling below the floor.
uint32_t reduction(const BandedPicture::Shape& shape, SizeFloor floor) {
    if (floor.width == 0 || floor.height == 0 || shape.layout == PixelLayout::Gray1) return 1;
    return std::max(std::min(shape.width / floor.width, shape.height / floor.height), 1U);
}

std::optional<uint64_t> bytesOf(uint32_t width, uint32_t height, PixelLayout layout) {
    const auto rowBytes = checkedRoundUp(bytesOfRow(width, layout), 64);
    return rowBytes ? checkedMultiply<uint64_t>(*rowBytes, height) : std::nullopt;
}

}  // namespace

std::optional<uint64_t> BandedPicture::bytesNeeded(const Shape& shape, SizeFloor floor) {
    const uint32_t factor = reduction(shape, floor);
    const auto result = bytesOf(shape.width / factor, shape.height / factor, shape.layout);
    if (factor == 1 || !result) return result;
    const auto band = bytesOf(shape.width, shape.bandRows, shape.layout);
    return band ? checkedAdd(*result, *band) : std::nullopt;
}

std::optional<BandedPicture> BandedPicture::create(const Shape& shape, SizeFloor floor) {
    const uint32_t factor = reduction(shape, floor);
    auto result = PixelBuffer::create(shape.width / factor, shape.height / factor, shape.layout);
    if (!result) return std::nullopt;
    if (factor == 1) return BandedPicture(shape, std::move(*result));
    auto band = PixelBuffer::create(shape.width, shape.bandRows, shape.layout);
    if (!band) return std::nullopt;
    BandedPicture picture(shape, std::move(*band));
    picture.m_mean.emplace(shape.width, shape.height, std::move(*result));
    return picture;
}

BandedPicture::Band BandedPicture::begin() {
    const uint32_t rows = std::min(m_shape.bandRows, m_shape.height - m_done);
    if (!m_mean) return {m_pixels, m_done, rows};
    // What a decoder leaves out must not show the band before.
    std::memset(m_pixels.row(0), 0, m_pixels.rowBytes() * rows);
    return {m_pixels, 0, rows};
}

void BandedPicture::finish(const Band& band) {
    for (uint32_t i = 0; m_mean && i < band.rows; ++i)
        m_mean->takeRow(band.row(i));
    m_done += band.rows;
}

}  // namespace fi
