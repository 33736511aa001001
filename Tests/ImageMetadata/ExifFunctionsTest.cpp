// SPDX-License-Identifier: Apache-2.0
// The exported functions.
#include "FileImporter/ExifFunctions.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "FileImporter/CFileImporterCocoa.h"
#include "ImageMetadata/TagTypes.h"
#include "PlatformKit/Codecs/TiffBytes.h"

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

constexpr DateTimeRec kUntouched{-1, -2, -3, -4, -5, -6, -7};

/// The bytes of the last directory.
Bytes from(const TiffBytes& tiff, uint64_t start) {
    return {tiff.bytes().begin() + static_cast<ptrdiff_t>(start), tiff.bytes().end()};
}

}  // namespace

TEST(ExifFunctionsTest, CheckDateAcceptsWhatTheFileServicesAccept) {
    for (const char* text :
         {"2018:09:03 14:05:59", "2018-09-03T14.05.59Z", "2018:02:29 00:00:00", "2018:09", "",
          "    :  :     :  :  ", "2018:09:03 24:00:00", "20\xC3\xA9:09:03 14:05:59"}) {
        DateTimeRec here = kUntouched;
        DateTimeRec there = kUntouched;
        EXPECT_EQ(CheckDate(text, &here), CheckDateForCocoa(text, &there)) << text;
        EXPECT_EQ(here, there) << text;
    }
    DateTimeRec date = kUntouched;
    EXPECT_TRUE(CheckDate("2018:09:03 14:05:59", &date));
    EXPECT_EQ(date, (DateTimeRec{2018, 9, 3, 14, 5, 59, 0}));
    EXPECT_FALSE(CheckDate(nullptr, &date));
}

TEST(ExifFunctionsTest, ADateNeedsAMonth) {
    const DateTimeRec without{2020, 0, 1, 0, 0, 0, 0};
    const DateTimeRec with{2020, 1, 1, 0, 0, 0, 0};
    EXPECT_FALSE(QuerryDateTime(&without));
    EXPECT_TRUE(QuerryDateTime(&with));
}

TEST(ExifFunctionsTest, WordsAreReversedInPlace) {
    uint16_t word = 0x1234;
    ConvWORD_LB(&word);
    EXPECT_EQ(word, 0x3412);
    uint32_t doubleWord = 0x12345678;
    EXPECT_EQ(ConvDWORD_LB(&doubleWord), 0x78563412U);
    EXPECT_EQ(doubleWord, 0x78563412U);
}

TEST(ExifFunctionsTest, AnOrientationIsReplacedByItsTurnAndReturned) {
    constexpr std::array<int16_t, 10> kTurns = {0, 0, 2, 2, 4, 5, 1, 7, 3, 9};
    for (int16_t i = 0; i < 10; ++i) {
        int16_t orientation = i;
        EXPECT_EQ(ConvOrientation(orientation), kTurns[static_cast<size_t>(i)]);
        EXPECT_EQ(orientation, kTurns[static_cast<size_t>(i)]);
    }
}

TEST(ExifFunctionsTest, ValuesAreCopiedByTheirType) {
    std::array<uint32_t, 4> words = {7, 8, 9, 10};
    IMAGETAG_INFO info{33434, kTagRational, 0, 2, reinterpret_cast<char*>(words.data()), {}};
    std::array<uint32_t, 5> out{};
    EXPECT_EQ(Exif_GetValueFromType(out.data(), &info), 8);
    EXPECT_EQ(out, (std::array<uint32_t, 5>{7, 8, 9, 10, 0}));
    info.type = kTagLong;
    out = {};
    EXPECT_EQ(Exif_GetValueFromType(out.data(), &info), 4);
    EXPECT_EQ(out, (std::array<uint32_t, 5>{7, 0, 0, 0, 0}));
    EXPECT_EQ(Exif_GetValueFromType(nullptr, &info), 4);
    EXPECT_EQ(Exif_GetValueFromType(out.data(), nullptr), 0);
}

TEST(ExifFunctionsTest, MeasuringADirectoryFillsTheRecord) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        TiffBytes tiff(order);
        tiff.addBytes(20, 0);
        const uint64_t start =
            tiff.addDirectory({{256, 4, 1, 5}, {700, 1, 9, 28 + 60}, {0x8769, 4, 1, 33}});
        Bytes bytes = tiff.bytes();
        TIFF_EXIFSUB sub{bytes.data(), 1, 2, 3};
        EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data() + start, static_cast<int32_t>(start),
                                           order == ByteOrder::Little, &sub, 1),
                  69U);
        EXPECT_EQ(sub.ifdSize, 38);
        EXPECT_EQ(sub.exifIFD, bytes.data() + 33);
        EXPECT_EQ(sub.exifOffset, 33U);
        EXPECT_EQ(sub.pointerFieldOffset, 34U);
        EXPECT_EQ(bytes, tiff.bytes()) << "nothing is changed";
    }
}

