// SPDX-License-Identifier: Apache-2.0
// Known colours, layouts and outcomes.
#include "PlatformKit/Drawing/ColorConversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "PlatformKit/Drawing/MakeProfiles.h"
#include "PlatformKit/Drawing/Pictures.h"

namespace fi::test {

namespace {

using Samples = std::vector<uint32_t>;

ByteView viewOf(const ProfileBytes& bytes) {
    return ByteView(bytes.data(), bytes.size());
}

size_t sampleBytes(PixelLayout layout) {
    return layout == PixelLayout::Gray16 || layout == PixelLayout::RGBX64 ? 2 : 1;
}

/// One row of samples, bytes or words as the layout has them.
PixelBuffer rowOf(PixelLayout layout, const Samples& samples) {
    const size_t width = samples.size() * sampleBytes(layout) / bytesPerPixel(layout);
    auto picture = PixelBuffer::create(static_cast<uint32_t>(width), 1, layout);
    EXPECT_TRUE(picture);
    for (size_t i = 0; i < samples.size(); ++i)
        std::memcpy(picture->row(0) + i * sampleBytes(layout), &samples[i], sampleBytes(layout));
    return std::move(*picture);
}

Samples samplesOf(const PixelBuffer& picture, uint32_t y = 0) {
    const size_t size = sampleBytes(picture.layout());
    Samples samples(picture.width() * bytesPerPixel(picture.layout()) / size);
    for (size_t i = 0; i < samples.size(); ++i)
        std::memcpy(&samples[i], picture.row(y) + i * size, size);
    return samples;
}

Samples inSRGB(PixelBuffer picture, const ColorSource& source,
               ColorOutcome expected = ColorOutcome::Converted) {
    EXPECT_EQ(convertToSRGB(picture, source, 1), expected);
    return samplesOf(picture);
}

Samples inGray(PixelBuffer picture, const ColorSource& source,
               ColorOutcome expected = ColorOutcome::Converted) {
    EXPECT_EQ(convertToGray(picture, source, 1), expected);
    return samplesOf(picture);
}

constexpr ColorSource kPlainRGB{ColorSamples::RGB, ByteView()};
constexpr ColorSource kPlainGray{ColorSamples::Gray, ByteView()};

TEST(ColorConversion, OfAWideProfileGivesKnownColours) {
    const ProfileBytes profile = makeWideProfile();
    const ColorSource source{ColorSamples::RGB, viewOf(profile)};
    struct Case {
        Samples from;
        Samples to;
    };
    // By hand: gamma 563/256, the two spaces' matrices from their primaries, the curve of sRGB.
    const Case cases[] = {
        {{0, 0, 0, 255}, {0, 0, 0, 255}},
        {{255, 255, 255, 255}, {255, 255, 255, 255}},
        {{128, 128, 128, 255}, {129, 129, 129, 255}},
        {{255, 0, 0, 255}, {255, 0, 0, 255}},
        {{0, 255, 0, 255}, {0, 255, 0, 255}},
        {{200, 100, 50, 255}, {227, 100, 42, 255}},
        {{100, 150, 200, 255}, {66, 151, 203, 255}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.from));
        EXPECT_EQ(inSRGB(rowOf(PixelLayout::RGBX32, c.from), source), c.to);
    }
}

TEST(ColorConversion, OfSRGBLeavesThePixelsAlone) {
    const ProfileBytes profile = makeSRGBProfile();
    for (const PixelLayout layout : {PixelLayout::RGBX32, PixelLayout::RGBA32, PixelLayout::ARGB32}) {
        PixelBuffer picture = noise(301, 7, layout);
        const PixelBuffer before = noise(301, 7, layout);
        EXPECT_EQ(convertToSRGB(picture, {ColorSamples::RGB, viewOf(profile)}, 1), ColorOutcome::Unchanged);
        EXPECT_EQ(convertToSRGB(picture, kPlainRGB, 1), ColorOutcome::Unchanged);
        EXPECT_TRUE(samePixels(picture, before));
    }
}

TEST(ColorConversion, ToGrayOfSRGBGivesKnownLevels) {
    struct Case {
        Samples from;
        uint32_t to;
    };
    // Y of D50 from linear light: 0.2225 R + 0.7169 G + 0.0606 B; its root of 2.2.
    const Case cases[] = {
        {{0, 0, 0, 255}, 0},     {{255, 255, 255, 255}, 255}, {{255, 0, 0, 255}, 129},
        {{0, 255, 0, 255}, 219}, {{0, 0, 255, 255}, 71},      {{128, 128, 128, 255}, 127},
        {{1, 1, 1, 255}, 6},     {{10, 10, 10, 255}, 18},     {{200, 100, 50, 255}, 129},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.from));
        EXPECT_EQ(inGray(rowOf(PixelLayout::RGBX32, c.from), kPlainRGB), Samples{c.to});
    }
}

