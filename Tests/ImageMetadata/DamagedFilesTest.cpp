// SPDX-License-Identifier: Apache-2.0
// Every reader of tags and Exif facts over the damaged files of the collection and over photos that are cut
// short: each ends, with a code that it may give, and changes no byte.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>

#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/ExifFacts.h"
#include "ImageMetadata/ExifSegment.h"
#include "ImageMetadata/TagTypes.h"
#include "Support/Corpus.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {
namespace {

constexpr const char* kMissing = "the collection of photos is not beside the checkout";
constexpr uint32_t kHeadLimit = 65567;
constexpr int kMostRounds = 8;

/// What a parse of tags may end with: its result, and the codes that come with it.
const std::set<std::pair<int, uint32_t>> kParseOutcomes = {
    {1, kTagNoError},  {1, kTagMoreNeeded}, {0, kTagBadData},
    {0, kTagNoMemory}, {0, kTagNotAnImage}, {0, kTagNotRecognised},
};

struct Parse {
    uint8_t result = 0;
    uint32_t error = 0;
    uint32_t nextOffset = 0;
    uint32_t nextSize = 0;

    [[nodiscard]] bool wantsMore() const { return result == 1 && error == kTagMoreNeeded; }
};

void expectOutcome(const Parse& parse, const char* what) {
    EXPECT_TRUE(kParseOutcomes.contains({parse.result, parse.error}))
        << what << ": result " << int{parse.result} << ", error " << parse.error;
    if (parse.wantsMore()) {
        EXPECT_EQ(parse.nextSize, 20480u) << what;
    }
}

/// Reads every byte of every value, so that a sanitizer sees one that is not there.
void expectSoundRecords(CIMAGETAG& tags) {
    for (uint16_t slot = 0; slot < 8; ++slot) {
        uint32_t size = 0;
        uint32_t error = 0;
        IMAGETAG_ARRAY* array = tags.GetArray(slot, &size, &error);
        EXPECT_EQ(error, array == nullptr ? kTagMoreNeeded : kTagNoError);
        for (uint16_t i = 0; array != nullptr && i < array->count; ++i) {
            const IMAGETAG_INFO& record = array->records[i];
            const uint32_t unit = unitSizeOfType(record.type);
            EXPECT_GT(unit, 0u);
            EXPECT_GE(record.count, 0);
            const std::string value(record.value, static_cast<size_t>(record.count) * unit);
            EXPECT_EQ(value.size() % unit, 0u);
        }
        tags.ReleaseArray(array);
    }
}

Parse parseBytes(CIMAGETAG& tags, const std::string& bytes) {
    Parse parse;
    int16_t format = 0;
    parse.result = tags.CreateField(nullptr, bytes.data(), static_cast<uint32_t>(bytes.size()), &format,
                                    &parse.nextOffset, &parse.nextSize, &parse.error);
    return parse;
}

/// The file's first `length` bytes, then what the parse asks for, as long as it asks for something new.
void parseInPieces(const std::string& file, size_t length) {
    CIMAGETAG tags;
    const std::string head = file.substr(0, length);
    const std::string before = head;
    Parse parse = parseBytes(tags, head);
    EXPECT_EQ(head, before);
    expectOutcome(parse, "pieces");
    std::set<uint32_t> asked;
    for (int round = 0; parse.wantsMore() && parse.nextOffset < file.size(); ++round) {
        ASSERT_LT(round, kMostRounds);
        if (!asked.insert(parse.nextOffset).second) break;
        const std::string piece = file.substr(parse.nextOffset, parse.nextSize);
        Parse next;
        next.result = tags.PutExtraField(piece.data(), static_cast<uint32_t>(piece.size()),
                                         parse.nextOffset, &next.nextOffset, &next.nextSize, &next.error);
        expectOutcome(next, "next piece");
        parse = next;
    }
    expectSoundRecords(tags);
}

/// The file's first `length` bytes, the rest fetched through a reader of the file.
void parseWithReader(const std::string& file, const std::string& path, size_t length) {
    CMEMCARDFILE reader;
    uint32_t error = 0;
    ASSERT_EQ(reader.OpenFile(CFURL::createFromPath(path).get(), &error, nullptr), 1) << error;
    CIMAGETAG tags;
    tags.RentMemCard(&reader);
    expectOutcome(parseBytes(tags, file.substr(0, length)), "with a reader");
    expectSoundRecords(tags);
    reader.CloseFile();
}

void parseByURL(const std::string& path) {
    CIMAGETAG tags;
    Parse parse;
    int16_t format = 0;
    parse.result = tags.CreateField(CFURL::createFromPath(path).get(), nullptr, 0, &format,
                                    &parse.nextOffset, &parse.nextSize, &parse.error);
    expectOutcome(parse, "by URL");
    expectSoundRecords(tags);
}

void searchHead(const std::string& head) {
    CIMAGETAG tags;
    uint32_t error = 0;
    const uint8_t hasExif =
        tags.SearchExifMagicInAPP1(head.data(), static_cast<uint32_t>(head.size()), &error);
    EXPECT_TRUE(hasExif == 1
                    ? error == kTagNoError
                    : (std::set{kTagNotAnImage, kTagNotRecognised, kTagMoreNeeded}.contains(error)))
        << int{hasExif} << " " << error;
    std::string changed = head;
    uint32_t nextOffset = 0;
    uint32_t nextSize = 0;
    (void)tags.SetJfifInfo(changed.data(), static_cast<uint32_t>(changed.size()), &nextOffset, &nextSize,
                           &error);
    EXPECT_TRUE(error == kTagNoError || error == kTagMoreNeeded) << error;
    expectSoundRecords(tags);
}

void readFacts(const std::string& path) {
    ExifInformation info{};
    EXPECT_EQ(readExifTag(CFString::create(path).get(), info), kNoErr);
    EXPECT_GT(info.modificationTime, 0);
    EXPECT_EQ(info.maker[sizeof info.maker - 1], 0);
}

void readSegment(const std::string& path, const std::string& file) {
    const ExifSegment segment = readExifSegment(CFURL::createFromPath(path).get());
    EXPECT_TRUE(
        (std::set{kExifSegmentRead, kExifSegmentFailed, kExifSegmentNoPhoto}.contains(segment.code)));
    EXPECT_EQ(segment.block != nullptr, segment.size > 0);
    EXPECT_LE(segment.size, 65535u + 2);
    const std::span bytes(reinterpret_cast<const uint8_t*>(file.data()), file.size());
    EXPECT_LE(exifSegmentOfJpeg(ByteView(bytes, ByteOrder::Big)).size(), 65535u + 2);
    EXPECT_LE(exifSegmentOfTiff(ByteView(bytes, ByteOrder::Big)).size(), 65535u + 2);
}

/// Runs every reader over a file of these bytes, which is made for it.
void runEveryReader(const std::string& name, const std::string& file) {
    SCOPED_TRACE(name);
    const TemporaryFolder folder;
    const std::string path = folder.write(name, file);
    struct stat before {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);

    const std::string head = file.substr(0, kHeadLimit);
    for (const size_t length : {head.size(), size_t{600}, size_t{14}}) {
        parseInPieces(file, length);
        parseWithReader(file, path, length);
    }
    parseByURL(path);
    searchHead(head);
    readFacts(path);
    readSegment(path, file);

    struct stat after {};
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(before.st_mtim.tv_sec, after.st_mtim.tv_sec);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
    EXPECT_TRUE(readFile(path) == file) << "bytes were changed";
}

std::string nameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

class DamagedFiles : public testing::TestWithParam<const char*> {};

TEST_P(DamagedFiles, PassEveryReader) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    const auto files = corpusFiles(GetParam());
    ASSERT_FALSE(files.empty()) << GetParam();
    for (const std::string& path : files)
        runEveryReader(nameOf(path), readFile(path));
}

