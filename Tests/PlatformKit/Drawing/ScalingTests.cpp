// SPDX-License-Identifier: Apache-2.0
// Scaling against an exact model in double precision that shares no code with it.
#include "PlatformKit/Drawing/Scaling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

#include "PlatformKit/Drawing/Pictures.h"

namespace fi::test {
namespace {

double lanczos3(double x) {
    if (x == 0) return 1;
    if (std::fabs(x) >= 3) return 0;
    const double angle = M_PI * x;
    return 3 * std::sin(angle) * std::sin(angle / 3) / (angle * angle);
}

/// One axis of the model: for every target pixel the weight of every source pixel.
std::vector<std::vector<double>> modelWeights(uint32_t from, uint32_t to) {
    std::vector<std::vector<double>> all(to, std::vector<double>(from, 0.0));
    const double ratio = static_cast<double>(from) / to;
    const double stretch = std::max(ratio, 1.0);
    for (uint32_t i = 0; i < to; ++i) {
        const double center = (i + 0.5) * ratio - 0.5;
        const int reach = static_cast<int>(std::ceil(3 * stretch)) + 1;
        double sum = 0;
        for (int p = static_cast<int>(center) - reach; p <= static_cast<int>(center) + reach; ++p) {
            // Beyond an end the picture continues as its mirror image, and beyond that as its last pixel.
            const int last = static_cast<int>(from) - 1;
            const int pixel = std::clamp(p < 0 ? -1 - p : p > last ? 2 * last + 1 - p : p, 0, last);
            const double weight = lanczos3((p - center) / stretch);
            all[i][static_cast<size_t>(pixel)] += weight;
            sum += weight;
        }
        for (double& weight : all[i]) {
            weight /= sum;
        }
    }
    return all;
}

/// Words of RGBX64 and Gray16, bytes of all others.
uint32_t bytesPerSample(PixelLayout layout) {
    return layout == PixelLayout::Gray16 || layout == PixelLayout::RGBX64 ? 2 : 1;
}

/// Components with a meaning.
uint32_t componentsOf(PixelLayout layout) {
    if (layout == PixelLayout::Gray8 || layout == PixelLayout::Gray16) return 1;
    return layout == PixelLayout::RGBA32 || layout == PixelLayout::ARGB32 ? 4 : 3;
}

uint32_t valueAt(const PixelBuffer& picture, uint32_t x, uint32_t y, uint32_t component) {
    if (bytesPerSample(picture.layout()) == 1) return sample(picture, x, y, component);
    const uint32_t low = sample(picture, x, y, component * 2);
    return low | uint32_t{sample(picture, x, y, component * 2 + 1)} << 8;
}

/// An exact result, rounded; the small rest is what the floats of the filter may add. They have 24 bits:
/// less is left for a rest of words than for one of bytes.
double roundingOf(PixelLayout layout) {
    return bytesPerSample(layout) == 1 ? 0.501 : 0.55;
}

/// How far the worst component of `result` is from the model's scaling of `source`, before the model is
/// rounded.
double distanceFromModel(const PixelBuffer& source, const PixelBuffer& result) {
    const auto across = modelWeights(source.width(), result.width());
    const auto down = modelWeights(source.height(), result.height());
    const double highest = bytesPerSample(source.layout()) == 2 ? 65535.0 : 255.0;
    double most = 0;
    for (uint32_t component = 0; component < componentsOf(source.layout()); ++component) {
        std::vector<std::vector<double>> middle(source.height(), std::vector<double>(result.width(), 0.0));
        for (uint32_t y = 0; y < source.height(); ++y) {
            for (uint32_t x = 0; x < result.width(); ++x) {
                for (uint32_t i = 0; i < source.width(); ++i) {
                    if (across[x][i] == 0) continue;
                    middle[y][x] += across[x][i] * valueAt(source, i, y, component);
                }
            }
        }
        for (uint32_t y = 0; y < result.height(); ++y) {
            for (uint32_t x = 0; x < result.width(); ++x) {
                double value = 0;
                for (uint32_t i = 0; i < source.height(); ++i) {
                    value += down[y][i] * middle[i][x];
                }
                const double error =
                    std::fabs(std::clamp(value, 0.0, highest) - valueAt(result, x, y, component));
                most = std::max(most, error);
            }
        }
    }
    return most;
}

PixelBuffer smooth(uint32_t width, uint32_t height, PixelLayout layout) {
    return pictureOf(width, height, layout, [](uint32_t x, uint32_t y, uint32_t c) {
        const double wave = std::sin(x * 0.13 + c) * std::cos(y * 0.09 - c);
        return static_cast<uint8_t>(std::lround(127 + 100 * wave));
    });
}

struct Case {
    uint32_t fromWidth, fromHeight, toWidth, toHeight;
};

const Case kCases[] = {
    {200, 150, 80, 60},
    {200, 150, 199, 149},
    {200, 150, 200, 60},
    {200, 150, 50, 150},
    {64, 64, 128, 128},
    {40, 30, 333, 77},
    {300, 20, 100, 10},
    {128, 96, 127, 97},
    {65, 63, 13, 12},
    {37, 41, 41, 37},
    // Sides with fewer pixels than the filter has taps.
    {1, 1, 1, 7},
    {1, 1, 40, 30},
    {1, 50, 1, 20},
    {50, 1, 20, 1},
    {3, 100, 5, 40},
    {100, 80, 1, 1},
    {100, 80, 2, 3},
    {5, 5, 20, 20},
    {4, 200, 4, 20},
    {2, 2, 100, 1},
    {100, 80, 5, 4},
    {6, 6, 7, 7},
    {7, 7, 6, 6},
    {12, 9, 1, 30},
};

class ScalingOfLayout : public testing::TestWithParam<PixelLayout> {};

TEST_P(ScalingOfLayout, NoiseMatchesTheExactModel) {
    for (const Case& c : kCases) {
        const PixelBuffer source = noise(c.fromWidth, c.fromHeight, GetParam());
        const auto result = scaled(source, c.toWidth, c.toHeight);
        ASSERT_TRUE(result.has_value());
        ASSERT_EQ(result->width(), c.toWidth);
        ASSERT_EQ(result->height(), c.toHeight);
        ASSERT_EQ(result->layout(), GetParam());
        EXPECT_LE(distanceFromModel(source, *result), roundingOf(GetParam()))
            << c.fromWidth << "x" << c.fromHeight << " to " << c.toWidth << "x" << c.toHeight;
    }
}

TEST_P(ScalingOfLayout, SmoothPicturesMatchTheExactModel) {
    for (const Case& c : kCases) {
        const PixelBuffer source = smooth(c.fromWidth, c.fromHeight, GetParam());
        EXPECT_LE(distanceFromModel(source, scaled(source, c.toWidth, c.toHeight).value()),
                  roundingOf(GetParam()))
            << c.fromWidth << "x" << c.fromHeight << " to " << c.toWidth << "x" << c.toHeight;
    }
}

TEST_P(ScalingOfLayout, PicturesOfOneColourKeepItExactly) {
    for (const Case& c : kCases) {
        for (int level = 0; level < 256; level += 15) {
            const PixelBuffer source = pictureOf(
                c.fromWidth, c.fromHeight, GetParam(), [&](uint32_t, uint32_t, uint32_t component) {
                    return static_cast<uint8_t>(component == 1 ? 255 - level : level);
                });
            const auto result = scaled(source, c.toWidth, c.toHeight);
            const PixelBuffer expected =
                pictureOf(c.toWidth, c.toHeight, GetParam(), [&](uint32_t, uint32_t, uint32_t component) {
                    return static_cast<uint8_t>(component == 1 ? 255 - level : level);
                });
            ASSERT_TRUE(samePixels(result.value(), expected))
                << c.fromWidth << "x" << c.fromHeight << " to " << c.toWidth << "x" << c.toHeight
                << " level " << level;
        }
    }
}

TEST_P(ScalingOfLayout, TheSameSizeIsAnExactCopy) {
    const PixelBuffer source = noise(31, 17, GetParam());
    EXPECT_TRUE(samePixels(scaled(source, 31, 17).value(), source));
}

TEST_P(ScalingOfLayout, EverySmallPairOfSizesWorks) {
    for (uint32_t from = 1; from <= 14; ++from) {
        for (uint32_t to = 1; to <= 14; ++to) {
            const PixelBuffer source = noise(from, 15 - from, GetParam());
            const auto result = scaled(source, to, 15 - to);
            ASSERT_TRUE(result.has_value());
            ASSERT_LE(distanceFromModel(source, *result), roundingOf(GetParam())) << from << " to " << to;
        }
    }
}

// Wide rows are scaled in several column pieces, which must meet without a seam.
TEST_P(ScalingOfLayout, WidePicturesHaveNoSeams) {
    const PixelBuffer source = smooth(5003, 9, GetParam());
    EXPECT_LE(distanceFromModel(source, scaled(source, 2801, 7).value()), roundingOf(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Layouts, ScalingOfLayout,
                         testing::Values(PixelLayout::Gray8, PixelLayout::Gray16, PixelLayout::RGBX32,
                                         PixelLayout::RGBA32, PixelLayout::ARGB32, PixelLayout::RGBX64),
                         nameOfLayout);

// Without levels between black and white there is nothing to filter.
TEST(Scaling, BitsGiveNothingButCopies) {
    const PixelBuffer picture = PixelBuffer::create(20, 10, PixelLayout::Gray1).value();
    EXPECT_FALSE(scaled(picture, 10, 5).has_value());
    EXPECT_TRUE(samePixels(scaled(picture, 20, 10).value(), picture));
}

TEST(Scaling, SidesOfZeroGiveNothing) {
    const PixelBuffer picture = noise(4, 4, PixelLayout::RGBX32);
    EXPECT_FALSE(scaled(picture, 0, 4).has_value());
    EXPECT_FALSE(scaled(picture, 4, 0).has_value());
    EXPECT_FALSE(scaled(PixelBuffer::create(0, 0, PixelLayout::Gray8).value(), 4, 4).has_value());
}

TEST(Scaling, TheFillerByteStaysOpaque) {
    for (const Case& c : kCases) {
        const auto result =
            scaled(noise(c.fromWidth, c.fromHeight, PixelLayout::RGBX32), c.toWidth, c.toHeight);
        EXPECT_EQ(sample(result.value(), c.toWidth - 1, c.toHeight - 1, 3), 255);
    }
}

TEST(Scaling, RememberedFiltersGiveTheSamePicturesInAnyOrderAndThread) {
    const PixelBuffer source = noise(90, 70, PixelLayout::RGBX32);
    std::vector<PixelBuffer> first;
    for (uint32_t side = 20; side < 50; ++side) {
        first.push_back(scaled(source, side, side + 1).value());
    }
    const auto compare = [&] {
        for (uint32_t i = 30; i-- > 0;) {
            EXPECT_TRUE(samePixels(scaled(source, 20 + i, 21 + i).value(), first[i])) << i;
        }
    };
    compare();
    std::thread(compare).join();
}

}  // namespace
}  // namespace fi::test