TEST(ColorConversion, OfGrayGivesThreeEqualLevelsOfSRGB) {
    // The curves of gamma 2.2 and of sRGB part in the shadows.
    EXPECT_EQ(
        inSRGB(rowOf(PixelLayout::Gray8, {0, 6, 18, 128, 255}), kPlainGray),
        (Samples{0, 0, 0, 255, 1, 1, 1, 255, 10, 10, 10, 255, 129, 129, 129, 255, 255, 255, 255, 255}));
    EXPECT_EQ(inSRGB(rowOf(PixelLayout::Gray16, {0, 65535}), kPlainGray),
              (Samples{0, 0, 0, 65535, 65535, 65535, 65535, 65535}));
}

TEST(ColorConversion, OfBitsGivesBlackAndWhite) {
    auto bits = PixelBuffer::create(3, 1, PixelLayout::Gray1);
    ASSERT_TRUE(bits);
    bits->row(0)[0] = 0xA0;
    PixelBuffer kept = std::move(*bits);
    EXPECT_EQ(convertToGray(kept, kPlainGray, 1), ColorOutcome::Unchanged);
    EXPECT_EQ(kept.layout(), PixelLayout::Gray1);
    EXPECT_EQ(convertToSRGB(kept, kPlainGray, 1), ColorOutcome::Converted);
    EXPECT_EQ(samplesOf(kept), (Samples{255, 255, 255, 255, 0, 0, 0, 255, 255, 255, 255, 255}));
}

TEST(ColorConversion, OfGrayWithAProfileMovesItsLevels) {
    const ProfileBytes linear = makeGrayProfile(1.0);
    const ColorSource source{ColorSamples::Gray, viewOf(linear)};
    EXPECT_EQ(inGray(rowOf(PixelLayout::Gray8, {0, 1, 55, 255}), source), (Samples{0, 21, 127, 255}));
    EXPECT_EQ(inSRGB(rowOf(PixelLayout::Gray8, {55}), source), (Samples{128, 128, 128, 255}));
    const ProfileBytes usual = makeGrayProfile(2.2);
    EXPECT_EQ(inGray(rowOf(PixelLayout::Gray8, {0, 1, 55, 255}), {ColorSamples::Gray, viewOf(usual)},
                     ColorOutcome::Unchanged),
              (Samples{0, 1, 55, 255}));
}

TEST(ColorConversion, OfGrayRampsIsMonotone) {
    for (const PixelLayout layout : {PixelLayout::Gray8, PixelLayout::Gray16}) {
        Samples ramp;
        for (uint32_t i = 0; i < 4096; ++i)
            ramp.push_back(layout == PixelLayout::Gray8 ? i / 16 : i * 16);
        const Samples color = inSRGB(rowOf(layout, ramp), kPlainGray);
        for (size_t x = 1; x < ramp.size(); ++x)
            ASSERT_GE(color[x * 4], color[x * 4 - 4]) << ramp[x];
    }
    for (const PixelLayout layout : {PixelLayout::RGBX32, PixelLayout::RGBX64}) {
        Samples ramp;
        for (uint32_t i = 0; i < 65536; i += 16)
            ramp.insert(ramp.end(), 4, layout == PixelLayout::RGBX32 ? i / 256 : i);
        const Samples gray = inGray(rowOf(layout, ramp), kPlainRGB);
        EXPECT_TRUE(std::is_sorted(gray.begin(), gray.end()));
        EXPECT_EQ(gray.front(), 0u);
    }
}

TEST(ColorConversion, OfInksWithoutAProfileIsPlain) {
    const ColorSource inks{ColorSamples::CMYK, ByteView()};
    const ColorSource inverted{ColorSamples::InvertedCMYK, ByteView()};
    EXPECT_EQ(
        inSRGB(rowOf(PixelLayout::RGBX32, {0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 255, 100, 50, 0, 51}), inks),
        (Samples{255, 255, 255, 255, 0, 255, 255, 255, 0, 0, 0, 255, 124, 164, 204, 255}));
    EXPECT_EQ(inSRGB(rowOf(PixelLayout::RGBX32, {155, 205, 255, 204}), inverted),
              (Samples{124, 164, 204, 255}));
    EXPECT_EQ(inSRGB(rowOf(PixelLayout::RGBX64, {0, 65535, 32768, 0, 0, 0, 0, 65535}), inks),
              (Samples{65535, 0, 32767, 65535, 0, 0, 0, 65535}));
    EXPECT_EQ(inSRGB(rowOf(PixelLayout::RGBX64, {65535, 0, 32767, 32768}), inverted),
              (Samples{32768, 0, 16384, 65535}));
    EXPECT_EQ(inGray(rowOf(PixelLayout::RGBX32, {0, 0, 0, 0}), inks), Samples{255});
}

