// SPDX-License-Identifier: Apache-2.0
// The dictionary of a picture's properties, against values that were written into the file.
#include "PlatformKit/ImageProperties.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "PlatformKit/Array.h"
#include "PlatformKit/Imaging/Looks.h"
#include "PlatformKit/Imaging/MetadataTags.h"
#include "PlatformKit/Imaging/PropertyReaders.h"
#include "PlatformKit/Number.h"

namespace fi::test {
namespace {

Ref<const CFDictionary> propertiesOf(const Bytes& file, uint32_t index = 0) {
    const auto source = sourceOf(file);
    EXPECT_TRUE(source);
    return source ? source->copyProperties(index) : nullptr;
}

/// The number of a key; a value that no test expects when there is none.
double number(const CFDictionary* dictionary, std::string_view key) {
    const auto* value = dictionary == nullptr ? nullptr : dictionary->value<CFNumber>(key);
    return value == nullptr ? -12345.0 : value->doubleValue();
}

std::string text(const CFDictionary* dictionary, std::string_view key) {
    const auto* value = dictionary == nullptr ? nullptr : dictionary->value<CFString>(key);
    return value == nullptr ? "(none)" : std::string(value->view());
}

const CFDictionary* sub(const Ref<const CFDictionary>& properties, CFStringRef key) {
    return properties->value<CFDictionary>(key);
}

Bytes jpegWith(const TiffDirectory& first, ByteOrder order = ByteOrder::Little) {
    return withExif(jpegOf(testPicture(16, 12)), tiffBlock({first}, order));
}

TEST(ImageProperties, JpegFactsComeFromTheHeader) {
    const auto properties = propertiesOf(jpegOf(testPicture(123, 45), 0.9, Density{300, 200}));
    ASSERT_TRUE(properties);
    EXPECT_EQ(number(properties.get(), "PixelWidth"), 123);
    EXPECT_EQ(number(properties.get(), "PixelHeight"), 45);
    EXPECT_EQ(number(properties.get(), "Depth"), 8);
    EXPECT_EQ(text(properties.get(), "ColorModel"), "RGB");
    EXPECT_EQ(number(properties.get(), "DPIWidth"), 300);
    EXPECT_EQ(number(properties.get(), "DPIHeight"), 200);
}

TEST(ImageProperties, WhatAFileDoesNotStateIsAbsent) {
    for (const Bytes& file : {jpegOf(testPicture(20, 10)), tiffOf(testPicture(20, 10))}) {
        const auto properties = propertiesOf(file);
        for (const char* key : {"DPIWidth", "DPIHeight", "Orientation", "{Exif}", "{GPS}"}) {
            EXPECT_EQ(properties->value(key), nullptr) << key;
        }
    }
    EXPECT_EQ(propertiesOf(jpegOf(testPicture(20, 10)))->value("{TIFF}"), nullptr);
}

TEST(ImageProperties, GrayFilesSayGray) {
    const PixelBuffer gray = testPicture(20, 10, PixelLayout::Gray8);
    for (const Bytes& file : {jpegOf(gray), tiffOf(gray)}) {
        const auto properties = propertiesOf(file);
        EXPECT_EQ(text(properties.get(), "ColorModel"), "Gray");
        EXPECT_EQ(pixelDepth(*properties), 8);
    }
}

TEST(ImageProperties, TiffFactsComeFromTheDirectory) {
    TiffDirectory page = tiffPage(testPicture(33, 44));
    page.shorts(0x0112, {5})
        .text(0x010F, "Maker")
        .fractions(0x011A, {{100, 1}})
        .fractions(0x011B, {{50, 1}});
    page.shorts(0x0128, {3});
    page.directory(0x8769, TiffDirectory().text(0x9003, "2020:02:03 04:05:06"));
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const auto properties = propertiesOf(tiffBlock({page}, order));
        EXPECT_EQ(number(properties.get(), "PixelWidth"), 33);
        EXPECT_EQ(number(properties.get(), "PixelHeight"), 44);
        EXPECT_EQ(number(properties.get(), "Orientation"), 5);
        EXPECT_DOUBLE_EQ(number(properties.get(), "DPIWidth"), 254);
        EXPECT_DOUBLE_EQ(number(properties.get(), "DPIHeight"), 127);
        EXPECT_EQ(text(sub(properties, kCGImagePropertyTIFFDictionary), "Make"), "Maker");
        EXPECT_EQ(number(sub(properties, kCGImagePropertyTIFFDictionary), "Orientation"), 5);
        EXPECT_EQ(text(sub(properties, kCGImagePropertyExifDictionary), "DateTimeOriginal"),
                  "2020:02:03 04:05:06");
    }
}

TEST(ImageProperties, EachPageOfATiffHasItsOwn) {
    TiffDirectory first = tiffPage(testPicture(10, 20));
    TiffDirectory second = tiffPage(testPicture(30, 40, PixelLayout::Gray8));
    first.shorts(0x0112, {3}).directory(0x8769, TiffDirectory().text(0x9003, "2020:02:03 04:05:06"));
    second.shorts(0x0112, {6});
    const Bytes file = tiffBlock({first, second}, ByteOrder::Little);
    EXPECT_EQ(number(propertiesOf(file, 0).get(), "Orientation"), 3);
    const auto properties = propertiesOf(file, 1);
    EXPECT_EQ(number(properties.get(), "PixelWidth"), 30);
    EXPECT_EQ(text(properties.get(), "ColorModel"), "Gray");
    EXPECT_EQ(number(properties.get(), "Orientation"), 6);
    EXPECT_EQ(properties->value("{Exif}"), nullptr);
}

TEST(ImageProperties, EveryOrientationIsToldAndOthersAreAbsent) {
    for (uint16_t orientation = 1; orientation <= 8; ++orientation) {
        const auto properties = propertiesOf(jpegWith(exifDirectory({.orientation = orientation})));
        EXPECT_EQ(number(properties.get(), "Orientation"), orientation);
        EXPECT_EQ(uprightOrientation(*properties), orientation);
    }
    for (const uint16_t orientation : {uint16_t{9}, uint16_t{100}, uint16_t{65535}}) {
        const auto properties = propertiesOf(jpegWith(exifDirectory({.orientation = orientation})));
        EXPECT_EQ(properties->value("Orientation"), nullptr);
        EXPECT_EQ(uprightOrientation(*properties), 1);
    }
}

TEST(ImageProperties, ExifValuesHaveTheirKinds) {
    TiffDirectory exif;
    exif.fractions(0x829A, {{1, 250}})
        .fractions(0x829D, {{28, 10}})
        .shorts(0x8827, {400})
        .bytes(0x9000, 7, {'0', '2', '3', '1'})
        .text(0x9003, "2024:05:06 07:08:09")
        .text(0x9004, "2024:05:06 07:08:10")
        .longs(0xA002, {4000})
        .shorts(0xA003, {3000})
        .shorts(0xA001, {65535})
        .shorts(0xA401, {1})
        .shorts(0x9214, {100, 200, 30})
        .bytes(0x927C, 7, Bytes(100, 1));
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const auto properties = propertiesOf(jpegWith(TiffDirectory().directory(0x8769, exif), order));
        const CFDictionary* values = sub(properties, kCGImagePropertyExifDictionary);
        ASSERT_NE(values, nullptr);
        EXPECT_DOUBLE_EQ(number(values, "ExposureTime"), 1.0 / 250);
        EXPECT_DOUBLE_EQ(number(values, "FNumber"), 2.8);
        EXPECT_EQ(number(values, "ISOSpeedRatings"), 400);
        EXPECT_EQ(text(values, kCGImagePropertyExifDateTimeOriginal->view()), "2024:05:06 07:08:09");
        EXPECT_EQ(text(values, kCGImagePropertyExifDateTimeDigitized->view()), "2024:05:06 07:08:10");
        EXPECT_EQ(number(values, kCGImagePropertyExifPixelXDimension->view()), 4000);
        EXPECT_EQ(number(values, kCGImagePropertyExifPixelYDimension->view()), 3000);
        EXPECT_EQ(number(values, kCGImagePropertyExifColorSpace->view()), 65535);
        EXPECT_EQ(number(values, kCGImagePropertyExifCustomRendered->view()), 1);
        const auto* version = values->value<CFData>("ExifVersion");
        ASSERT_NE(version, nullptr);
        EXPECT_EQ(Bytes(version->bytes().begin(), version->bytes().end()), (Bytes{'0', '2', '3', '1'}));
        const auto* area = values->value<CFArray>("SubjectArea");
        ASSERT_NE(area, nullptr);
        ASSERT_EQ(area->count(), 3u);
        EXPECT_EQ(area->at<CFNumber>(2)->int64Value(), 30);
        EXPECT_EQ(values->count(), 11u) << "maker notes must not be there";
        EXPECT_EQ(values->value<CFNumber>("ExposureTime")->kind(), CFNumber::Kind::Real);
        EXPECT_EQ(values->value<CFNumber>("PixelXDimension")->kind(), CFNumber::Kind::Integer);
    }
}

