// SPDX-License-Identifier: Apache-2.0
// Against the colour library itself, the memory of answers, threads, and profiles that mean harm.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "PlatformKit/Drawing/ColorCache.h"
#include "PlatformKit/Drawing/ColorConversion.h"
#include "PlatformKit/Drawing/ColorEngine.h"
#include "PlatformKit/Drawing/ColorProfile.h"
#include "PlatformKit/Drawing/ColorRows.h"
#include "PlatformKit/Drawing/MakeProfiles.h"
#include "PlatformKit/Drawing/Pictures.h"
#include "Support/FailingAllocations.h"
#include "Support/ScopedFaults.h"

namespace fi::test {

namespace {

ByteView viewOf(const ProfileBytes& bytes) {
    return ByteView(bytes.data(), bytes.size());
}

PixelBuffer copyOf(const PixelBuffer& picture) {
    auto copy = PixelBuffer::create(picture.width(), picture.height(), picture.layout());
    if (!copy) throw std::bad_alloc();
    for (uint32_t y = 0; y < picture.height(); ++y)
        std::memcpy(copy->row(y), picture.row(y), picture.rowBytes());
    return std::move(*copy);
}

/// A profile that no other test asks about: the bytes behind the last tag are nobody's.
ProfileBytes unique(ProfileBytes profile, uint8_t number) {
    profile.insert(profile.end(), {0, 0, 0, number});
    return profile;
}

/// How far bytes are from what the library computes in words, pixel by pixel; Lab without a profile.
struct Distance {
    double most = 0;
    double mean = 0;
};

struct Exact {
    cmsUInt32Number from;
    size_t samples;
    bool toGray = false;
};

Distance distanceFromExact(const PixelBuffer& before, const PixelBuffer& after, const ProfileBytes& profile,
                           const Exact& exact) {
    void* const from = profile.empty() ? cmsCreateLab4Profile(nullptr)
                                       : cmsOpenProfileFromMem(
                                             profile.data(), static_cast<cmsUInt32Number>(profile.size()));
    const ProfileBytes gray = makeGrayProfile(2.2);
    void* const to = exact.toGray
                         ? cmsOpenProfileFromMem(gray.data(), static_cast<cmsUInt32Number>(gray.size()))
                         : cmsCreate_sRGBProfile();
    void* const transform =
        cmsCreateTransform(from, exact.from, to, exact.toGray ? TYPE_GRAY_16 : TYPE_RGB_16,
                           INTENT_PERCEPTUAL, cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
    cmsCloseProfile(from);
    cmsCloseProfile(to);
    if (transform == nullptr) throw std::bad_alloc();
    const size_t outputs = exact.toGray ? 1 : 3;
    Distance distance;
    for (uint32_t y = 0; y < before.height(); ++y) {
        for (uint32_t x = 0; x < before.width(); ++x) {
            uint16_t in[4];
            uint16_t out[3];
            for (uint32_t i = 0; i < exact.samples; ++i)
                in[i] = static_cast<uint16_t>(sample(before, x, y, i) * 257);
            cmsDoTransform(transform, in, out, 1);
            for (uint32_t i = 0; i < outputs; ++i) {
                const double off = std::abs(sample(after, x, y, i) - out[i] / 257.0);
                distance.most = std::max(distance.most, off);
                distance.mean += off;
            }
        }
    }
    cmsDeleteTransform(transform);
    distance.mean /= static_cast<double>(outputs) * before.width() * before.height();
    return distance;
}

/// Half of the pixels dark, where curves are steep; every fourth gray.
PixelBuffer colorsOfAllKinds(uint32_t width, uint32_t height) {
    PixelBuffer picture = noise(width, height, PixelLayout::RGBX32);
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            uint8_t* const pixel = picture.row(y) + size_t{x} * 4;
            if (x % 2 == 0) std::transform(pixel, pixel + 3, pixel, [](int v) { return v / 8; });
            if (x % 4 == 3) std::fill(pixel + 1, pixel + 3, pixel[0]);
        }
    }
    return picture;
}

TEST(ColorEngine, RoundsWhatTheLibraryComputesForCurvesAndAMatrix) {
    const PixelBuffer before = colorsOfAllKinds(256, 64);
    PixelBuffer after = copyOf(before);
    const ProfileBytes profile = makeWideProfile();
    ASSERT_EQ(convertToSRGB(after, {ColorSamples::RGB, viewOf(profile)}, 1), ColorOutcome::Converted);
    EXPECT_LT(distanceFromExact(before, after, profile, {TYPE_RGB_16, 3}).most, 0.53);
}

TEST(ColorEngine, RoundsWhatTheLibraryComputesForGray) {
    const PixelBuffer before = colorsOfAllKinds(256, 64);
    PixelBuffer gray = copyOf(before);
    ASSERT_EQ(convertToGray(gray, {ColorSamples::RGB, ByteView()}, 1), ColorOutcome::Converted);
    EXPECT_LT(distanceFromExact(before, gray, makeSRGBProfile(), {TYPE_RGB_16, 3, true}).most, 0.53);
    PixelBuffer color = copyOf(gray);
    ASSERT_EQ(convertToSRGB(color, {ColorSamples::Gray, ByteView()}, 1), ColorOutcome::Converted);
    EXPECT_LT(distanceFromExact(gray, color, makeGrayProfile(2.2), {TYPE_GRAY_16, 1}).most, 0.51);
}

TEST(ColorEngine, RoundsWhatTheLibraryComputesForLab) {
    const PixelBuffer before = colorsOfAllKinds(256, 64);
    PixelBuffer after = copyOf(before);
    ASSERT_EQ(convertToSRGB(after, {ColorSamples::ICCLab, ByteView()}, 1), ColorOutcome::Converted);
    EXPECT_LT(distanceFromExact(before, after, {}, {TYPE_Lab_16, 3}).most, 0.53);
}

TEST(ColorEngine, StaysNearTheLibraryForGrids) {
    const PixelBuffer before = noise(128, 64, PixelLayout::RGBX32);
    PixelBuffer after = copyOf(before);
    const ProfileBytes grid = makeGridProfile();
    ASSERT_EQ(convertToSRGB(after, {ColorSamples::RGB, viewOf(grid)}, 1), ColorOutcome::Converted);
    EXPECT_LT(distanceFromExact(before, after, grid, {TYPE_RGB_16, 3}).mean, 1.0);

    PixelBuffer inked = noise(128, 64, PixelLayout::RGBX32);
    for (uint32_t y = 0; y < 64; ++y) {
        for (uint32_t x = 0; x < 128; ++x)
            inked.row(y)[x * 4 + 3] = static_cast<uint8_t>(x + y);
    }
    after = copyOf(inked);
    const ProfileBytes inks = makeInkProfile();
    ASSERT_EQ(convertToSRGB(after, {ColorSamples::CMYK, viewOf(inks)}, 1), ColorOutcome::Converted);
    EXPECT_LT(distanceFromExact(inked, after, inks, {TYPE_CMYK_16, 4}).mean, 1.0);
}

TEST(ColorEngine, PassesOverFloatingPointPipelines) {
    const ProfileBytes profile = makeFloatingProfile();
    PixelBuffer picture = noise(20, 10, PixelLayout::RGBX32);
    EXPECT_EQ(convertToSRGB(picture, {ColorSamples::RGB, viewOf(profile)}, 1),
              ColorOutcome::ProfileRefused);
    EXPECT_TRUE(samePixels(picture, noise(20, 10, PixelLayout::RGBX32)));
}

TEST(ColorCache, AnswersTheSameTaskOnce) {
    const ProfileBytes profile = unique(makeWideProfile(), 1);
    const ColorTask task{ColorSamples::RGB, ColorTarget::SRGB, false, viewOf(profile)};
    const size_t before = colorAnswersMade();
    const ColorAnswer first = converterFor(task);
    ASSERT_TRUE(first.converter);
    const ProfileBytes copy = profile;
    const ColorAnswer second = converterFor({ColorSamples::RGB, ColorTarget::SRGB, false, viewOf(copy)});
    EXPECT_EQ(second.converter, first.converter);
    EXPECT_EQ(colorAnswersMade(), before + 1);
    EXPECT_NE(converterFor({ColorSamples::RGB, ColorTarget::SRGB, true, viewOf(profile)}).converter,
              first.converter);
    const ProfileBytes other = unique(makeWideProfile(), 2);
    EXPECT_NE(converterFor({ColorSamples::RGB, ColorTarget::SRGB, false, viewOf(other)}).converter,
              first.converter);
    EXPECT_EQ(colorAnswersMade(), before + 3);
}

TEST(ColorCache, RemembersRefusalsAndSRGB) {
    ProfileBytes broken = unique(makeWideProfile(), 3);
    broken.resize(200);
    const ProfileBytes same = unique(makeSRGBProfile(), 4);
    const size_t before = colorAnswersMade();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(converterFor({ColorSamples::RGB, ColorTarget::SRGB, false, viewOf(broken)}).kind,
                  ColorAnswer::Kind::Refused);
        EXPECT_EQ(converterFor({ColorSamples::RGB, ColorTarget::SRGB, false, viewOf(same)}).kind,
                  ColorAnswer::Kind::Identity);
    }
    EXPECT_EQ(colorAnswersMade(), before + 2);
}

