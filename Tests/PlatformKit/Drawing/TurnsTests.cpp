// SPDX-License-Identifier: Apache-2.0
// Whole-pixel turns against a slow and obvious model, and the laws that the eight of them obey.
#include "PlatformKit/Drawing/Turns.h"

#include <gtest/gtest.h>

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

PixelBuffer modelTurned(const PixelBuffer& picture, Turn turn) {
    const bool swap = swapsSides(turn);
    auto result = PixelBuffer::create(swap ? picture.height() : picture.width(),
                                      swap ? picture.width() : picture.height(), picture.layout());
    const uint32_t bytes = bytesPerPixel(picture.layout());
    for (uint32_t y = 0; y < picture.height(); ++y) {
        for (uint32_t x = 0; x < picture.width(); ++x) {
            const auto [toX, toY] = placeOf(x, y, picture.width(), picture.height(), turn);
            for (uint32_t c = 0; c < bytes; ++c) {
                result.value().row(toY)[toX * bytes + c] = picture.row(y)[x * bytes + c];
            }
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
        const PixelBuffer picture = noise(width, height, GetParam());
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
            const PixelBuffer picture = noise(width, height, GetParam());
            for (const Turn turn : kTurns) {
                ASSERT_TRUE(samePixels(turned(picture, turn).value(), modelTurned(picture, turn)))
                    << width << "x" << height << " turn " << static_cast<int>(turn);
            }
        }
    }
}

TEST_P(TurnsOfLayout, TwoTurnsMakeExactlyOneTurn) {
    const PixelBuffer picture = noise(7, 5, GetParam());
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
    const PixelBuffer picture = noise(19, 70, GetParam());
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

INSTANTIATE_TEST_SUITE_P(Layouts, TurnsOfLayout, testing::Values(PixelLayout::Gray8, PixelLayout::RGBX32),
                         [](const auto& layout) {
                             return layout.param == PixelLayout::Gray8 ? "Gray8" : "RGBX32";
                         });

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