INSTANTIATE_TEST_SUITE_P(Collection, DamagedFiles,
                         testing::Values("bmp-bad", "fuzz-dictionaries", "jpeg-corrupt", "not-an-image",
                                         "pdf-bad", "tiff-corrupt"),
                         [](const auto& folder) {
                             std::string name = folder.param;
                             std::erase(name, '-');
                             return name;
                         });

class CutPhotos : public testing::TestWithParam<const char*> {};

/// Sound photos whose copying stopped in the middle of their heads.
TEST_P(CutPhotos, PassEveryReader) {
    if (!corpusFolder()) GTEST_SKIP() << kMissing;
    const auto files = corpusFiles(GetParam());
    ASSERT_FALSE(files.empty()) << GetParam();
    for (size_t i = 0; i < files.size(); i += 4) {
        const std::string file = readFile(files[i]);
        for (const size_t length : {size_t{11}, size_t{31}, 97 + i * 13, 701 + i * 29, 4093 + i * 101})
            runEveryReader(nameOf(files[i]), file.substr(0, length));
    }
}

INSTANTIATE_TEST_SUITE_P(Collection, CutPhotos,
                         testing::Values("jpeg-camera", "jpeg-metadata", "tiff", "tiff-orientation"),
                         [](const auto& folder) {
                             std::string name = folder.param;
                             std::erase(name, '-');
                             return name;
                         });

}  // namespace
}  // namespace fi::test
