// SPDX-License-Identifier: Apache-2.0
// The records, codes and texts that callers see: their layout, their values and how they are filled.
#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>

#include "FileImporter/FileTypeCodes.h"
#include "FileImporter/Records.h"
#include "FileImporter/ResultCodes.h"
#include "Foundation/RawBitmaps.h"

namespace fi::test {

namespace {

/// The type and the place of one member of a record.
template <typename Wanted, typename Record, typename Member>
void expectMember(const Record& record, const Member& member, size_t offset, const char* name) {
    static_assert(std::is_same_v<Wanted, Member>);
    const auto* start = reinterpret_cast<const char*>(&record);
    EXPECT_EQ(reinterpret_cast<const char*>(&member) - start, static_cast<ptrdiff_t>(offset)) << name;
}

tagRAWBITMAP bitmapOfKind(uint32_t kind) {
    static uint8_t pixels[64];
    return {pixels, 12, 4, 5, 0xA5A5'0001, kind};
}

PATIMG filledWith(int byte) {
    PATIMG image;
    std::memset(&image, byte, sizeof image);
    return image;
}

std::string bytesOf(const PATIMG& image) {
    return std::string(reinterpret_cast<const char*>(&image), sizeof image);
}

/// A class of an application with one operation of its own behind those of the library.
class DatedPhoto : public PhotoInfo {
public:
    virtual void firstOwnOperation() {}
};

/// Where the Itanium ABI finds a virtual member: pointers to them hold one more than the byte offset.
template <typename Method>
ptrdiff_t slotOf(Method method) {
    static_assert(sizeof method >= sizeof(ptrdiff_t));
    ptrdiff_t word = 0;
    std::memcpy(&word, &method, sizeof word);
    return (word - 1) / static_cast<ptrdiff_t>(sizeof(void*));
}

}  // namespace

TEST(RecordsTest, RectIsTopLeftBottomRightIn16Bits) {
    const Rect rect{1, 2, 3, 4};
    EXPECT_EQ(sizeof rect, 8U);
    expectMember<int16_t>(rect, rect.top, 0, "top");
    expectMember<int16_t>(rect, rect.left, 2, "left");
    expectMember<int16_t>(rect, rect.bottom, 4, "bottom");
    expectMember<int16_t>(rect, rect.right, 6, "right");
}

TEST(RecordsTest, DateTimeRecIsSevenNumbersOf16Bits) {
    const DateTimeRec date{2018, 9, 3, 14, 5, 59, 1};
    EXPECT_EQ(sizeof date, 14U);
    expectMember<int16_t>(date, date.year, 0, "year");
    expectMember<int16_t>(date, date.month, 2, "month");
    expectMember<int16_t>(date, date.day, 4, "day");
    expectMember<int16_t>(date, date.hour, 6, "hour");
    expectMember<int16_t>(date, date.minute, 8, "minute");
    expectMember<int16_t>(date, date.second, 10, "second");
    expectMember<int16_t>(date, date.dayOfWeek, 12, "dayOfWeek");
}

TEST(RecordsTest, TrimRatioIsFourDoublesInTheOrderXYWidthHeight) {
    const TrimRatio ratio{{0.25, 0.5}, {0.75, 1.0}};
    double parts[4];
    static_assert(sizeof parts == sizeof ratio);
    std::memcpy(parts, &ratio, sizeof parts);
    EXPECT_EQ(parts[0], 0.25);
    EXPECT_EQ(parts[1], 0.5);
    EXPECT_EQ(parts[2], 0.75);
    EXPECT_EQ(parts[3], 1.0);
}

TEST(RecordsTest, CPhotoHasItsMembersInOrder) {
    const CPhoto photo{};
    expectMember<uint64_t>(photo, photo.reserved, 0, "reserved");
    expectMember<uint16_t>(photo, photo.orientation, 8, "orientation");
    expectMember<NSImage*>(photo, photo.image, 16, "image");
    expectMember<CFURLRef>(photo, photo.url, 24, "url");
    expectMember<DateTimeRec>(photo, photo.date, 32, "date");
    expectMember<uint32_t>(photo, photo.extra, 48, "extra");
}

TEST(RecordsTest, CacheInfoHasItsMembersInOrder) {
    const tCacheInfo info{};
    expectMember<int16_t>(info, info.index, 0, "index");
    expectMember<CFURLRef>(info, info.fileURL, 8, "fileURL");
    expectMember<CFURLRef>(info, info.photoURL, 16, "photoURL");
    expectMember<CFURLRef>(info, info.thumbnailURL, 24, "thumbnailURL");
    expectMember<DateTimeRec>(info, info.date, 32, "date");
    expectMember<uint16_t>(info, info.orientation, 46, "orientation");
    expectMember<uint32_t>(info, info.extra, 48, "extra");
    expectMember<uint16_t>(info, info.exifValue1, 52, "exifValue1");
    expectMember<uint16_t>(info, info.exifValue2, 54, "exifValue2");
}

TEST(RecordsTest, RawBitmapHasItsMembersInOrder) {
    const tagRAWBITMAP bitmap = bitmapOfKind(1);
    expectMember<uint8_t*>(bitmap, bitmap.bits, 0, "bits");
    expectMember<int32_t>(bitmap, bitmap.rowBytes, 8, "rowBytes");
    expectMember<uint32_t>(bitmap, bitmap.width, 12, "width");
    expectMember<int32_t>(bitmap, bitmap.height, 16, "height");
    expectMember<uint32_t>(bitmap, bitmap.attribute, 20, "attribute");
    expectMember<uint32_t>(bitmap, bitmap.kind, 24, "kind");
}

TEST(RecordsTest, RawImageHasItsMembersInOrder) {
    const PATIMG image{};
    EXPECT_EQ(sizeof image, 48U);
    expectMember<uint8_t*>(image, image.bits, 0, "bits");
    expectMember<int32_t>(image, image.rowBytes, 8, "rowBytes");
    expectMember<uint32_t>(image, image.width, 12, "width");
    expectMember<int32_t>(image, image.height, 16, "height");
    expectMember<uint32_t>(image, image.attribute1, 20, "attribute1");
    expectMember<uint32_t>(image, image.attribute2, 24, "attribute2");
    expectMember<uint32_t>(image, image.format, 28, "format");
    expectMember<uint32_t>(image, image.reserved1, 32, "reserved1");
    expectMember<uint64_t>(image, image.reserved2, 40, "reserved2");
}

TEST(RecordsTest, PhotoInfoHoldsADateAndACodeBehindItsTable) {
    const PhotoInfo info;
    expectMember<DateTimeRec>(info, info.date, sizeof(void*), "date");
    expectMember<int16_t>(info, info.code, sizeof(void*) + sizeof(DateTimeRec), "code");
}

TEST(RecordsTest, PhotoInfoHasNoVirtualOperationButItsDestructor) {
    EXPECT_TRUE(std::has_virtual_destructor_v<PhotoInfo>);
    // A destructor takes two slots, so the first operation of a derived class stands in slot 2.
    EXPECT_EQ(slotOf(&DatedPhoto::firstOwnOperation), 2);
}

TEST(RecordsTest, FreshPhotoInfoHasNoDateAndCodeMinusOne) {
    alignas(PhotoInfo) unsigned char storage[sizeof(PhotoInfo)];
    std::memset(storage, 0x5A, sizeof storage);
    const PhotoInfo* info = new (storage) PhotoInfo;
    EXPECT_EQ(info->date, DateTimeRec{});
    EXPECT_EQ(info->code, -1);
    info->~PhotoInfo();
}

TEST(RecordsTest, BitmapsOfUnknownKindsLeaveTheImageUntouched) {
    for (const uint32_t kind : {0U, 4U, 33U, 0xFFFF'FFFFU}) {
        PATIMG image = filledWith(0x5A);
        const std::string before = bytesOf(image);
        EXPECT_EQ(makePATIMG(bitmapOfKind(kind), image), -50) << kind;
        EXPECT_EQ(bytesOf(image), before) << kind;
    }
}

TEST(RecordsTest, KindOfABitmapGivesTheFormatOfTheImage) {
    struct Case {
        uint32_t kind;
        uint32_t format;
    };
    for (const Case& c : {Case{1, 33}, Case{2, 8}, Case{3, 136}}) {
        PATIMG image = filledWith(0x5A);
        EXPECT_EQ(makePATIMG(bitmapOfKind(c.kind), image), 0) << c.kind;
        EXPECT_EQ(image.format, c.format) << c.kind;
    }
}

TEST(RecordsTest, BitmapsGiveTheImageTheirPixelsAndMeasures) {
    tagRAWBITMAP bitmap = bitmapOfKind(2);
    bitmap.rowBytes = -12;  // bottom-up bitmaps have their rows in the other direction
    PATIMG image = filledWith(0x5A);
    ASSERT_EQ(makePATIMG(bitmap, image), 0);
    EXPECT_EQ(image.bits, bitmap.bits);
    EXPECT_EQ(image.rowBytes, -12);
    EXPECT_EQ(image.width, 4U);
    EXPECT_EQ(image.height, 5);
}

TEST(RecordsTest, AttributeOfABitmapGoesIntoBothAttributes) {
    PATIMG image = filledWith(0x5A);
    ASSERT_EQ(makePATIMG(bitmapOfKind(3), image), 0);
    EXPECT_EQ(image.attribute1, 0xA5A5'0001U);
    EXPECT_EQ(image.attribute2, 0xA5A5'0001U);
}

TEST(RecordsTest, ReservedWordsOfTheImageAreZeroed) {
    PATIMG image = filledWith(0x5A);
    ASSERT_EQ(makePATIMG(bitmapOfKind(1), image), 0);
    EXPECT_EQ(image.reserved1, 0U);
    EXPECT_EQ(image.reserved2, 0U);
}

TEST(RecordsTest, FileTypeCodesAreFiveConstantTexts) {
    struct Case {
        CFStringRef code;
        std::string_view text;
    };
    const Case cases[] = {{kUTTypeJPEG, "public.jpeg"},
                          {kUTTypeTIFF, "public.tiff"},
                          {kUTTypePICT, "com.apple.pict"},
                          {kUTTypePDF, "com.adobe.pdf"},
                          {kUTTypeImage, "public.image"}};
    std::set<CFStringRef> objects;
    for (const Case& c : cases) {
        EXPECT_EQ(c.code->view(), c.text);
        EXPECT_STREQ(c.code->c_str(), c.text.data());
        objects.insert(c.code);
    }
    EXPECT_EQ(objects.size(), std::size(cases));
}

TEST(RecordsTest, FileTypeCodesSurviveAnyNumberOfReleases) {
    for (int i = 0; i < 3; ++i)
        kUTTypeJPEG->release();
    EXPECT_EQ(kUTTypeJPEG->view(), "public.jpeg");
}

TEST(RecordsTest, UnknownOSTypeIsFourQuestionMarks) {
    EXPECT_EQ(kUnknownOSType, 0x3F3F3F3FU);
    EXPECT_EQ(std::memcmp(&kUnknownOSType, "????", 4), 0);
}

TEST(RecordsTest, ResultCodesHaveTheirFixedValues) {
    struct Case {
        OSErr code;
        int value;
    };
    const Case cases[] = {{kNoErr, 0},
                          {kGenericErr, -1},
                          {kNotFoundErr, -43},
                          {kFileBusyErr, -47},
                          {kParamErr, -50},
                          {kMemFullErr, -108},
                          {kFolderErr, -120},
                          {kUnsupportedDepthErr, -206},
                          {kNoImageBufferErr, -401},
                          {kNoOutputErr, -2700},
                          {kUnreadableImageErr, 1100},
                          {kLookupErr, 1101}};
    static_assert(std::is_same_v<OSErr, int16_t>);
    for (const Case& c : cases)
        EXPECT_EQ(c.code, c.value);
}

TEST(RecordsTest, EveryResultCodeHasATextOfItsOwn) {
    std::set<std::string_view> texts = {resultCodeText(12345)};
    for (const OSErr code :
         {kGenericErr, kNotFoundErr, kFileBusyErr, kParamErr, kMemFullErr, kFolderErr, kUnsupportedDepthErr,
          kNoImageBufferErr, kNoOutputErr, kUnreadableImageErr, kLookupErr, kNoErr})
        EXPECT_TRUE(texts.insert(resultCodeText(code)).second) << code << ": " << resultCodeText(code);
}

}  // namespace fi::test
