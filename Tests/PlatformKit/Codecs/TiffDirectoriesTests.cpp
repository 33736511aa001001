// SPDX-License-Identifier: Apache-2.0
// Directories of Exif blocks and TIFF files: values of every type, and everything that can be wrong.
#include <gtest/gtest.h>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/TiffBytes.h"
#include "PlatformKit/Codecs/TiffDirectories.h"

namespace fi::test {

namespace {

using namespace std::string_view_literals;

std::optional<TiffDirectorySet> readSet(const TiffBytes& tiff) {
    MemorySource source(tiff.bytes());
    return readTiffDirectories(source);
}

TiffField field(uint16_t type, uint32_t count, std::vector<uint8_t> data,
                ByteOrder order = ByteOrder::Big) {
    return TiffField{0x1234, type, count, order, std::move(data)};
}

constexpr ByteOrder kOrders[] = {ByteOrder::Little, ByteOrder::Big};

}  // namespace

TEST(TiffDirectories, ReadsValuesInPlaceAndBehindInBothOrdersAndBothSizes) {
    for (const ByteOrder order : kOrders) {
        for (const bool big : {false, true}) {
            TiffBytes tiff(order, big);
            const uint64_t model = tiff.addText("A camera of ours\0x"sv);
            const uint64_t density = big ? 0 : tiff.addRational(300, 1);
            std::vector<TiffBytes::Entry> entries = {{0x0110, kTiffAscii, 18, model},
                                                     {0x0112, kTiffShort, 1, tiff.inlineShort(6)},
                                                     {0x010F, kTiffAscii, 3, tiff.inlineText("us")}};
            if (!big) entries.push_back({0x011A, kTiffRational, 1, density});
            tiff.setFirst(tiff.addDirectory(entries));
            const auto set = readSet(tiff);
            ASSERT_TRUE(set);
            EXPECT_EQ(set->order, order);
            ASSERT_EQ(set->ifd0.size(), entries.size());
            EXPECT_EQ(findField(set->ifd0, 0x0110)->asText(), "A camera of ours");
            EXPECT_EQ(findField(set->ifd0, 0x010F)->asText(), "us");
            EXPECT_EQ(orientation(*set), 6);
            EXPECT_EQ(findField(set->ifd0, 0x9999), nullptr);
            if (!big) {
                EXPECT_DOUBLE_EQ(findField(set->ifd0, 0x011A)->asRational().value_or(0), 300.0);
            }
        }
    }
}

TEST(TiffDirectories, FollowsThePointersToAllFiveDirectories) {
    for (const ByteOrder order : kOrders) {
        TiffBytes tiff(order);
        const uint64_t interop = tiff.addDirectory({{1, kTiffAscii, 4, tiff.inlineText("R98")}});
        const uint64_t exif = tiff.addDirectory(
            {{0x9000, kTiffUndefined, 4, tiff.inlineText("0230")}, {0xA005, kTiffLong, 1, interop}});
        const uint64_t gps = tiff.addDirectory({{1, kTiffAscii, 2, tiff.inlineText("N")}});
        const uint64_t thumbnail = tiff.addDirectory({{0x0103, kTiffShort, 1, tiff.inlineShort(6)}});
        tiff.setFirst(
            tiff.addDirectory({{0x8769, kTiffLong, 1, exif}, {0x8825, kTiffIfd, 1, gps}}, thumbnail));
        const auto set = readSet(tiff);
        ASSERT_TRUE(set);
        ASSERT_EQ(set->ifd0.size(), 2U);
        ASSERT_EQ(set->exif.size(), 2U);
        EXPECT_EQ(set->exif[0].asText(), "0230");
        ASSERT_EQ(set->gps.size(), 1U);
        EXPECT_EQ(set->gps[0].asText(), "N");
        ASSERT_EQ(set->interop.size(), 1U);
        EXPECT_EQ(set->interop[0].asText(), "R98");
        ASSERT_EQ(set->ifd1.size(), 1U);
        EXPECT_EQ(set->ifd1[0].asUnsigned(), 6U);
    }
}

TEST(TiffDirectories, OffsetsCountFromTheBase) {
    TiffBytes tiff(ByteOrder::Big);
    const uint64_t text = tiff.addText("behind the base");
    tiff.setFirst(tiff.addDirectory({{0x010E, kTiffAscii, 16, text}}));
    const auto bytes = joined(std::vector<uint8_t>(77, 0xAA), tiff.bytes());
    MemorySource source(bytes);
    const auto set = readTiffDirectories(source, 77);
    ASSERT_TRUE(set);
    EXPECT_EQ(set->ifd0.at(0).asText(), "behind the base");
    EXPECT_FALSE(readTiffDirectories(source, 76));
    EXPECT_FALSE(readTiffDirectories(source, bytes.size()));
    EXPECT_FALSE(readTiffDirectories(source, UINT64_MAX));
}

TEST(TiffDirectories, DirectoriesThatLeadBackAreReadOnce) {
    TiffBytes tiff(ByteOrder::Little);
    const uint64_t here = tiff.here();
    tiff.addDirectory({{0x8769, kTiffLong, 1, here}, {0x8825, kTiffLong, 1, here}}, here);
    tiff.setFirst(here);
    const auto set = readSet(tiff);
    ASSERT_TRUE(set);
    EXPECT_EQ(set->ifd0.size(), 2U);
    EXPECT_TRUE(set->exif.empty());
    EXPECT_TRUE(set->gps.empty());
    EXPECT_TRUE(set->ifd1.empty());
}

TEST(TiffDirectories, MakerNotesUnknownTypesAndValuesOutsideAreLeftOut) {
    TiffBytes tiff(ByteOrder::Little);
    const uint64_t note = tiff.addBytes(100, 7);
    const uint64_t exif =
        tiff.addDirectory({{0x927C, kTiffUndefined, 100, note}, {0x9000, kTiffUndefined, 4, 0}});
    tiff.setFirst(tiff.addDirectory({{0x8769, kTiffLong, 1, exif},
                                     {0x0100, 99, 1, 5},
                                     {0x0101, 0, 1, 5},
                                     {0x010E, kTiffAscii, 50, 0x7FFFFFFF},
                                     {0x010F, kTiffAscii, 0, 0}}));
    const auto set = readSet(tiff);
    ASSERT_TRUE(set);
    EXPECT_EQ(set->ifd0.size(), 1U);
    ASSERT_EQ(set->exif.size(), 1U);
    EXPECT_EQ(set->exif[0].tag, 0x9000);
}

TEST(TiffDirectories, AValueCutByTheEndKeepsWhatIsThereAndNoMore) {
    TiffBytes tiff(ByteOrder::Little);
    tiff.setFirst(tiff.addDirectory({{0x010E, kTiffAscii, 1000, 30}, {0x0201, kTiffLong, 100, 30}}));
    tiff.addBytes(10, 'x');
    const auto set = readSet(tiff);
    ASSERT_TRUE(set);
    ASSERT_EQ(set->ifd0.size(), 2U);
    EXPECT_EQ(set->ifd0[0].data.size(), tiff.bytes().size() - 30);
    EXPECT_EQ(set->ifd0[1].count, 100U);
    EXPECT_TRUE(set->ifd0[1].asUnsigned(0));
    EXPECT_FALSE(set->ifd0[1].asUnsigned(50));
    EXPECT_FALSE(set->ifd0[1].asUnsigned(100));
}

TEST(TiffDirectories, ALongValueIsCutTo64KiBButABlockOfMetadataIsNot) {
    TiffBytes tiff(ByteOrder::Big);
    const uint64_t block = tiff.addBytes(100'000, 'x');
    tiff.setFirst(
        tiff.addDirectory({{0x02BC, kTiffByte, 90'000, block}, {0x010E, kTiffAscii, 90'000, block}}));
    const auto set = readSet(tiff);
    ASSERT_TRUE(set);
    EXPECT_EQ(set->ifd0.at(0).data.size(), 90'000U);
    EXPECT_EQ(set->ifd0.at(1).data.size(), 65'536U);
}

TEST(TiffDirectories, AllValuesTogetherHoldNoMoreThanTheFileAndAConstant) {
    TiffBytes tiff(ByteOrder::Little);
    const uint64_t block = tiff.addBytes(60'000, 'x');
    std::vector<TiffBytes::Entry> entries(2000, {0x010E, kTiffAscii, 60'000, block});
    tiff.setFirst(tiff.addDirectory(entries));
    const auto set = readSet(tiff);
    ASSERT_TRUE(set);
    size_t total = 0;
    for (const TiffField& each : set->ifd0)
        total += each.data.size();
    EXPECT_LE(total, tiff.bytes().size() + 65'536);
}

TEST(TiffDirectories, EntriesOfOneDirectoryAreLimited) {
    TiffBytes tiff(ByteOrder::Little);
    tiff.setFirst(tiff.addDirectory(std::vector<TiffBytes::Entry>(30'000, {0x0112, kTiffShort, 1, 1})));
    const auto set = readSet(tiff);
    ASSERT_TRUE(set);
    EXPECT_EQ(set->ifd0.size(), 2048U);
}

TEST(TiffDirectories, AnEntryCountBeyondTheFileReadsWhatIsThere) {
    TiffBytes tiff(ByteOrder::Big);
    tiff.setFirst(tiff.addDirectory({{0x0112, kTiffShort, 1, tiff.inlineShort(3)}}));
    auto bytes = tiff.bytes();
    bytes[8] = 0xFF;  // of the count
    MemorySource source(bytes);
    const auto set = readTiffDirectories(source);
    ASSERT_TRUE(set);
    EXPECT_EQ(orientation(*set), 3);
    EXPECT_TRUE(set->ifd1.empty());
}

TEST(TiffDirectories, OtherBytesAreNoTiffStructure) {
    for (const auto& text : {"", "II", "II*", "MM*\0abcd", "II\x2B\0\4\0\0\0", "Exif"}) {
        const auto bytes = bytesOf(text);
        MemorySource source(bytes);
        EXPECT_FALSE(readTiffDirectories(source)) << text;
    }
}

TEST(TiffDirectories, OrientationOutsideOneToEightIsNone) {
    for (uint16_t value = 0; value < 12; ++value) {
        TiffBytes tiff(ByteOrder::Big);
        tiff.setFirst(tiff.addDirectory({{0x0112, kTiffShort, 1, tiff.inlineShort(value)}}));
        const auto set = readSet(tiff);
        ASSERT_TRUE(set);
        EXPECT_EQ(orientation(*set).has_value(), value >= 1 && value <= 8) << value;
    }
}

TEST(TiffDirectories, DensityKnowsInchesCentimetresAndNoUnit) {
    struct Case {
        uint16_t unit;
        double expected;
    };
    for (const Case c : {Case{2, 100}, Case{3, 254}, Case{1, 0}, Case{9, 0}}) {
        TiffBytes tiff(ByteOrder::Little);
        const uint64_t value = tiff.addRational(100, 1);
        tiff.setFirst(
            tiff.addDirectory({{0x011A, kTiffRational, 1, value}, {0x0128, kTiffShort, 1, c.unit}}));
        const auto set = readSet(tiff);
        ASSERT_TRUE(set);
        const auto got = density(*set);
        EXPECT_EQ(got.has_value(), c.expected > 0);
        if (got) {
            EXPECT_DOUBLE_EQ(got->x, c.expected);
            EXPECT_DOUBLE_EQ(got->y, c.expected);
        }
    }
}

TEST(TiffDirectories, EveryCutAndManyHarmedBytesNeverCrash) {
    TiffBytes tiff(ByteOrder::Big);
    const uint64_t text = tiff.addText("some text that is longer");
    const uint64_t exif = tiff.addDirectory({{0x9003, kTiffAscii, 20, text}, {0xA005, kTiffLong, 1, 8}});
    tiff.setFirst(tiff.addDirectory({{0x010E, kTiffAscii, 24, text}, {0x8769, kTiffLong, 1, exif}}, exif));
    const auto whole = tiff.bytes();
    for (size_t length = 0; length <= whole.size(); ++length) {
        const auto cut = firstBytes(whole, length);
        MemorySource source(cut);
        EXPECT_EQ(readTiffDirectories(source).has_value(), length >= 8);
    }
    for (uint32_t seed = 0; seed < 3000; ++seed) {
        const auto bytes = mutated(whole, seed, 1 + seed % 5);
        MemorySource source(bytes);
        const auto set = readTiffDirectories(source);
        if (!set) continue;
        for (const TiffField& each : set->ifd0)
            EXPECT_LE(each.data.size(), whole.size());
    }
}

TEST(TiffField, IntegersOfEveryTypeAreReadWithTheirSign) {
    EXPECT_EQ(field(kTiffByte, 1, {0xFE}).asUnsigned(), 254U);
    EXPECT_EQ(field(kTiffSByte, 1, {0xFE}).asSigned(), -2);
    EXPECT_EQ(field(kTiffShort, 2, {0, 1, 0xFF, 0xFE}).asUnsigned(1), 65534U);
    EXPECT_EQ(field(kTiffSShort, 1, {0xFF, 0xFE}).asSigned(), -2);
    EXPECT_EQ(field(kTiffLong, 1, {0xFF, 0xFF, 0xFF, 0xFE}).asUnsigned(), 0xFFFFFFFEU);
    EXPECT_EQ(field(kTiffLong, 1, {0xFF, 0xFF, 0xFF, 0xFE}).asSigned(), int64_t{0xFFFFFFFE});
    EXPECT_EQ(field(kTiffSLong, 1, {0xFF, 0xFF, 0xFF, 0xFE}).asSigned(), -2);
    EXPECT_EQ(field(kTiffSLong, 1, {0xFE, 0xFF, 0xFF, 0xFF}, ByteOrder::Little).asSigned(), -2);
    EXPECT_EQ(field(kTiffLong8, 1, std::vector<uint8_t>(8, 0xFF)).asUnsigned(), UINT64_MAX);
    EXPECT_EQ(field(kTiffSLong8, 1, std::vector<uint8_t>(8, 0xFF)).asSigned(), -1);
}

TEST(TiffField, AValueThatDoesNotFitOrIsNotThereIsNone) {
    EXPECT_FALSE(field(kTiffSLong, 1, {0xFF, 0xFF, 0xFF, 0xFE}).asUnsigned());
    EXPECT_FALSE(field(kTiffLong8, 1, std::vector<uint8_t>(8, 0xFF)).asSigned());
    EXPECT_FALSE(field(kTiffShort, 1, {0}).asUnsigned());
    EXPECT_FALSE(field(kTiffShort, 1, {0, 1}).asUnsigned(1));
    EXPECT_FALSE(field(kTiffAscii, 1, {'5'}).asUnsigned());
    EXPECT_FALSE(field(kTiffLong, 1, {0, 0, 0, 1}).asUnsigned(SIZE_MAX));
}

TEST(TiffField, RationalsFloatsAndIntegersAreNumbers) {
    EXPECT_EQ(field(kTiffRational, 1, {0, 0, 0, 3, 0, 0, 0, 4}).asRational(), 0.75);
    EXPECT_EQ(field(kTiffSRational, 1, {0xFF, 0xFF, 0xFF, 0xFD, 0, 0, 0, 4}).asRational(), -0.75);
    EXPECT_FALSE(field(kTiffRational, 1, {0, 0, 0, 3, 0, 0, 0, 0}).asRational());
    EXPECT_FALSE(field(kTiffRational, 1, {0, 0, 0, 3, 0, 0, 0}).asRational());
    EXPECT_EQ(field(kTiffFloat, 1, {0x3F, 0x40, 0, 0}).asRational(), 0.75);
    EXPECT_EQ(field(kTiffDouble, 1, {0x3F, 0xE8, 0, 0, 0, 0, 0, 0}).asRational(), 0.75);
    EXPECT_EQ(field(kTiffShort, 1, {0, 9}).asRational(), 9.0);
    EXPECT_EQ(field(kTiffSShort, 1, {0xFF, 0xFF}).asRational(), -1.0);
}

TEST(TiffField, TextEndsAtTheFirstNul) {
    EXPECT_EQ(field(kTiffAscii, 6, {'a', 'b', 0, 'c', 'd', 0}).asText(), "ab");
    EXPECT_EQ(field(kTiffAscii, 2, {'a', 'b'}).asText(), "ab");
    EXPECT_EQ(field(kTiffAscii, 1, {0}).asText(), "");
}

}  // namespace fi::test