TEST(ColorConversion, OfInksWithAProfileAnswersForBothPolarities) {
    const ProfileBytes profile = makeInkProfile();
    const Samples paper =
        inSRGB(rowOf(PixelLayout::RGBX32, {0, 0, 0, 0}), {ColorSamples::CMYK, viewOf(profile)});
    EXPECT_EQ(paper[1], 255u);
    EXPECT_EQ(paper[2], 255u);
    EXPECT_EQ(paper[0], 255u);
    EXPECT_EQ(paper[3], 255u);
    const Samples cyan =
        inSRGB(rowOf(PixelLayout::RGBX32, {255, 0, 0, 0}), {ColorSamples::CMYK, viewOf(profile)});
    EXPECT_LT(cyan[0], cyan[1]);
    EXPECT_EQ(inSRGB(rowOf(PixelLayout::RGBX32, {0, 255, 255, 255}),
                     {ColorSamples::InvertedCMYK, viewOf(profile)}),
              cyan);
}

TEST(ColorConversion, OfLabGivesKnownColours) {
    const ColorSource icc{ColorSamples::ICCLab, ByteView()};
    const ColorSource cie{ColorSamples::CIELab, ByteView()};
    const auto near = [](const Samples& a, const Samples& b, uint32_t most) {
        for (size_t i = 0; i < a.size(); ++i)
            EXPECT_LE(a[i] > b[i] ? a[i] - b[i] : b[i] - a[i], most) << testing::PrintToString(a);
    };
    // L 54.3, a 80.8, b 69.9 is the red of sRGB seen in D50, L 53.4 a middle gray.
    const Samples red = {255, 0, 0, 255};
    near(inSRGB(rowOf(PixelLayout::RGBX32, {138, 209, 198, 0}), icc), red, 3);
    near(inSRGB(rowOf(PixelLayout::RGBX32, {138, 81, 70, 0}), cie), red, 3);
    near(inSRGB(rowOf(PixelLayout::RGBX32, {136, 128, 128, 0, 0, 128, 128, 0, 255, 128, 128, 0}), icc),
         {127, 127, 127, 255, 0, 0, 0, 255, 255, 255, 255, 255}, 1);
    near(inSRGB(rowOf(PixelLayout::RGBX32, {136, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0}), cie),
         {127, 127, 127, 255, 0, 0, 0, 255, 255, 255, 255, 255}, 1);
    // Words: white is L 65280 in the one encoding and 65535 in the other.
    near(inSRGB(rowOf(PixelLayout::RGBX64, {65280, 32768, 32768, 0, 0, 32768, 32768, 0}), icc),
         {65535, 65535, 65535, 65535, 0, 0, 0, 65535}, 40);
    near(inSRGB(rowOf(PixelLayout::RGBX64, {65535, 0, 0, 0, 0, 0, 0, 0}), cie),
         {65535, 65535, 65535, 65535, 0, 0, 0, 65535}, 40);
    // A green: a and b below and above nothing; the same colour by both encodings.
    const Samples wide =
        inSRGB(rowOf(PixelLayout::RGBX64, {32640, 32768 - 40 * 256, 32768 + 20 * 256, 0}), icc);
    EXPECT_GT(wide[1], wide[0]);
    near(inSRGB(rowOf(PixelLayout::RGBX64, {32768, 65536 - 40 * 256, 20 * 256, 0}), cie), wide, 40);
}

TEST(ColorConversion, LeavesAlphaAlone) {
    const ProfileBytes profile = makeWideProfile();
    const ColorSource source{ColorSamples::RGB, viewOf(profile)};
    // 100, 50, 25 under alpha 128 is 199, 100, 50: 226, 100, 42 in sRGB.
    EXPECT_EQ(inSRGB(rowOf(PixelLayout::RGBA32, {100, 50, 25, 128, 9, 9, 9, 0, 200, 100, 50, 255}), source),
              (Samples{113, 50, 21, 128, 0, 0, 0, 0, 227, 100, 42, 255}));
    EXPECT_EQ(inSRGB(rowOf(PixelLayout::ARGB32, {128, 100, 50, 25, 0, 9, 9, 9, 255, 200, 100, 50}), source),
              (Samples{128, 113, 50, 21, 0, 0, 0, 0, 255, 227, 100, 42}));
    // More colour than its alpha lets through counts as full.
    EXPECT_EQ(inSRGB(rowOf(PixelLayout::RGBA32, {255, 255, 255, 100}), source),
              (Samples{100, 100, 100, 100}));
}

