// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/AdobeRGB.h"

#include <gtest/gtest.h>

#include <span>
#include <vector>

#include "FileImporter/ExifFunctions.h"
#include "ImageMetadata/TagTypes.h"
#include "Support/TiffBlock.h"

namespace fi::test {

namespace {

using Fractions = std::vector<Fraction>;

constexpr uint16_t kWhitePoint = 318;
constexpr uint16_t kPrimaries = 319;
constexpr uint16_t kGamma = 42240;

/// The numbers of Adobe RGB, each alone in 64 bits: a fraction with denominator 0 is such a number.
Fractions alone(const std::vector<uint32_t>& numbers) {
    Fractions fractions;
    for (const uint32_t number : numbers)
        fractions.emplace_back(number, 0);
    return fractions;
}

struct Colors {
    Fractions whitePoint = alone({313, 1000, 329, 1000});
    Fractions primaries = alone({64, 100, 33, 100, 21, 100, 71, 100, 15, 100, 6, 100});
    Fractions gamma = alone({22, 10});
};

/// The field of a TIFF file with these colours, none of those that are empty.
class ColorField {
public:
    ColorField(const TiffDirectory& main, ByteOrder order, CIMAGETAG& tags) : m_tags(tags) {
        const auto file = tiffBlock({main}, order);
        int16_t format = 0;
        uint32_t offset = 0, size = 0, error = 0;
        EXPECT_EQ(tags.CreateField(nullptr, reinterpret_cast<const char*>(file.data()),
                                   static_cast<uint32_t>(file.size()), &format, &offset, &size, &error),
                  1);
        EXPECT_EQ(error, 0U);
    }
    ~ColorField() { m_tags.CloseField(); }
    ColorField(const ColorField&) = delete;
    ColorField& operator=(const ColorField&) = delete;

private:
    CIMAGETAG& m_tags;
};

TiffDirectory directoryOf(const Colors& colors) {
    TiffDirectory main;
    main.shorts(274, {1});
    if (!colors.whitePoint.empty()) main.fractions(kWhitePoint, colors.whitePoint);
    if (!colors.primaries.empty()) main.fractions(kPrimaries, colors.primaries);
    TiffDirectory exif;
    exif.shorts(40961, {65535});
    if (!colors.gamma.empty()) exif.fractions(kGamma, colors.gamma);
    return main.directory(kExifPointer, exif);
}

bool isAdobe(const TiffDirectory& main, ByteOrder order = ByteOrder::Little) {
    CIMAGETAG tags;
    const ColorField field(main, order, tags);
    return isAdobeRGB(tags);
}

bool isAdobe(const Colors& colors, ByteOrder order = ByteOrder::Little) {
    return isAdobe(directoryOf(colors), order);
}

}  // namespace

TEST(AdobeRGBTest, TheFractionsThatCamerasWriteAreNotAdobeRGB) {
    const Colors ordinary = {
        {{313, 1000}, {329, 1000}},
        {{64, 100}, {33, 100}, {21, 100}, {71, 100}, {15, 100}, {6, 100}},
        {{22, 10}},
    };
    EXPECT_FALSE(isAdobe(ordinary, ByteOrder::Little));
    EXPECT_FALSE(isAdobe(ordinary, ByteOrder::Big));
}

TEST(AdobeRGBTest, NumbersThatFill64BitsEachAre) {
    EXPECT_TRUE(isAdobe(Colors{}, ByteOrder::Little));
    EXPECT_TRUE(isAdobe(Colors{}, ByteOrder::Big));
}

TEST(AdobeRGBTest, EveryNumberCounts) {
    for (Fractions Colors::*part : {&Colors::whitePoint, &Colors::primaries, &Colors::gamma}) {
        const size_t count = (Colors{}.*part).size();
        for (size_t i = 0; i < count; ++i) {
            Colors low;
            ++(low.*part)[i].first;
            EXPECT_FALSE(isAdobe(low)) << i;
            Colors high;
            ++(high.*part)[i].second;
            EXPECT_FALSE(isAdobe(high)) << i;
        }
        Colors cut;
        (cut.*part).pop_back();
        EXPECT_FALSE(isAdobe(cut));
    }
}

TEST(AdobeRGBTest, AllThreeTagsMustBeThere) {
    for (Fractions Colors::*part : {&Colors::whitePoint, &Colors::primaries, &Colors::gamma}) {
        Colors colors;
        (colors.*part).clear();
        EXPECT_FALSE(isAdobe(colors));
    }
}

TEST(AdobeRGBTest, TheGammaIsTheExifDirectorys) {
    Colors colors;
    colors.gamma.clear();
    EXPECT_FALSE(isAdobe(directoryOf(colors).fractions(kGamma, Colors{}.gamma)));
}

TEST(AdobeRGBTest, MoreNumbersThanAreComparedDoNotMatter) {
    for (const size_t count : {size_t{13}, size_t{1000}, size_t{32767}}) {
        for (Fractions Colors::*part : {&Colors::whitePoint, &Colors::primaries, &Colors::gamma}) {
            Colors colors;
            (colors.*part).resize(count, {7, 7});
            EXPECT_TRUE(isAdobe(colors)) << count;
        }
    }
}

TEST(AdobeRGBTest, BytesAreNumbersAsTheyStand) {
    Colors colors;
    colors.gamma.clear();
    const auto withGamma = [&colors](uint16_t type, const std::vector<uint8_t>& bytes) {
        TiffDirectory main;
        main.fractions(kWhitePoint, colors.whitePoint).fractions(kPrimaries, colors.primaries);
        return isAdobe(main.directory(kExifPointer, TiffDirectory().bytes(kGamma, type, bytes)));
    };
    std::vector<uint8_t> gamma = {22, 0, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_TRUE(withGamma(kTagByte, gamma));
    gamma.resize(3000, 1);
    EXPECT_TRUE(withGamma(kTagByte, gamma));
    EXPECT_FALSE(withGamma(kTagASCII, gamma));
    EXPECT_FALSE(withGamma(kTagUndefined, gamma));
    EXPECT_FALSE(withGamma(kTagByte, {}));
}

TEST(AdobeRGBTest, TheExportedFunctionLooksAtTheSharedReader) {
    EXPECT_FALSE(ExifCheckAdobeRGB());
    {
        const ColorField field(directoryOf(Colors{}), ByteOrder::Little, gImageTag);
        EXPECT_TRUE(ExifCheckAdobeRGB());
        EXPECT_TRUE(ExifCheckAdobeRGB()) << "the field stays open";
    }
    EXPECT_FALSE(ExifCheckAdobeRGB());
}

}  // namespace fi::test
