// SPDX-License-Identifier: Apache-2.0
// The made-up card: made by the tool, and then listed, told and shown by it.
#include "SampleCard.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>

#include "Support/FullDisk.h"
#include "Support/TemporaryFolder.h"
#include "Tools/SheetPictures.h"
#include "Tools/ToolRun.h"

namespace fi::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

std::vector<SampleFile> listedFiles() {
    std::vector<SampleFile> files = sampleCard();
    std::erase_if(files, [](const SampleFile& file) { return !file.isListed; });
    return files;
}

/// What scaling and compression may change.
constexpr double kSame = 3;

bool superuserReadsIt(const SampleFile& file) {
    return file.kind == SampleKind::Unreadable && geteuid() == 0;
}

bool isShownInFull(const SampleFile& file) {
    return isWholePicture(file.kind) || superuserReadsIt(file);
}

TEST(SampleCardPlan, HasHundredsOfPhotosInAllOrientationsAndBothKinds) {
    const auto files = listedFiles();
    EXPECT_EQ(files.size(), 312U);
    std::map<std::pair<SampleKind, uint16_t>, int> counts;
    for (const SampleFile& file : files)
        ++counts[{file.kind, file.picture.orientation}];
    for (uint16_t orientation = 1; orientation <= 8; ++orientation) {
        EXPECT_GT((counts[{SampleKind::Jpeg, orientation}]), 20) << orientation;
        EXPECT_GT((counts[{SampleKind::Tiff, orientation}]), 0) << orientation;
    }
}

TEST(SampleCardPlan, NumbersItsFramesInTheOrderOfASearch) {
    uint32_t frame = 0;
    for (const SampleFile& file : listedFiles())
        EXPECT_EQ(file.picture.frame, ++frame);
}

TEST(SampleCardPlan, HasEveryPathOnce) {
    auto files = sampleCard();
    const size_t count = files.size();
    const auto byPath = [](const SampleFile& a, const SampleFile& b) { return a.path < b.path; };
    std::sort(files.begin(), files.end(), byPath);
    const auto samePath = [](const SampleFile& a, const SampleFile& b) { return a.path == b.path; };
    files.erase(std::unique(files.begin(), files.end(), samePath), files.end());
    EXPECT_EQ(files.size(), count);
}

/// The card is made once for all tests of one run.
class SampleCardTool : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_folder = std::make_unique<TemporaryFolder>();
        s_made = runTool({"sample-card", card()});
    }
    static void TearDownTestSuite() { s_folder.reset(); }
    static std::string card() { return s_folder->at("card"); }

    static inline std::unique_ptr<TemporaryFolder> s_folder;
    static inline ToolResult s_made;
};

TEST_F(SampleCardTool, IsMadeAndTellsWhatIsOnIt) {
    EXPECT_EQ(s_made.status, 0);
    EXPECT_EQ(s_made.err, "");
    EXPECT_EQ(s_made.out, card() + ": 312 photos to be found, 4 of them damaged or unreadable\n");
    for (const SampleFile& file : sampleCard())
        EXPECT_TRUE(fs::exists(fs::symlink_status(fs::path(card()) / file.path))) << file.path;
}

TEST_F(SampleCardTool, IsTheSameEachTime) {
    ASSERT_EQ(runTool({"sample-card", s_folder->at("again")}).status, 0);
    for (const SampleFile& file : sampleCard()) {
        const fs::path first = fs::path(card()) / file.path;
        const fs::path second = fs::path(s_folder->at("again")) / file.path;
        if (!fs::is_regular_file(first)) continue;
        EXPECT_EQ(fs::last_write_time(first), fs::last_write_time(second)) << file.path;
        if (access(first.c_str(), R_OK) != 0) continue;
        EXPECT_TRUE(readFile(first) == readFile(second)) << file.path;
    }
}

TEST_F(SampleCardTool, IsListedExactlyAsItWasPlanned) {
    const ToolResult result = runTool({"list", "--json", card()});
    const auto expected = listedFiles();
    const auto lines = result.lines();
    ASSERT_EQ(lines.size(), expected.size());
    for (size_t i = 0; i < lines.size(); ++i) {
        const Json photo = Json::parse(lines[i]);
        const SampleFile& file = expected[i];
        EXPECT_EQ(photo.at("index"), i + 1);
        EXPECT_EQ(photo.at("path"), card() + "/" + file.path);
        EXPECT_EQ(photo.at("type"), file.path.ends_with(".TIF") ? "tiff" : "jpeg");
        const bool fails = file.kind == SampleKind::Empty || file.kind == SampleKind::NoPicture ||
                           (file.kind == SampleKind::Unreadable && !superuserReadsIt(file));
        EXPECT_EQ(photo.contains("error"), fails) << file.path;
    }
    EXPECT_EQ(result.status, 1);
}

