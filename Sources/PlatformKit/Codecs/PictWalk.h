// SPDX-License-Identifier: Apache-2.0
// Goes through the opcodes of a picture and hands over what has pixels.
#pragma once

#include <optional>

#include "PlatformKit/Codecs/PictHead.h"
#include "PlatformKit/Codecs/PictPixelMap.h"
#include "PlatformKit/Codecs/PictQuickTime.h"

namespace fi {

/// What earlier opcodes said.
struct PictState {
    PictRegion clip;
    PictColor foreground = kPictBlack;
    PictColor background = kPictWhite;
    PictColor operand = kPictBlack;
    int32_t originX = 0;
    int32_t originY = 0;
    bool penIsHidden = false;
};

/// Takes the parts of a picture that have pixels, in their order. Targets and regions have the origin
/// applied.
class PictSink {
public:
    virtual ~PictSink() = default;

    /// Must leave the input behind the pixels. False ends the walk.
    virtual bool takeBits(const PictBits& bits, const PictState& state, PictInput& input) = 0;

    enum class Taken : uint8_t { Drawn, LeftOut, Stop };
    virtual Taken takeImage(const PictImage& image, const PictState& state) = 0;

protected:
    PictSink() = default;
    PictSink(const PictSink&) = delete;
    PictSink& operator=(const PictSink&) = delete;
};

class PictWalk {
public:
    enum class Ending : uint8_t {
        Complete,
        Stopped,  ///< by the sink
        Broken,   ///< by bytes that are missing or make no sense
    };

    /// All are BORROWED.
    PictWalk(ByteSource& source, const PictHead& head, PictSink& sink);

    [[nodiscard]] Ending run();

    /// True when lines, texts or shapes were met.
    [[nodiscard]] bool hasShapes() const { return m_hasShapes; }
    /// True when images were met that could not be taken apart or were left out.
    [[nodiscard]] bool hasOtherImages() const { return m_hasOtherImages; }

private:
    enum class Step : uint8_t { Next, End, Stop, Broken };

    Step step(uint16_t opcode);
    Step takeBits(uint16_t opcode);
    Step takeCompressed();
    Step takeUncompressed();
    Step takeRegion();
    Step takePattern();
    void takePenSize(bool behindImage);
    void takeOrigin();
    [[nodiscard]] bool takeColor(uint16_t opcode);
    [[nodiscard]] bool isSubstitute(const PictBits& bits) const;
    void applyOrigin(PictRect& target, std::optional<PictRegion>& mask) const;

    const PictHead& m_head;
    PictInput m_input;
    PictSink& m_sink;
    PictState m_state;
    std::optional<PictRect> m_imageBefore;  // target of an image that the opcode before drew
    bool m_hasShapes = false;
    bool m_hasOtherImages = false;
};

}  // namespace fi