TEST(ColorCache, KeepsTheLastUsedOnly) {
    const auto ask = [](uint8_t number) {
        const ProfileBytes profile = unique(makeGrayProfile(1.8), number);
        EXPECT_TRUE(
            converterFor({ColorSamples::Gray, ColorTarget::Gray, false, viewOf(profile)}).converter);
    };
    ask(100);
    const size_t before = colorAnswersMade();
    for (uint8_t i = 1; i < kMostColorAnswers; ++i)
        ask(static_cast<uint8_t>(100 + i));
    ask(100);  // the oldest is still there and becomes the newest
    EXPECT_EQ(colorAnswersMade(), before + kMostColorAnswers - 1);
    ask(200);
    ask(100);
    EXPECT_EQ(colorAnswersMade(), before + kMostColorAnswers);
    ask(101);
    EXPECT_EQ(colorAnswersMade(), before + kMostColorAnswers + 1);
}

TEST(ColorCache, IsSharedByThreads) {
    const ProfileBytes wide = unique(makeWideProfile(), 5);
    PixelBuffer expected = noise(64, 64, PixelLayout::RGBX32);
    ASSERT_EQ(convertToSRGB(expected, {ColorSamples::RGB, viewOf(wide)}, 1), ColorOutcome::Converted);
    std::vector<std::thread> threads;
    std::vector<PixelBuffer> pictures;
    for (int i = 0; i < 4; ++i)
        pictures.push_back(noise(64, 64, PixelLayout::RGBX32));
    for (PixelBuffer& picture : pictures) {
        threads.emplace_back([&picture, &wide] {
            for (uint8_t i = 0; i < 30; ++i) {
                const ProfileBytes gray = unique(makeGrayProfile(1.5), i);
                PixelBuffer levels = noise(16, 16, PixelLayout::Gray8);
                (void)convertToGray(levels, {ColorSamples::Gray, viewOf(gray)}, 1);
            }
            (void)convertToSRGB(picture, {ColorSamples::RGB, viewOf(wide)}, 1);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const PixelBuffer& picture : pictures)
        EXPECT_TRUE(samePixels(picture, expected));
}

TEST(ColorThread, NumbersDoNotChangeThePixels) {
    const ProfileBytes wide = makeWideProfile();
    const ProfileBytes inks = makeInkProfile();
    for (const ColorSource& source :
         {ColorSource{ColorSamples::RGB, viewOf(wide)}, ColorSource{ColorSamples::CMYK, viewOf(inks)},
          ColorSource{ColorSamples::ICCLab, ByteView()}}) {
        PixelBuffer one = noise(701, 401, PixelLayout::RGBX32);
        PixelBuffer oneGray = noise(701, 401, PixelLayout::RGBX32);
        ASSERT_EQ(convertToSRGB(one, source, 1), ColorOutcome::Converted);
        ASSERT_EQ(convertToGray(oneGray, source, 1), ColorOutcome::Converted);
        for (const uint32_t threads : {0u, 2u, 3u, 1000u}) {
            PixelBuffer many = noise(701, 401, PixelLayout::RGBX32);
            PixelBuffer manyGray = noise(701, 401, PixelLayout::RGBX32);
            ASSERT_EQ(convertToSRGB(many, source, threads), ColorOutcome::Converted);
            ASSERT_EQ(convertToGray(manyGray, source, threads), ColorOutcome::Converted);
            EXPECT_TRUE(samePixels(many, one)) << threads;
            EXPECT_TRUE(samePixels(manyGray, oneGray)) << threads;
        }
    }
}

TEST(ColorThread, SharesCoverEachRowOnce) {
    for (const uint32_t height : {0u, 1u, 2u, 7u, 1000u}) {
        for (const uint32_t threads : {0u, 1u, 2u, 5u, 1000u}) {
            std::vector<std::atomic<int>> visits(height);
            shareRows(height, uint64_t{1} << 30, threads, [&](uint32_t first, uint32_t end) {
                for (uint32_t y = first; y < end; ++y)
                    ++visits[y];
            });
            for (const auto& count : visits)
                EXPECT_EQ(count, 1);
        }
    }
}

TEST(ColorThread, SharesAreForLargePicturesOnly) {
    const auto self = std::this_thread::get_id();
    std::atomic<int> elsewhere = 0;
    const auto count = [&](uint32_t, uint32_t) { elsewhere += std::this_thread::get_id() != self ? 1 : 0; };
    shareRows(100, 10000, 2, count);
    EXPECT_EQ(elsewhere, 0);
    shareRows(1000, 1000000, 2, count);
    EXPECT_EQ(elsewhere, 1);
}

TEST(ColorProfile, OfOtherSamplesIsRefused) {
    const ProfileBytes rgb = makeWideProfile();
    const ProfileBytes gray = makeGrayProfile(2.2);
    PixelBuffer picture = noise(5, 5, PixelLayout::Gray8);
    EXPECT_EQ(convertToGray(picture, {ColorSamples::Gray, viewOf(rgb)}, 1), ColorOutcome::ProfileRefused);
    EXPECT_TRUE(samePixels(picture, noise(5, 5, PixelLayout::Gray8)));
    picture = noise(5, 5, PixelLayout::RGBX32);
    EXPECT_EQ(convertToSRGB(picture, {ColorSamples::RGB, viewOf(gray)}, 1), ColorOutcome::ProfileRefused);
    EXPECT_TRUE(samePixels(picture, noise(5, 5, PixelLayout::RGBX32)));
    // Inks are converted all the same, plainly.
    PixelBuffer plain = noise(5, 5, PixelLayout::RGBX32);
    EXPECT_EQ(convertToSRGB(picture, {ColorSamples::CMYK, viewOf(rgb)}, 1), ColorOutcome::ProfileRefused);
    EXPECT_EQ(convertToSRGB(plain, {ColorSamples::CMYK, ByteView()}, 1), ColorOutcome::Converted);
    EXPECT_TRUE(samePixels(picture, plain));
}

TEST(ColorProfile, OfALinkOrTooLargeIsRefused) {
    ProfileBytes profile = makeWideProfile();
    EXPECT_TRUE(acceptedProfile(viewOf(profile), ColorSamples::RGB));
    std::memcpy(profile.data() + 12, "link", 4);
    EXPECT_FALSE(acceptedProfile(viewOf(profile), ColorSamples::RGB));
    profile = makeWideProfile();
    profile.resize(kMaximumProfileBytes);
    EXPECT_TRUE(acceptedProfile(viewOf(profile), ColorSamples::RGB));
    profile.push_back(0);
    EXPECT_FALSE(acceptedProfile(viewOf(profile), ColorSamples::RGB));
    PixelBuffer picture = noise(5, 5, PixelLayout::RGBX32);
    EXPECT_EQ(convertToSRGB(picture, {ColorSamples::RGB, viewOf(profile)}, 1),
              ColorOutcome::ProfileRefused);
}

TEST(ColorProfile, CutAnywhereNeverHarms) {
    for (const ProfileBytes& whole : {makeWideProfile(), makeInkProfile()}) {
        const ColorSamples samples = whole.size() < 4096 ? ColorSamples::RGB : ColorSamples::CMYK;
        for (size_t size = 0; size < whole.size(); size += 1 + size / 24) {
            const ColorAnswer answer = makeConverter(
                {samples, ColorTarget::SRGB, false, ByteView(whole.data(), std::max<size_t>(size, 1))});
            // What is behind the last tag that is needed may be missing.
            if (size < whole.size() / 2) {
                EXPECT_EQ(answer.kind, ColorAnswer::Kind::Refused) << size;
            }
        }
    }
}

TEST(ColorProfile, ChangedAnywhereNeverHarms) {
    uint32_t state = 7;
    const auto next = [&state] { return (state = state * 1664525u + 1013904223u) >> 8; };
    int answers[4] = {};
    for (int round = 0; round < 600; ++round) {
        ProfileBytes profile = round % 3 == 0 ? makeGrayProfile(1.8) : makeWideProfile();
        const ColorSamples samples = round % 3 == 0 ? ColorSamples::Gray : ColorSamples::RGB;
        for (uint32_t changes = 1 + next() % 4; changes > 0; --changes)
            profile[next() % profile.size()] = static_cast<uint8_t>(next() % 3 == 0 ? 255 : next());
        const ColorAnswer answer = makeConverter({samples, ColorTarget::SRGB, false, viewOf(profile)});
        ++answers[static_cast<int>(answer.kind)];
        if (!answer.converter) continue;
        const PixelBuffer from =
            noise(16, 1, samples == ColorSamples::Gray ? PixelLayout::Gray8 : PixelLayout::RGBX32);
        PixelBuffer to = noise(16, 1, PixelLayout::RGBX32);
        answer.converter->convert(from.row(0), to.row(0), 16);
    }
    EXPECT_GT(answers[static_cast<int>(ColorAnswer::Kind::Converter)], 100);
    EXPECT_GT(answers[static_cast<int>(ColorAnswer::Kind::Refused)], 40);
}

TEST(ColorProfile, ThatAsksForHugeMemoryIsRefused) {
    ProfileBytes profile = makeInkProfile();
    const auto grid =
        std::search(profile.begin(), profile.end(), std::begin("mft2"), std::begin("mft2") + 4);
    ASSERT_NE(grid, profile.end());
    *(grid + 10) = 100;  // points a side: 100 to the fourth times three words
    PixelBuffer picture = noise(5, 5, PixelLayout::RGBX32);
    EXPECT_EQ(convertToSRGB(picture, {ColorSamples::CMYK, viewOf(profile)}, 1),
              ColorOutcome::ProfileRefused);
}

TEST(ColorMemory, ShortInTheEngineIsSaid) {
    const ProfileBytes profile = unique(makeWideProfile(), 6);
    PixelBuffer picture = noise(5, 5, PixelLayout::RGBX32);
    {
        const ScopedFaults faults{Fault::Allocation};
        EXPECT_EQ(convertToSRGB(picture, {ColorSamples::RGB, viewOf(profile)}, 1), ColorOutcome::NoMemory);
    }
    EXPECT_TRUE(samePixels(picture, noise(5, 5, PixelLayout::RGBX32)));
    EXPECT_EQ(convertToSRGB(picture, {ColorSamples::RGB, viewOf(profile)}, 1), ColorOutcome::Converted);
}

TEST(ColorMemory, ShortInTheProductIsSaidAndThePixelsKept) {
    const ProfileBytes gray = unique(makeGrayProfile(1.8), 77);
    const ProfileBytes wide = unique(makeWideProfile(), 78);
    bool succeeded = false;
    for (int successes = 0; successes < 200 && !succeeded; ++successes) {
        PixelBuffer levels = noise(9, 9, PixelLayout::Gray8);
        PixelBuffer colors = noise(9, 9, PixelLayout::RGBX32);
        ColorOutcome first = ColorOutcome::Converted;
        ColorOutcome second = ColorOutcome::Converted;
        {
            const FailingAllocations failing(successes);
            first = convertToGray(levels, {ColorSamples::Gray, viewOf(gray)}, 1);
            second = convertToGray(colors, {ColorSamples::RGB, viewOf(wide)}, 1);
            succeeded = !failing.happened();
        }
        const bool firstShort = first == ColorOutcome::NoMemory;
        const bool secondShort = second == ColorOutcome::NoMemory;
        EXPECT_TRUE(!firstShort || samePixels(levels, noise(9, 9, PixelLayout::Gray8)));
        EXPECT_TRUE(!secondShort || samePixels(colors, noise(9, 9, PixelLayout::RGBX32)));
        EXPECT_TRUE(succeeded || firstShort || secondShort);
    }
    EXPECT_TRUE(succeeded);
}

}  // namespace

}  // namespace fi::test