TEST_F(SampleCardTool, EveryPhotoTellsWhenAndHowItWasTaken) {
    const auto expected = listedFiles();
    std::vector<std::string> arguments = {"info", "--json"};
    for (const SampleFile& file : expected)
        arguments.push_back(card() + "/" + file.path);
    const auto lines = runTool(arguments).lines();
    ASSERT_EQ(lines.size(), expected.size());
    for (size_t i = 0; i < lines.size(); ++i) {
        const Json photo = Json::parse(lines[i]);
        const SampleFile& file = expected[i];
        const bool hasHeader = isShownInFull(file) || file.kind == SampleKind::CutJpeg;
        EXPECT_EQ(photo.contains("error"), !hasHeader) << file.path;
        if (!hasHeader) continue;
        EXPECT_EQ(photo.at("orientation"), file.picture.orientation) << file.path;
        EXPECT_EQ(photo.at("width"), kTestPictureWidth) << file.path;
        EXPECT_EQ(photo.at("height"), kTestPictureHeight) << file.path;
        EXPECT_EQ(photo.at("date"), photo.at("modified")) << file.path;
        EXPECT_EQ(photo.at("date").get<std::string>().substr(0, 11), "2004-05-01T") << file.path;
        EXPECT_EQ(photo.at("exif"), true) << file.path;
    }
}

TEST_F(SampleCardTool, ItsSheetShowsEveryPhotoUprightAndInOrder) {
    const std::string out = s_folder->at("sheet.jpg");
    const ToolResult result = runTool({"sheet", card(), "-o", out});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    const auto expected = listedFiles();
    const auto layout = SheetLayout::forPhotos(expected.size(), 0);
    const SheetPictures sheet(out, *layout);
    ASSERT_NE(sheet.page(), nullptr);
    for (size_t i = 0; i < expected.size(); ++i) {
        const SampleFile& file = expected[i];
        if (isShownInFull(file)) {
            EXPECT_LT(sheet.differenceFrom(i, file.picture), kSame) << file.path;
        }
        const bool isNamed = result.err.find("/" + file.path + ": ") != std::string::npos;
        EXPECT_EQ(isNamed, !isShownInFull(file)) << file.path;
        EXPECT_GT(sheet.inkInCell(i), 0.3) << file.path;
    }
    // The measure would see a mirrored or turned picture, and one that stands a place too early.
    for (const uint16_t wrong : {uint16_t{2}, uint16_t{3}, uint16_t{4}}) {
        EXPECT_GT(sheet.differenceFrom(120, expected[120].picture, wrong), kSame) << wrong;
    }
    EXPECT_GT(sheet.differenceFrom(120, expected[121].picture), kSame);
}

TEST_F(SampleCardTool, ASheetAsTiffShowsTheSame) {
    const std::string out = s_folder->at("sheet.TIFF");
    EXPECT_EQ(runTool({"sheet", card(), "--columns", "12", "-q", "-o", out}).status, 1);
    const auto expected = listedFiles();
    const SheetPictures sheet(out, *SheetLayout::forPhotos(expected.size(), 12));
    ASSERT_NE(sheet.page(), nullptr);
    for (size_t i = 0; i < expected.size(); i += 7)
        if (isShownInFull(expected[i])) {
            EXPECT_LT(sheet.differenceFrom(i, expected[i].picture), kSame) << i;
        }
}

TEST_F(SampleCardTool, IsNotMadeWhereSomethingIs) {
    const std::string other = s_folder->write("full/file", "x");
    const ToolResult result = runTool({"sample-card", s_folder->at("full")});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "fileimporter: " + s_folder->at("full") + ": the folder is not empty\n");
    EXPECT_EQ(runTool({"sample-card", other}).status, 2);
    EXPECT_EQ(std::distance(fs::directory_iterator(s_folder->at("full")), fs::directory_iterator()), 1);
}

TEST(SampleCardOnAFullDisk, LeavesNothingThatItHasMade) {
    const TemporaryFolder folder;
    const std::string there = folder.makeFolder("there");
    for (const std::string& card : {there + "/new/card", there + "/slash/", there}) {
        const FullDisk disk(10000);
        const ToolResult result = runTool({"sample-card", card});
        EXPECT_EQ(result.status, 1) << card;
        EXPECT_NE(result.err, "") << card;
        EXPECT_TRUE(fs::is_empty(there)) << card;
    }
}

TEST(TestPictures, AreTheSamePictureInEveryOrientation) {
    for (const uint16_t orientation : {uint16_t{2}, uint16_t{3}, uint16_t{4}}) {
        const auto plain = drawTestPicture({7, 10, 1});
        const auto turned = drawTestPicture({7, 10, orientation});
        const bool fromRight = orientation != 4;
        const bool fromBottom = orientation != 2;
        uint32_t different = 0;
        for (uint32_t y = 0; y < kTestPictureHeight; ++y) {
            for (uint32_t x = 0; x < kTestPictureWidth; ++x) {
                const uint32_t storedX = fromRight ? kTestPictureWidth - 1 - x : x;
                const uint32_t storedY = fromBottom ? kTestPictureHeight - 1 - y : y;
                const uint8_t* a = plain->data() + y * plain->bytesPerRow() + size_t{x} * 4;
                const uint8_t* b = turned->data() + storedY * turned->bytesPerRow() + size_t{storedX} * 4;
                if (!std::equal(a, a + 3, b)) ++different;
            }
        }
        EXPECT_EQ(different, 0U) << orientation;
    }
}

}  // namespace
}  // namespace fi::test