TEST(ImageProperties, PlacesAreInDegrees) {
    TiffDirectory gps;
    gps.text(1, "N").fractions(2, {{52, 1}, {30, 1}, {36, 1}}).text(3, "W");
    gps.fractions(4, {{13, 1}, {2450, 100}, {0, 0}}).bytes(0, 1, {2, 3, 0, 0});
    gps.fractions(7, {{9, 1}, {5, 1}, {7, 1}}).text(0x1D, "2024:05:06");
    const auto properties = propertiesOf(jpegWith(TiffDirectory().directory(0x8825, gps)));
    const CFDictionary* place = sub(properties, kCGImagePropertyGPSDictionary);
    ASSERT_NE(place, nullptr);
    EXPECT_DOUBLE_EQ(number(place, "Latitude"), 52.51);
    EXPECT_EQ(text(place, "LatitudeRef"), "N");
    EXPECT_NEAR(number(place, "Longitude"), 13.408333, 1e-6);
    EXPECT_EQ(text(place, "LongitudeRef"), "W");
    EXPECT_EQ(text(place, "TimeStamp"), "09:05:07");
    EXPECT_EQ(text(place, "DateStamp"), "2024:05:06");
    ASSERT_NE(place->value<CFArray>("GPSVersion"), nullptr);
    EXPECT_EQ(place->value<CFArray>("GPSVersion")->count(), 4u);
}

