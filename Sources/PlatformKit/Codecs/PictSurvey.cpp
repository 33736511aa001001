// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictSurvey.h"

#include <algorithm>

#include "PlatformKit/Codecs/PictRows.h"

namespace fi {

namespace {

bool isBlackOrWhite(PictColor color) {
    return color == kPictBlack || color == kPictWhite;
}

PixelLayout layoutFor(const PictBits& bits, const PictState& state) {
    const std::vector<PictColor> colors = pictColors(bits, state);
    const PictMixing mixing = pictMixing(bits.mode, state);
    const bool allGray = std::all_of(colors.begin(), colors.end(), isGray);
    if (colors.empty() || !allGray || !isGray(mixing.operand)) return PixelLayout::RGBX32;
    const bool plain = bits.map.bits == 1 && std::all_of(colors.begin(), colors.end(), isBlackOrWhite);
    return plain && mixing.keepsBlackAndWhite() ? PixelLayout::Gray1 : PixelLayout::Gray8;
}

class Survey final : public PictSink {
public:
    bool takeBits(const PictBits& bits, const PictState& state, PictInput& input) override {
        add(layoutFor(bits, state));
        if (isDecided()) return false;
        PictRows(input, bits.map, {}).skip(bits.map.bounds.height());
        return true;
    }
    Taken takeImage(const PictImage& image, const PictState& state) override {
        if (!image.isRead()) return Taken::LeftOut;
        const bool gray = image.isGray() && isGray(pictMixing(image.mode, state).operand);
        add(gray ? PixelLayout::Gray8 : PixelLayout::RGBX32);
        return isDecided() ? Taken::Stop : Taken::Drawn;
    }
    [[nodiscard]] bool hasPixels() const { return m_hasPixels; }
    [[nodiscard]] PixelLayout layout() const { return m_hasPixels ? m_layout : PixelLayout::RGBX32; }

private:
    void add(PixelLayout layout) {
        m_layout = std::max(m_layout, layout);  // Gray1, Gray8, RGBX32 ascend
        m_hasPixels = true;
    }
    [[nodiscard]] bool isDecided() const { return m_layout == PixelLayout::RGBX32; }

    PixelLayout m_layout = PixelLayout::Gray1;
    bool m_hasPixels = false;
};

}  // namespace

std::vector<PictColor> pictColors(const PictBits& bits, const PictState& state) {
    if (!bits.map.isBitMap) return bits.map.colors;
    // A bit map has the colors of the drawing where it replaces what is there. Elsewhere its clear bits
    // must count as nothing.
    switch (plainPictMode(bits.mode)) {
        case kPictCopy:
            return {state.background, state.foreground};
        case kPictOr:
            return {kPictWhite, state.foreground};
        default:
            return {kPictWhite, kPictBlack};
    }
}

PictMixing pictMixing(uint16_t storedMode, const PictState& state) {
    PictMixing mixing;
    mixing.mode = plainPictMode(storedMode);
    const bool usesOperand =
        mixing.mode == kPictBlend || mixing.mode == kPictAddPin || mixing.mode == kPictSubtractPin;
    if (usesOperand) mixing.operand = state.operand;
    mixing.background = state.background;
    return mixing;
}

PictContents surveyPict(ByteSource& source, const PictHead& head) {
    Survey survey;
    PictWalk walk(source, head, survey);
    PictContents contents;
    contents.ending = walk.run();
    contents.hasPixels = survey.hasPixels();
    contents.hasShapes = walk.hasShapes();
    contents.hasOtherImages = walk.hasOtherImages();
    contents.layout = survey.layout();
    return contents;
}

}  // namespace fi