TEST(ColorConversion, ToGrayLaysTransparentPixelsOnWhite) {
    EXPECT_EQ(inGray(rowOf(PixelLayout::RGBA32, {0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 127}), kPlainRGB),
              (Samples{255, 0, 127}));
    EXPECT_EQ(inGray(rowOf(PixelLayout::ARGB32, {0, 0, 0, 0, 255, 255, 0, 0}), kPlainRGB),
              (Samples{255, 129}));
}

TEST(ColorConversion, KeepsToThePixelsOfRows) {
    const ProfileBytes profile = makeWideProfile();
    const ProfileBytes inks = makeInkProfile();
    for (const uint32_t width : {1u, 15u, 16u, 17u, 1025u}) {
        for (const ColorSource& source : {ColorSource{ColorSamples::RGB, viewOf(profile)},
                                          ColorSource{ColorSamples::CMYK, viewOf(inks)}}) {
            for (const PixelLayout layout :
                 {PixelLayout::RGBX32, PixelLayout::RGBX64, PixelLayout::RGBA32}) {
                if (layout == PixelLayout::RGBA32 && source.samples == ColorSamples::CMYK) continue;
                auto picture = PixelBuffer::create(width, 3, layout);
                ASSERT_TRUE(picture);
                for (uint32_t y = 0; y < 3; ++y)
                    std::memset(picture->row(y), 0x77, picture->rowBytes());
                EXPECT_EQ(convertToSRGB(*picture, source, 1), ColorOutcome::Converted);
                const size_t used = size_t{width} * bytesPerPixel(layout);
                for (uint32_t y = 0; y < 3; ++y) {
                    for (size_t i = used; i < picture->rowBytes(); ++i)
                        ASSERT_EQ(picture->row(y)[i], 0x77);
                    ASSERT_EQ(samplesOf(*picture, y), samplesOf(*picture, 0));
                }
                const Samples row = samplesOf(*picture);
                for (size_t i = 4; i < row.size(); ++i)
                    ASSERT_EQ(row[i], row[i - 4]);
            }
        }
    }
}

TEST(ColorConversion, OfWordsAgreesWithBytes) {
    const ProfileBytes profile = makeWideProfile();
    const ColorSource source{ColorSamples::RGB, viewOf(profile)};
    Samples bytes;
    Samples words;
    for (uint32_t i = 0; i < 4000; ++i) {
        const uint32_t value = i % 4 == 3 ? 255 : i * 2654435761u >> 24;
        bytes.push_back(value);
        words.push_back(value * 257);
    }
    const Samples inBytes = inSRGB(rowOf(PixelLayout::RGBX32, bytes), source);
    const Samples inWords = inSRGB(rowOf(PixelLayout::RGBX64, words), source);
    for (size_t i = 0; i < inBytes.size(); ++i)
        ASSERT_NEAR(inBytes[i] * 257.0, inWords[i], 134) << i;  // half a level and a little
}

TEST(ColorConversion, RefusesLayoutsThatCannotHoldTheSamples) {
    for (const auto& [layout, samples] : {std::pair{PixelLayout::Gray8, ColorSamples::RGB},
                                          std::pair{PixelLayout::RGBX32, ColorSamples::Gray},
                                          std::pair{PixelLayout::RGBA32, ColorSamples::CMYK},
                                          std::pair{PixelLayout::ARGB32, ColorSamples::ICCLab},
                                          std::pair{PixelLayout::Gray1, ColorSamples::CIELab}}) {
        auto picture = PixelBuffer::create(2, 2, layout);
        ASSERT_TRUE(picture);
        EXPECT_EQ(convertToSRGB(*picture, {samples, ByteView()}, 1), ColorOutcome::Unsuitable);
        EXPECT_EQ(convertToGray(*picture, {samples, ByteView()}, 1), ColorOutcome::Unsuitable);
        EXPECT_EQ(picture->layout(), layout);
    }
}

TEST(ColorConversion, OfAnEmptyPictureDoesNothing) {
    const ProfileBytes profile = makeWideProfile();
    auto picture = PixelBuffer::create(0, 0, PixelLayout::RGBX32);
    ASSERT_TRUE(picture);
    EXPECT_EQ(convertToSRGB(*picture, {ColorSamples::RGB, viewOf(profile)}, 2), ColorOutcome::Converted);
    EXPECT_EQ(convertToGray(*picture, {ColorSamples::RGB, viewOf(profile)}, 2), ColorOutcome::Converted);
    EXPECT_EQ(picture->layout(), PixelLayout::Gray8);
}

}  // namespace

}  // namespace fi::test
