// SPDX-License-Identifier: Apache-2.0
#include "SheetPage.h"

#include <algorithm>
#include <cmath>

namespace fi {

namespace {

constexpr CGContextColor kPaper = {255, 255, 255};
constexpr CGContextColor kFrame = {214, 214, 214};
constexpr CGContextColor kTile = {246, 243, 242};
constexpr CGContextColor kCross = {212, 190, 186};
constexpr CGContextColor kName = {45, 45, 48};
constexpr CGContextColor kNote = {135, 135, 140};
constexpr CGContextColor kWarning = {178, 58, 44};

/// Both diagonals of a tile as lines about one pixel wide.
std::vector<uint8_t> crossCoverage(uint32_t width, uint32_t height) {
    std::vector<uint8_t> coverage(size_t{width} * height);
    const double length = std::hypot(width, height);
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            const double along = (x + 0.5) * height;
            const double down = (y + 0.5) * width;
            const double full = double{1} * width * height;
            const double distance =
                std::min(std::abs(along - down), std::abs(along + down - full)) / length;
            const double covered = std::clamp(1.1 - distance, 0.0, 1.0);
            coverage[size_t{y} * width + x] = static_cast<uint8_t>(std::lround(covered * 255));
        }
    }
    return coverage;
}

}  // namespace

SheetPage::SheetPage(const SheetLayout& layout, Ref<CGContext> context)
    : m_layout(layout), m_context(std::move(context)) {
    if (layout.hasCaptions()) {
        m_captions = std::make_unique<Captions>(layout.pictureSide(), layout.lineHeight());
    }
    fill({{0, 0}, layout.pageWidth(), layout.pageHeight()}, kPaper);
}

std::optional<SheetPage> SheetPage::create(const SheetLayout& layout) {
    auto context = CGContext::create(layout.pageWidth(), layout.pageHeight(), CGContextFormat::RGBX32);
    if (!context) return std::nullopt;
    return SheetPage(layout, std::move(context));
}

/// The page itself counts from the bottom.
CGContextRect SheetPage::onPage(const Area& area) const {
    const int64_t top = int64_t{area.place.y} + area.height;
    return {area.place.x, int64_t{m_layout.pageHeight()} - top, area.width, area.height};
}

SheetPage::Area SheetPage::centred(size_t index, uint32_t width, uint32_t height) const {
    const SheetLayout::Place square = m_layout.picture(index);
    const uint32_t side = m_layout.pictureSide();
    return {{square.x + (side - width) / 2, square.y + (side - height) / 2}, width, height};
}

void SheetPage::fill(const Area& area, CGContextColor color) {
    m_context->fillRect(onPage(area), color);
}

void SheetPage::drawFramed(size_t index, const CGImage& picture) {
    const Area area = centred(index, picture.width(), picture.height());
    fill({{area.place.x - 1, area.place.y - 1}, area.width + 2, area.height + 2}, kFrame);
    // Without memory for one picture its frame stays empty; the others may fit.
    if (!m_context->drawImage(picture, onPage(area))) fill(area, kTile);
}

void SheetPage::drawPhoto(size_t index, const CGImage& picture, std::string_view name,
                          std::string_view note) {
    drawFramed(index, picture);
    drawCaption(index, name, note, kNote);
}

void SheetPage::drawDamagedPhoto(size_t index, const CGImage& picture, std::string_view name,
                                 std::string_view note) {
    drawFramed(index, picture);
    drawCaption(index, name, note, kWarning);
}

void SheetPage::drawFailure(size_t index, std::string_view name, std::string_view note) {
    const uint32_t side = m_layout.pictureSide();
    const Area area = centred(index, side, side * 3 / 4);
    fill({{area.place.x - 1, area.place.y - 1}, area.width + 2, area.height + 2}, kCross);
    fill(area, kTile);
    drawCross(area);
    drawCaption(index, name, note, kWarning);
}

void SheetPage::drawCross(const Area& area) {
    if (m_cross.empty()) m_cross = crossCoverage(area.width, area.height);
    // The tile is seen without its cross too.
    static_cast<void>(m_context->drawMask(onPage(area), m_cross, area.width, kCross));
}

void SheetPage::drawCaption(size_t index, std::string_view name, std::string_view note,
                            CGContextColor noteColor) {
    if (!m_captions) return;
    drawLine(index, 0, name, Captions::Shorten::Middle, kName);
    drawLine(index, 1, note, Captions::Shorten::End, noteColor);
}

void SheetPage::drawLine(size_t index, uint32_t line, std::string_view text, Captions::Shorten shorten,
                         CGContextColor color) {
    const Captions::Coverage coverage = m_captions->draw(text, shorten);
    if (coverage.width == 0) return;
    const Area area = {m_layout.captionLine(index, line), coverage.width, coverage.height};
    static_cast<void>(m_context->drawMask(onPage(area), coverage.bytes, coverage.rowBytes, color));
}

}  // namespace fi
