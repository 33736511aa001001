// SPDX-License-Identifier: Apache-2.0
#include "TurnedCanvas.h"

#include <utility>

namespace fi {

namespace {

/// What makes stored pixels out of upright ones: rows and columns change places first, then the edges.
struct Turning {
    bool swapsSides;
    bool fromRight;   ///< stored columns count from the other edge
    bool fromBottom;  ///< stored rows do
};

constexpr Turning kTurnings[9] = {
    {false, false, false},                                                                   // none
    {false, false, false}, {false, true, false}, {false, true, true}, {false, false, true},  // 1 to 4
    {true, false, false},  {true, false, true},  {true, true, true},  {true, true, false}};  // 5 to 8

}  // namespace

TurnedCanvas::TurnedCanvas(uint32_t width, uint32_t height, uint16_t orientation)
    : m_storedWidth(width),
      m_storedHeight(height),
      m_orientation(orientation <= 8 ? orientation : uint16_t{1}),
      m_context(CGContext::create(width, height, CGContextFormat::RGBX32)) {}

void TurnedCanvas::fill(int x, int y, int width, int height, CGContextColor color) {
    if (width <= 0 || height <= 0) return;
    const Turning& turning = kTurnings[m_orientation];
    int64_t left = x;
    int64_t top = y;
    if (turning.swapsSides) {
        std::swap(left, top);
        std::swap(width, height);
    }
    if (turning.fromRight) left = int64_t{m_storedWidth} - left - width;
    if (turning.fromBottom) top = int64_t{m_storedHeight} - top - height;
    const int64_t bottom = int64_t{m_storedHeight} - top - height;
    m_context->fillRect({left, bottom, static_cast<uint32_t>(width), static_cast<uint32_t>(height)}, color);
}

}  // namespace fi
