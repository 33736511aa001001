// SPDX-License-Identifier: Apache-2.0
// Bands come from the top of the picture, and so from the end of most files; each is one read.
#include "PlatformKit/Codecs/BmpRows.h"

#include <algorithm>
#include <cstring>

#include "PlatformKit/Base/CheckedMath.h"
#include "PlatformKit/Codecs/UnreadRows.h"

namespace fi {

namespace {

constexpr uint64_t kBandBytes = uint64_t{256} << 10;

/// Rows begin at multiples of four bytes. A width has 31 bits, a pixel at most 32: no overflow.
uint64_t strideOf(const BmpHeader& header) {
    return (uint64_t{header.width} * header.bits + 31) / 32 * 4;
}

void markMissing(PixelBuffer& pixels, uint32_t y) {
    if (pixels.layout() == PixelLayout::Gray1) {
        std::memset(pixels.row(y), 0xFF, static_cast<size_t>(bytesOfRow(pixels.width(), pixels.layout())));
    } else {
        markUnread(pixels, y, 1);
    }
}

}  // namespace

BmpRows::BmpRows(ByteSource& source, const BmpHeader& header)
    : m_source(source), m_header(header), m_pixels(header), m_stride(strideOf(header)) {}

std::optional<uint64_t> BmpRows::storedBytes(const BmpHeader& header) {
    return checkedMultiply<uint64_t>(strideOf(header), header.height);
}

BandedPicture::Shape BmpRows::shapeOf(const BmpHeader& header) {
    const uint64_t rows = std::clamp<uint64_t>(kBandBytes / strideOf(header), 1, header.height);
    return {header.width, header.height, header.layout(), static_cast<uint32_t>(rows)};
}

bool BmpRows::decode(BandedPicture& picture) {
    bool complete = true;
    for (uint32_t top = 0; !picture.isComplete();) {
        const BandedPicture::Band band = picture.begin();
        complete = readBand(band, top) && complete;
        picture.finish(band);
        top += band.rows;
    }
    return complete;
}

bool BmpRows::readBand(const BandedPicture::Band& band, uint32_t top) {
    const uint32_t first = m_header.topDown ? top : m_header.height - top - band.rows;
    m_stored.resize(static_cast<size_t>(m_stride * band.rows));
    const size_t count = m_source.read(m_header.pixelStart + m_stride * first, m_stored);
    bool complete = true;
    for (uint32_t i = 0; i < band.rows; ++i) {
        const uint32_t stored = m_header.topDown ? i : band.rows - 1 - i;
        const auto start = static_cast<size_t>(m_stride * stored);
        // The last row of a file may lack the bytes that only fill it up.
        if (start + m_pixels.rowBytes() > count) {
            markMissing(band.pixels, band.first + i);
            complete = false;
            continue;
        }
        m_pixels.convert(std::span<const uint8_t>(m_stored).subspan(start), band.row(i));
        m_any = true;
    }
    return complete;
}

}  // namespace fi