TEST(ExifFunctionsTest, MeasuringWithoutAPointerSaysThereIsNone) {
    TiffBytes tiff(ByteOrder::Little);
    const uint64_t start = tiff.addDirectory({{256, 4, 1, 5}});
    Bytes bytes = from(tiff, start);
    TIFF_EXIFSUB sub{bytes.data(), 1, 2, 3};
    EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data(), 8, 1, &sub, 1), 18U);
    EXPECT_EQ(sub.ifdSize, 14);
    EXPECT_EQ(sub.exifIFD, nullptr);
    EXPECT_EQ(sub.exifOffset, 0U);
    EXPECT_EQ(sub.pointerFieldOffset, 0U);
    EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data(), 8, 1, nullptr, 1), 18U);
}

TEST(ExifFunctionsTest, AValueBeforeTheDirectorysEndMeasuresNothing) {
    for (const uint32_t value : {0U, 7U, 8U, 21U}) {
        TiffBytes tiff(ByteOrder::Big);
        const uint64_t start = tiff.addDirectory({{700, 1, 40, value}});
        Bytes bytes = from(tiff, start);
        TIFF_EXIFSUB sub{};
        EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data(), 8, 0, &sub, 1), 0U) << value;
        EXPECT_EQ(sub.ifdSize, 14);
    }
}

TEST(ExifFunctionsTest, APointerIsToldUpToTheValueThatEndsTheMeasuring) {
    const TiffBytes::Entry pointer{0x8769, 4, 1, 33};
    const TiffBytes::Entry inside{700, 1, 40, 7};
    const auto measured = [](const std::vector<TiffBytes::Entry>& entries) {
        TiffBytes tiff(ByteOrder::Little);
        Bytes bytes = from(tiff, tiff.addDirectory(entries));
        TIFF_EXIFSUB sub{};
        EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data(), 8, 1, &sub, 1), 0U);
        EXPECT_EQ(sub.ifdSize, 26);
        return sub.exifOffset;
    };
    EXPECT_EQ(measured({pointer, inside}), 33U);
    EXPECT_EQ(measured({inside, pointer}), 0U);
}

TEST(ExifFunctionsTest, ADirectoryBehindTwoGibibytesIsMeasured) {
    TiffBytes tiff(ByteOrder::Little);
    const uint64_t start = tiff.addDirectory({{700, 1, 40, 0x90000020}});
    Bytes bytes = from(tiff, start);
    TIFF_EXIFSUB sub{};
    EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data(), static_cast<int32_t>(0x90000000), 1, &sub, 1), 72U);
}

TEST(ExifFunctionsTest, ChangingRewritesOffsets) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const auto directory = [order](uint32_t offset) {
            TiffBytes tiff(order);
            const uint64_t start = tiff.addDirectory(
                {{256, 4, 1, 500}, {270, 2, 5, offset}, {700, 1, 9, offset + 60}, {0x8769, 4, 1, 500}},
                500);
            return from(tiff, start);
        };
        Bytes bytes = directory(1000);
        TIFF_EXIFSUB sub{nullptr, 1, 2, 3};
        EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data(), 300, order == ByteOrder::Little, &sub, 0), 54U);
        EXPECT_EQ(bytes, directory(700));
        EXPECT_EQ(sub.ifdSize, 2) << "only measuring fills the record";
        EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data(), -100, order == ByteOrder::Little, nullptr, 0),
                  54U);
        EXPECT_EQ(bytes, directory(800));
    }
}

TEST(ExifFunctionsTest, ADirectoryWithoutEntriesIsMeasuredButHasNothingToChange) {
    for (const uint8_t littleEndian : {uint8_t{0}, uint8_t{1}}) {
        Bytes bytes = {0, 0};
        TIFF_EXIFSUB sub{bytes.data(), 1, 0, 3};
        EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data(), 8, littleEndian, &sub, 0), 0U);
        EXPECT_EQ(bytes, (Bytes{0, 0}));
        EXPECT_EQ(GetSizeOrChangeOffsetIFD(bytes.data(), 8, littleEndian, &sub, 1), 6U);
        EXPECT_EQ(sub.ifdSize, 2);
    }
}

}  // namespace fi::test
