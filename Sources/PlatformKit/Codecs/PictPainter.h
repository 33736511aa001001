// SPDX-License-Identifier: Apache-2.0
// Draws the parts of a picture that have pixels.
#pragma once

#include <optional>
#include <vector>

#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/PictCanvas.h"
#include "PlatformKit/Codecs/PictRows.h"
#include "PlatformKit/Codecs/PictSurvey.h"

namespace fi {

class PictPainter final : public PictSink {
public:
    /// Both are BORROWED.
    PictPainter(ByteSource& source, PictCanvas& canvas) : m_source(source), m_canvas(canvas) {}

    bool takeBits(const PictBits& bits, const PictState& state, PictInput& input) override;
    Taken takeImage(const PictImage& image, const PictState& state) override;

    /// True once a row of any part was read.
    [[nodiscard]] bool hasDrawn() const { return m_hasDrawn; }
    /// True when rows are missing.
    [[nodiscard]] bool isDamaged() const { return m_isDamaged; }
    /// Why an embedded image was left out.
    [[nodiscard]] const std::optional<CodecFailure>& failure() const { return m_failure; }

private:
    /// False when rows are missing or the work is used up.
    bool drawRows(PictRows& rows, uint32_t width, uint32_t height, PictStroke& stroke);
    void drawUnread(uint32_t first, uint32_t width, uint32_t height, PictStroke& stroke);
    [[nodiscard]] bool drawJpeg(const PictImage& image, const PictPlacement& placement);
    [[nodiscard]] bool drawRaw(const PictImage& image, const PictPlacement& placement);
    [[nodiscard]] bool fitsBesideCanvas(const ImageHeader& header) const;

    ByteSource& m_source;
    PictCanvas& m_canvas;
    bool m_hasDrawn = false;
    bool m_isDamaged = false;
    std::optional<CodecFailure> m_failure;
};

}  // namespace fi
