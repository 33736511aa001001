// SPDX-License-Identifier: Apache-2.0
// Whole-pixel turns against a slow and obvious model, and the laws that the eight of them obey.
#include "PlatformKit/Drawing/Turns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

#include "PlatformKit/Drawing/Pictures.h"

namespace fi::test {
namespace {

constexpr std::array kTurns = {Turn::None,           Turn::MirrorHorizontal, Turn::Half,
                               Turn::MirrorVertical, Turn::Transpose,        Turn::Clockwise,
                               Turn::Transverse,     Turn::CounterClockwise};

/// Where a pixel of a `width` x `height` picture goes, told for each turn on its own.
std::pair<uint32_t, uint32_t> placeOf(uint32_t x, uint32_t y, uint32_t width, uint32_t height, Turn turn) {
    const uint32_t right = width - 1 - x;
    const uint32_t bottom = height - 1 - y;
    switch (turn) {
        case Turn::None:
            return {x, y};
        case Turn::MirrorHorizontal:
            return {right, y};
        case Turn::Half:
            return {right, bottom};
        case Turn::MirrorVertical:
            return {x, bottom};
        case Turn::Transpose:
            return {y, x};
        case Turn::Clockwise:
            return {bottom, x};
        case Turn::Transverse:
            return {bottom, right};
        case Turn::CounterClockwise:
            return {y, right};
    }
    return {0, 0};
}

/// Any bytes, those between the rows' ends and the next rows included.
PixelBuffer anyPicture(uint32_t width, uint32_t height, PixelLayout layout) {
    PixelBuffer picture = PixelBuffer::create(width, height, layout).value();
    uint32_t state = width * 131 + height;
    for (uint32_t y = 0; y < height; ++y) {
        for (size_t i = 0; i < picture.rowBytes(); ++i) {
            state = state * 1664525U + 1013904223U;
            picture.row(y)[i] = static_cast<uint8_t>(state >> 24);
        }
    }
    return picture;
}

/// Copies one bit, or one byte of a pixel: numbered from the left of its row.
void copyUnit(const uint8_t* from, size_t fromIndex, uint8_t* to, size_t toIndex, bool isBit) {
    if (!isBit) {
        to[toIndex] = from[fromIndex];
    } else if ((from[fromIndex / 8] << (fromIndex % 8) & 0x80) != 0) {
        to[toIndex / 8] |= static_cast<uint8_t>(0x80U >> (toIndex % 8));
    }
}

PixelBuffer modelTurned(const PixelBuffer& picture, Turn turn) {
    const bool swap = swapsSides(turn);
    auto result = PixelBuffer::create(swap ? picture.height() : picture.width(),
                                      swap ? picture.width() : picture.height(), picture.layout());
    const bool isBit = picture.layout() == PixelLayout::Gray1;
    const size_t units = isBit ? 1 : bytesPerPixel(picture.layout());
    for (uint32_t y = 0; y < picture.height(); ++y) {
        for (uint32_t x = 0; x < picture.width(); ++x) {
            const auto [toX, toY] = placeOf(x, y, picture.width(), picture.height(), turn);
            for (size_t i = 0; i < units; ++i)
                copyUnit(picture.row(y), x * units + i, result.value().row(toY), toX * units + i, isBit);
        }
    }
    return std::move(result.value());
}

class TurnsOfLayout : public testing::TestWithParam<PixelLayout> {};

TEST_P(TurnsOfLayout, EverySizeAndTurnMatchesTheModel) {
    const std::pair<uint32_t, uint32_t> sizes[] = {{1, 1},   {1, 9},    {9, 1},   {2, 3},
                                                   {15, 16}, {16, 15},  {16, 16}, {17, 33},
                                                   {63, 65}, {64, 128}, {70, 41}, {130, 67}};
    for (const auto& [width, height] : sizes) {
        const PixelBuffer picture = anyPicture(width, height, GetParam());
        for (const Turn turn : kTurns) {
            const auto result = turned(picture, turn);
            ASSERT_TRUE(result.has_value());
            EXPECT_TRUE(samePixels(*result, modelTurned(picture, turn)))
                << width << "x" << height << " turn " << static_cast<int>(turn);
        }
    }
}

TEST_P(TurnsOfLayout, EverySmallSizeMatchesTheModel) {
    for (uint32_t width = 1; width <= 20; ++width) {
        for (uint32_t height = 1; height <= 20; ++height) {
            const PixelBuffer picture = anyPicture(width, height, GetParam());
            for (const Turn turn : kTurns) {
                ASSERT_TRUE(samePixels(turned(picture, turn).value(), modelTurned(picture, turn)))
                    << width << "x" << height << " turn " << static_cast<int>(turn);
            }
        }
    }
}

TEST_P(TurnsOfLayout, TwoTurnsMakeExactlyOneTurn) {
    const PixelBuffer picture = anyPicture(7, 5, GetParam());
    for (const Turn first : kTurns) {
        std::array<int, kTurns.size()> reached = {};
        for (const Turn second : kTurns) {
            const auto twice = turned(turned(picture, first).value(), second);
            int matches = 0;
            for (size_t i = 0; i < kTurns.size(); ++i) {
                if (!samePixels(twice.value(), turned(picture, kTurns[i]).value())) continue;
                ++matches;
                ++reached[i];
            }
            EXPECT_EQ(matches, 1);
        }
        for (const int times : reached) {
            EXPECT_EQ(times, 1) << "after turn " << static_cast<int>(first);
        }
    }
}

TEST_P(TurnsOfLayout, FourQuartersAndTwoMirrorsGiveThePictureBack) {
    const PixelBuffer picture = anyPicture(19, 70, GetParam());
    const auto repeated = [&](Turn turn, int times) {
        PixelBuffer result = turned(picture, Turn::None).value();
        for (int i = 0; i < times; ++i) {
            result = turned(result, turn).value();
        }
        return result;
    };
    EXPECT_TRUE(samePixels(repeated(Turn::Clockwise, 4), picture));
    EXPECT_TRUE(samePixels(repeated(Turn::CounterClockwise, 4), picture));
    EXPECT_FALSE(samePixels(repeated(Turn::Clockwise, 2), picture));
    for (const Turn self :
         {Turn::MirrorHorizontal, Turn::Half, Turn::MirrorVertical, Turn::Transpose, Turn::Transverse}) {
        EXPECT_TRUE(samePixels(repeated(self, 2), picture));
        EXPECT_FALSE(samePixels(repeated(self, 1), picture));
    }
}

TEST_P(TurnsOfLayout, MemoryThatIsAlreadyThereIsReplaced) {
    for (const auto& [width, height] : {std::pair{37U, 21U}, std::pair{8U, 16U}, std::pair{130U, 67U}}) {
        const PixelBuffer picture = anyPicture(width, height, GetParam());
        for (const Turn turn : kTurns) {
            const PixelBuffer expected = modelTurned(picture, turn);
            PixelBuffer target = anyPicture(expected.width(), expected.height(), GetParam());
            ASSERT_TRUE(turnInto(picture, target, turn));
            EXPECT_TRUE(samePixels(target, expected)) << "turn " << static_cast<int>(turn);
        }
    }
}

// Large enough to be written past the caches, in several strips, with blocks that the ends cut.
TEST_P(TurnsOfLayout, LargePicturesMatchTheModel) {
    const uint32_t height = 70'000'000 / std::max(bitsPerPixel(GetParam()), 8U) / 2101 + 7;
    const PixelBuffer picture = anyPicture(2101, height, GetParam());
    for (const Turn turn : {Turn::Half, Turn::Clockwise, Turn::CounterClockwise}) {
        ASSERT_TRUE(samePixels(turned(picture, turn).value(), modelTurned(picture, turn)))
            << "turn " << static_cast<int>(turn);
    }
}

TEST_P(TurnsOfLayout, TargetsThatDoNotFitAreLeftAlone) {
    const PixelBuffer picture = anyPicture(9, 5, GetParam());
    const PixelLayout other = GetParam() == PixelLayout::RGBX32 ? PixelLayout::RGBA32 : PixelLayout::RGBX32;
    for (PixelBuffer& target : std::array{anyPicture(5, 9, other), anyPicture(9, 5, GetParam()),
                                          anyPicture(5, 8, GetParam()), anyPicture(6, 9, GetParam())}) {
        const PixelBuffer before = turned(target, Turn::None).value();
        EXPECT_FALSE(turnInto(picture, target, Turn::Clockwise));
        EXPECT_TRUE(samePixels(target, before));
    }
    PixelBuffer itself = anyPicture(9, 5, GetParam());
    EXPECT_FALSE(turnInto(itself, itself, Turn::MirrorHorizontal));
}

TEST_P(TurnsOfLayout, PicturesWithoutPixelsStayEmpty) {
    for (const auto& [width, height] : {std::pair{0U, 0U}, std::pair{0U, 5U}, std::pair{5U, 0U}}) {
        const PixelBuffer picture = PixelBuffer::create(width, height, GetParam()).value();
        for (const Turn turn : kTurns) {
            const auto result = turned(picture, turn);
            ASSERT_TRUE(result.has_value());
            EXPECT_EQ(result->width(), swapsSides(turn) ? height : width);
            EXPECT_EQ(result->height(), swapsSides(turn) ? width : height);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, TurnsOfLayout, testing::ValuesIn(kLayouts), nameOfLayout);

TEST(Turns, BitsBeyondTheWidthBecomeZero) {
    for (uint32_t side = 1; side <= 20; ++side) {
        const PixelBuffer picture = anyPicture(side, 3, PixelLayout::Gray1);
        for (const Turn turn : kTurns) {
            const PixelBuffer shape = turned(picture, turn).value();
            PixelBuffer target = anyPicture(shape.width(), shape.height(), PixelLayout::Gray1);
            ASSERT_TRUE(turnInto(picture, target, turn));
            for (uint32_t y = 0; y < target.height(); ++y) {
                const uint8_t last = target.row(y)[(target.width() - 1) / 8];
                EXPECT_EQ(last & 0xFF >> (target.width() - 1) % 8 >> 1, 0)
                    << side << " turn " << static_cast<int>(turn);
            }
        }
    }
}

TEST(Turns, ExifOrientationsNameTheTurnThatMakesUpright) {
    // Where the top left pixel of the stored picture belongs: the definition of the orientations.
    enum Corner { TopLeft, TopRight, BottomRight, BottomLeft };
    const struct {
        uint16_t orientation;
        Corner firstPixel;
        bool firstRowIsUpright;  ///< horizontal after turning
    } kDefinition[] = {{1, TopLeft, true},      {2, TopRight, true},   {3, BottomRight, true},
                       {4, BottomLeft, true},   {5, TopLeft, false},   {6, TopRight, false},
                       {7, BottomRight, false}, {8, BottomLeft, false}};
    const PixelBuffer stored = pictureOf(3, 2, PixelLayout::Gray8, [](uint32_t x, uint32_t y, uint32_t) {
        return static_cast<uint8_t>(1 + x + 3 * y);
    });
    for (const auto& definition : kDefinition) {
        const PixelBuffer upright = turned(stored, turnForOrientation(definition.orientation)).value();
        const uint32_t right = upright.width() - 1;
        const uint32_t bottom = upright.height() - 1;
        const uint8_t corners[] = {sample(upright, 0, 0), sample(upright, right, 0),
                                   sample(upright, right, bottom), sample(upright, 0, bottom)};
        EXPECT_EQ(corners[definition.firstPixel], 1) << definition.orientation;
        EXPECT_EQ(upright.width() == 3, definition.firstRowIsUpright) << definition.orientation;
    }
}

TEST(Turns, OrientationsOutsideOneToEightTurnNothing) {
    for (const uint16_t orientation : {uint16_t{0}, uint16_t{9}, uint16_t{255}, uint16_t{65535}}) {
        EXPECT_EQ(turnForOrientation(orientation), Turn::None);
    }
}

}  // namespace
}  // namespace fi::test
