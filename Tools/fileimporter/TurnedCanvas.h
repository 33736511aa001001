// SPDX-License-Identifier: Apache-2.0
// A page that is drawn upright and stored as a turned camera would store it.
#pragma once

#include <cstdint>

#include "PlatformKit/CGContext.h"

namespace fi {

class TurnedCanvas {
public:
    /// `width` and `height` are the stored ones. Check isValid().
    TurnedCanvas(uint32_t width, uint32_t height, uint16_t orientation);

    [[nodiscard]] bool isValid() const { return static_cast<bool>(m_context); }
    /// Sides as one sees them.
    [[nodiscard]] uint32_t width() const { return swapsSides() ? m_storedHeight : m_storedWidth; }
    [[nodiscard]] uint32_t height() const { return swapsSides() ? m_storedWidth : m_storedHeight; }

    /// A rectangle as one sees it, from the top left; what lies outside is left out.
    void fill(int x, int y, int width, int height, CGContextColor color);

    /// OWNED. The stored pixels; null without memory.
    [[nodiscard]] Ref<const CGImage> createImage() const { return m_context->createImage(); }

private:
    [[nodiscard]] bool swapsSides() const { return m_orientation >= 5; }

    uint32_t m_storedWidth;
    uint32_t m_storedHeight;
    uint16_t m_orientation;
    Ref<CGContext> m_context;
};

}  // namespace fi