TEST(ImageProperties, ValuesThatMeanNothingAreLeftOut) {
    TiffDirectory exif;
    exif.fractions(0x829A, {{1, 0}})                      // divides by zero
        .shorts(0x9003, {7})                              // a date that is no text
        .text(0xA002, "wide")                             // a width that is no number
        .shorts(0xA001, std::vector<uint16_t>(2000, 1));  // far too many
    TiffDirectory gps;
    gps.fractions(7, {{25, 1}, {61, 1}, {0, 1}});  // no time of a day
    const auto properties =
        propertiesOf(jpegWith(TiffDirectory().directory(0x8769, exif).directory(0x8825, gps)));
    EXPECT_EQ(properties->value("{Exif}"), nullptr);
    EXPECT_EQ(properties->value("{GPS}"), nullptr);
}

TEST(ImageProperties, TheFirstOfTwoEqualTagsCounts) {
    const auto properties = propertiesOf(jpegWith(
        TiffDirectory().shorts(0x0112, {6}).shorts(0x0112, {3}).text(0x010F, "A").text(0x010F, "B")));
    EXPECT_EQ(number(properties.get(), "Orientation"), 6);
    EXPECT_EQ(text(sub(properties, kCGImagePropertyTIFFDictionary), "Make"), "A");
}

TEST(ImageProperties, DepthCountsTheComponentsOfTheModel) {
    const auto depthOf = [](CFStringRef model, int64_t bits) {
        const auto properties = NSMutableDictionary::create();
        properties->set(kCGImagePropertyColorModel, fi::retain(model));
        properties->set(kCGImagePropertyDepth, CFNumber::create(bits));
        return pixelDepth(*properties);
    };
    EXPECT_EQ(depthOf(kCGImagePropertyColorModelRGB, 8), 24);
    EXPECT_EQ(depthOf(kCGImagePropertyColorModelLab, 8), 24);
    EXPECT_EQ(depthOf(kCGImagePropertyColorModelCMYK, 8), 32);
    EXPECT_EQ(depthOf(kCGImagePropertyColorModelGray, 16), 16);
    EXPECT_EQ(depthOf(CFString::create("Something").get(), 1), 1);
    EXPECT_EQ(pixelDepth(*NSMutableDictionary::create()), std::nullopt);
}

TEST(MetadataTags, TablesAreSortedAndNameEachKeyOnce) {
    for (const auto table : {tiffTags(), exifTags(), gpsTags()}) {
        EXPECT_TRUE(std::is_sorted(table.begin(), table.end(),
                                   [](const auto& a, const auto& b) { return a.tag <= b.tag; }));
        for (const MetadataTag& tag : table) {
            EXPECT_EQ(std::count_if(table.begin(), table.end(),
                                    [&](const MetadataTag& other) { return other.key == tag.key; }),
                      1)
                << tag.key;
        }
    }
}

TEST(MetadataTags, EveryExportedKeyIsInItsTable) {
    const auto has = [](std::span<const MetadataTag> table, CFStringRef key) {
        return std::any_of(table.begin(), table.end(),
                           [&](const MetadataTag& tag) { return tag.key == key->view(); });
    };
    for (const CFStringRef key :
         {kCGImagePropertyExifColorSpace, kCGImagePropertyExifCustomRendered,
          kCGImagePropertyExifDateTimeDigitized, kCGImagePropertyExifDateTimeOriginal,
          kCGImagePropertyExifPixelXDimension, kCGImagePropertyExifPixelYDimension}) {
        EXPECT_TRUE(has(exifTags(), key)) << key->view();
    }
    for (const CFStringRef key :
         {kCGImagePropertyTIFFDateTime, kCGImagePropertyTIFFMake, kCGImagePropertyTIFFModel,
          kCGImagePropertyTIFFOrientation, kCGImagePropertyTIFFSoftware}) {
        EXPECT_TRUE(has(tiffTags(), key)) << key->view();
    }
    for (const CFStringRef key : {kCGImagePropertyGPSLatitude, kCGImagePropertyGPSLatitudeRef,
                                  kCGImagePropertyGPSLongitude, kCGImagePropertyGPSLongitudeRef}) {
        EXPECT_TRUE(has(gpsTags(), key)) << key->view();
    }
}

}  // namespace
}  // namespace fi::test
