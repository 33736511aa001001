// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictPainter.h"

#include <cstring>

#include "PlatformKit/Codecs/JpegReader.h"
#include "PlatformKit/Limits.h"

namespace fi {

namespace {

constexpr PictColor kUnread = pictColor(128, 128, 128);  // as markUnread() paints

void copyRow(const PixelBuffer& pixels, uint32_t y, std::vector<PictColor>& row) {
    const uint8_t* bytes = pixels.row(y);
    if (pixels.layout() == PixelLayout::RGBX32) {
        std::memcpy(row.data(), bytes, row.size() * sizeof(PictColor));
        return;
    }
    for (size_t x = 0; x < row.size(); ++x)
        row[x] = pictColor(bytes[x], bytes[x], bytes[x]);
}

}  // namespace

bool PictPainter::takeBits(const PictBits& bits, const PictState& state, PictInput& input) {
    const std::vector<PictColor> colors = pictColors(bits, state);
    const PictRect& bounds = bits.map.bounds;
    PictPlacement placement;
    placement.source = bits.source.moved(-bounds.left, -bounds.top);
    placement.target = bits.target;
    placement.mixing = pictMixing(bits.mode, state);
    placement.clip = &state.clip;
    placement.mask = bits.mask ? &*bits.mask : nullptr;
    PictStroke stroke(m_canvas, placement, bounds.width());
    PictRows rows(input, bits.map, colors);
    return drawRows(rows, bounds.width(), bounds.height(), stroke);
}

bool PictPainter::drawRows(PictRows& rows, uint32_t width, uint32_t height, PictStroke& stroke) {
    std::vector<PictColor> row(width);
    for (uint32_t y = 0; y < height; ++y) {
        if (!stroke.wants(y)) {
            rows.skip(height - y);
            break;
        }
        if (!rows.read(row)) {
            drawUnread(y, width, height, stroke);
            m_isDamaged = true;
            return false;
        }
        m_hasDrawn = true;
        if (!m_canvas.spend(width) || !stroke.take(y, row)) break;
    }
    m_isDamaged = m_isDamaged || m_canvas.isSpent();
    return !m_canvas.isSpent();
}

void PictPainter::drawUnread(uint32_t first, uint32_t width, uint32_t height, PictStroke& stroke) {
    const std::vector<PictColor> row(width, kUnread);
    for (uint32_t y = first; y < height && stroke.wants(y); ++y) {
        if (!stroke.take(y, row)) return;
    }
}

PictSink::Taken PictPainter::takeImage(const PictImage& image, const PictState& state) {
    if (!image.isRead()) return Taken::LeftOut;
    PictPlacement placement;
    placement.source = image.source;
    placement.target = image.target;
    placement.mixing = pictMixing(image.mode, state);
    placement.clip = &state.clip;
    placement.mask = image.mask ? &*image.mask : nullptr;
    const bool drawn =
        image.codec == kQuickTimeRaw ? drawRaw(image, placement) : drawJpeg(image, placement);
    if (m_canvas.isSpent()) {
        m_isDamaged = true;
        return Taken::Stop;
    }
    return drawn ? Taken::Drawn : Taken::LeftOut;
}

bool PictPainter::drawRaw(const PictImage& image, const PictPlacement& placement) {
    const PictPixelMap map = image.rawMap();
    PictInput input(m_source, image.start, image.end);
    PictRows rows(input, map, {});
    PictStroke stroke(m_canvas, placement, image.width);
    return drawRows(rows, image.width, image.height, stroke);
}

bool PictPainter::fitsBesideCanvas(const ImageHeader& header) const {
    const PixelBuffer& canvas = m_canvas.pixels();
    const uint64_t image = uint64_t{header.width} * header.height * 4;
    return image + uint64_t{canvas.rowBytes()} * canvas.height() <= decodeLimits().maximumBytes;
}

bool PictPainter::drawJpeg(const PictImage& image, const PictPlacement& placement) {
    PictStretch stretch(m_source, image.start, image.end);
    const auto header = readJpegHeader(stretch);
    if (!header) {
        m_failure = header.reason();
        return false;
    }
    if (!fitsBesideCanvas(*header)) {
        m_failure =
            CodecFailure{CodecError::LimitExceeded, "The picture needs more memory than is allowed."};
        return false;
    }
    // Each may take as long as the decoder allows a file; not each of thousands.
    if (!m_canvas.spend(uint64_t{header->width} * header->height)) return false;
    const auto picture = decodeJpeg(stretch, {});
    if (!picture) {
        m_failure = picture.reason();
        return false;
    }
    m_hasDrawn = true;
    m_isDamaged = m_isDamaged || picture->damaged;
    const PixelBuffer& pixels = picture->pixels;
    PictStroke stroke(m_canvas, placement, pixels.width());
    std::vector<PictColor> row(pixels.width());
    for (uint32_t y = 0; y < pixels.height() && stroke.wants(y); ++y) {
        copyRow(pixels, y, row);
        if (!stroke.take(y, row)) break;
    }
    return true;
}

}  // namespace fi
