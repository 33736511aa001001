// SPDX-License-Identifier: Apache-2.0
// Which tags the tool finds in a file, and when it says that there are more.
#include "PhotoTags.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "PictureFacts.h"
#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {
namespace {

constexpr size_t kHead = 65567;  // bytes

TEST(PhotoTag, OwnsACopyOfTheRecordsValue) {
    char value[] = {1, 2, 3, 4, 5, 6, 7, 8};
    const IMAGETAG_INFO record = {0x0102, 3, 0, 3, value, {}};
    const PhotoTag tag = photoTag(record);
    value[0] = 99;
    EXPECT_EQ(tag.number, 0x0102);
    EXPECT_EQ(tag.type, 3);
    EXPECT_EQ(tag.value, "\1\2\3\4\5\6");
}

TEST(PhotoTag, OfARecordWithoutAValueIsEmpty) {
    char value[] = {1, 2, 3, 4};
    for (const IMAGETAG_INFO& record :
         {IMAGETAG_INFO{1, 4, 0, 0, value, {}}, IMAGETAG_INFO{1, 4, 0, -1, value, {}},
          IMAGETAG_INFO{1, 4, 0, 1, nullptr, {}}, IMAGETAG_INFO{1, 13, 0, 1, value, {}},
          IMAGETAG_INFO{1, 0, 0, 1, value, {}}})
        EXPECT_EQ(photoTag(record).value, "");
}

TEST(PhotoTag, TypesHaveTheirNamesAndSizes) {
    constexpr std::pair<std::string_view, size_t> kTypes[] = {
        {"", 0},          {"BYTE", 1},  {"ASCII", 1},     {"SHORT", 2},  {"LONG", 4},
        {"RATIONAL", 8},  {"SBYTE", 1}, {"UNDEFINED", 1}, {"SSHORT", 2}, {"SLONG", 4},
        {"SRATIONAL", 8}, {"FLOAT", 4}, {"DOUBLE", 8},    {"", 0},
    };
    for (uint16_t type = 0; type < std::size(kTypes); ++type) {
        EXPECT_EQ(tagTypeName(type), kTypes[type].first);
        EXPECT_EQ(tagUnitSize(type), kTypes[type].second);
    }
}

class PhotoTagsOfAFile : public testing::Test {
protected:
    [[nodiscard]] std::optional<PhotoTags> tagsOf(const char* name, std::string_view bytes) const {
        return readPhotoTags(readPhotoFacts(m_folder.write(name, bytes)));
    }
    [[nodiscard]] std::optional<PhotoTags> tagsOf(const char* name, const Bytes& bytes) const {
        return tagsOf(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }

    static std::vector<std::string_view> namesOf(const PhotoTags& tags) {
        std::vector<std::string_view> names;
        for (const TagDirectory& directory : tags.directories)
            names.push_back(directory.name);
        return names;
    }

    TemporaryFolder m_folder;
};

using Names = std::vector<std::string_view>;

TiffDirectory everyDirectory() {
    TiffDirectory exif;
    exif.bytes(0x9000, 7, {'0', '2', '3', '0'});
    TiffDirectory interoperability;  // five entries are read of it, whatever it says
    interoperability.text(1, "R98").bytes(2, 7, {'0', '1', '0', '0'}).text(0x1000, "JPG");
    interoperability.shorts(0x1001, {8}).shorts(0x1002, {8});
    exif.directory(0xA005, interoperability);
    TiffDirectory gps;
    gps.text(1, "N");
    return TiffDirectory().text(0x010F, "Canon").directory(0x8769, exif).directory(0x8825, gps);
}

TEST_F(PhotoTagsOfAFile, ComeFromEveryDirectoryOfAJpegFile) {
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const Bytes block = tiffBlock({everyDirectory(), TiffDirectory().shorts(0x0103, {6})}, order);
        const auto tags = tagsOf("a.jpg", withExif(jpegOf(testPicture(8, 8)), block));
        ASSERT_TRUE(tags);
        EXPECT_FALSE(tags->incomplete);
        ASSERT_EQ(namesOf(*tags), (Names{"IFD0", "Exif", "GPS", "Interoperability", "IFD1"}));
        EXPECT_EQ(tags->directories[0].tags,
                  (std::vector<PhotoTag>{{0x010F, 2, std::string("Canon\0", 6)}}));
        EXPECT_EQ(tags->directories[1].tags, (std::vector<PhotoTag>{{0x9000, 7, "0230"}}));
        EXPECT_EQ(tags->directories[2].tags, (std::vector<PhotoTag>{{1, 2, std::string("N\0", 2)}}));
        EXPECT_EQ(tags->directories[2].family, TagFamily::Gps);
        EXPECT_EQ(tags->directories[3].tags.at(0), (PhotoTag{1, 2, std::string("R98\0", 4)}));
        EXPECT_EQ(tags->directories[3].family, TagFamily::Interoperability);
        EXPECT_EQ(tags->directories[4].tags, (std::vector<PhotoTag>{{0x0103, 3, std::string("\6\0", 2)}}));
    }
}

TEST_F(PhotoTagsOfAFile, AreNoneWhereThereAreNone) {
    const std::string text = "This is no picture, and no tag is in it, whatever its name says.";
    for (const auto& tags :
         {tagsOf("a.jpg", jpegOf(testPicture(200, 200))), tagsOf("b.jpg", text), tagsOf("c.pdf", "%PDF")}) {
        ASSERT_TRUE(tags);
        EXPECT_EQ(namesOf(*tags), Names{});
        EXPECT_FALSE(tags->incomplete);
    }
}

TEST_F(PhotoTagsOfAFile, AreNotAskedOfWhatCannotBeRead) {
    EXPECT_FALSE(readPhotoTags(readPhotoFacts(m_folder.at("gone.jpg"))));
    EXPECT_FALSE(readPhotoTags(readPhotoFacts(m_folder.path())));
    EXPECT_FALSE(tagsOf("empty.jpg", ""));
    EXPECT_FALSE(tagsOf("album.qal", jpegOf(testPicture(8, 8))));
}

/// A TIFF file with so many bytes between its first directory and the second.
Bytes tiffWithGap(size_t gap) {
    TiffDirectory page = tiffPage(testPicture(4, 4));
    TiffDirectory exif;
    exif.text(0x9003, "2004:05:01 06:07:08");
    page.directory(0x8769, exif).block(0xC000, Bytes(gap));
    return tiffBlock({page, TiffDirectory().text(0x010E, "the second")}, ByteOrder::Little);
}

TEST_F(PhotoTagsOfAFile, BehindTheHeadOfATiffFileAreFoundToo) {
    for (const size_t gap : {size_t{100}, 2 * kHead}) {
        const auto tags = tagsOf("a.tif", tiffWithGap(gap));
        ASSERT_TRUE(tags);
        EXPECT_FALSE(tags->incomplete) << gap;
        EXPECT_EQ(namesOf(*tags), (Names{"IFD0", "Exif", "IFD1"})) << gap;
    }
}

TEST_F(PhotoTagsOfAFile, WhoseValueLiesBehindTheHeadAreFoundToo) {
    TiffDirectory page = tiffPage(testPicture(4, 4));
    page.block(0x0100 - 1, Bytes(2 * kHead)).text(0x010E, "a text far behind");
    const auto tags = tagsOf("a.tif", tiffBlock({page}, ByteOrder::Big));
    ASSERT_TRUE(tags);
    EXPECT_FALSE(tags->incomplete);
    ASSERT_EQ(namesOf(*tags), Names{"IFD0"});
    const auto& list = tags->directories[0].tags;
    EXPECT_TRUE(std::ranges::any_of(
        list, [](const PhotoTag& tag) { return tag.value == std::string("a text far behind\0", 18); }));
}

TEST_F(PhotoTagsOfAFile, ThatIsCutAreAsManyAsCanBeRead) {
    Bytes file = tiffWithGap(100);
    file.resize(file.size() - 30);  // the second directory's text, and a part of itself
    const auto tags = tagsOf("a.tif", file);
    ASSERT_TRUE(tags);
    EXPECT_TRUE(tags->incomplete);
    EXPECT_EQ(namesOf(*tags), Names{"IFD0"});
}

TEST_F(PhotoTagsOfAFile, StopAtAnEntryThatCannotBe) {
    TiffDirectory directory;
    directory.text(0x010F, "Canon").bytes(0x0110, 13, {1, 2, 3, 4}).shorts(0x0112, {6});
    const auto tags =
        tagsOf("a.jpg", withExif(jpegOf(testPicture(8, 8)), tiffBlock({directory}, ByteOrder::Little)));
    ASSERT_TRUE(tags);
    EXPECT_TRUE(tags->incomplete);
    ASSERT_EQ(namesOf(*tags), Names{"IFD0"});
    EXPECT_EQ(tags->directories[0].tags.size(), 1U);
}

TEST_F(PhotoTagsOfAFile, HaveTheirCountsModulo65536) {
    for (const size_t count : {size_t{65536}, size_t{70000}}) {
        TiffDirectory page = tiffPage(testPicture(4, 4));
        page.bytes(0x02BC, 7, Bytes(count, 'x')).text(0x8298, "behind");
        const auto tags = tagsOf("a.tif", tiffBlock({page}, ByteOrder::Little));
        ASSERT_TRUE(tags);
        EXPECT_FALSE(tags->incomplete);
        const auto& list = tags->directories.at(0).tags;
        ASSERT_GE(list.size(), 2U);
        EXPECT_EQ(list[list.size() - 2], (PhotoTag{0x02BC, 7, std::string(count % 65536, 'x')}));
        EXPECT_EQ(list.back().value, std::string("behind\0", 7));
    }
}

TEST_F(PhotoTagsOfAFile, EndAtACountThatIsNegative) {
    TiffDirectory page;
    page.text(0x010F, "Maker").bytes(0x02BC, 7, Bytes(32768, 'x')).text(0x8298, "behind");
    const auto tags =
        tagsOf("a.jpg", withExif(jpegOf(testPicture(8, 8)), tiffBlock({page}, ByteOrder::Little)));
    ASSERT_TRUE(tags);
    EXPECT_TRUE(tags->incomplete);
    EXPECT_EQ(tags->directories.at(0).tags.size(), 1U);
}

TEST_F(PhotoTagsOfAFile, OfADamagedPictureAreReadAllTheSame) {
    Bytes file = withExif(jpegOf(testPicture(8, 8)), tiffBlock({everyDirectory()}, ByteOrder::Little));
    constexpr std::array<uint8_t, 2> kTables = {0xFF, 0xDB};
    file.erase(std::search(file.begin(), file.end(), kTables.begin(), kTables.end()), file.end());
    const auto facts = readPhotoFacts(m_folder.write("a.jpg", file));
    EXPECT_TRUE(facts.error);
    const auto tags = readPhotoTags(facts);
    ASSERT_TRUE(tags);
    EXPECT_EQ(namesOf(*tags), (Names{"IFD0", "Exif", "GPS", "Interoperability"}));
}

}  // namespace
}  // namespace fi::test
