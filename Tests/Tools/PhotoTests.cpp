// SPDX-License-Identifier: Apache-2.0
// fileimporter photo, from its command line to its exit status.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "PlatformKit/ImageProperties.h"
#include "PlatformKit/ImageSource.h"
#include "Support/FullDisk.h"
#include "Support/MakePictures.h"
#include "Support/Privileges.h"
#include "Support/TemporaryFolder.h"
#include "Tools/ToolRun.h"

namespace fi::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr uint16_t kOrientations[] = {1, 2, 3, 4, 5, 6, 7, 8};

/// A written picture: its first page, upright without an orientation of its own.
Ref<const CGImage> pictureAt(const std::string& path) {
    const auto source = ImageSource::open(CFURL::createFromPath(path).get());
    if (!source) return nullptr;
    const auto properties = source->copyProperties(0);
    const auto orientation =
        properties ? properties->copyValue(kCGImagePropertyOrientation->view()) : nullptr;
    EXPECT_FALSE(orientation) << path;
    return source->createImage(0);
}

std::array<int, 3> colorAt(const CGImage& picture, uint32_t x, uint32_t y) {
    const uint32_t bytes = picture.bitsPerPixel() / 8;
    const uint8_t* at = picture.data() + size_t{y} * picture.bytesPerRow() + size_t{x} * bytes;
    return bytes == 1 ? std::array<int, 3>{at[0], at[0], at[0]} : std::array<int, 3>{at[0], at[1], at[2]};
}

/// Within what JPEG may change.
bool isColor(const std::array<int, 3>& seen, const std::array<uint8_t, 3>& color) {
    constexpr int kTolerance = 12;
    return std::equal(seen.begin(), seen.end(), color.begin(),
                      [](int a, int b) { return std::abs(a - b) <= kTolerance; });
}

/// Each corner has the colour that a person should see there.
testing::AssertionResult isUpright(const CGImage* picture) {
    if (picture == nullptr) return testing::AssertionFailure() << "there is no picture";
    const uint32_t left = picture->width() / 8;
    const uint32_t top = picture->height() / 8;
    const uint32_t right = picture->width() - 1 - left;
    const uint32_t bottom = picture->height() - 1 - top;
    if (!isColor(colorAt(*picture, left, top), kCorners.topLeft) ||
        !isColor(colorAt(*picture, right, top), kCorners.topRight) ||
        !isColor(colorAt(*picture, right, bottom), kCorners.bottomRight) ||
        !isColor(colorAt(*picture, left, bottom), kCorners.bottomLeft))
        return testing::AssertionFailure() << "a corner has a wrong colour";
    return testing::AssertionSuccess();
}

bool isJpeg(const std::string& path) {
    return readFile(path).starts_with("\xff\xd8\xff");
}
bool isTiff(const std::string& path) {
    return readFile(path).starts_with("II*") || readFile(path).starts_with("MM");
}

class Photo : public testing::Test {
protected:
    void SetUp() override { m_folder.makeFolder("out"); }

    [[nodiscard]] std::string out(const std::string& name) const { return m_folder.at("out/") + name; }
    [[nodiscard]] std::vector<std::string> written() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder.at("out")))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
    /// As a camera stores it that was held this way; upright it is 240 by 160.
    [[nodiscard]] std::string photo(uint16_t orientation = 1) const {
        const PixelBuffer stored = storedFor(testPicture(240, 160), orientation);
        return m_folder.write("photo.jpg", withExif(jpegOf(stored), {.orientation = orientation}));
    }
    [[nodiscard]] std::string tiffPhoto(uint32_t width, uint32_t height, uint16_t orientation = 1) const {
        return m_folder.write("photo.tif",
                              tiffOf(storedFor(testPicture(width, height), orientation), orientation));
    }
    [[nodiscard]] std::string halfAPhoto() const {
        const Bytes whole = jpegOf(testPicture(320, 240));
        return m_folder.write("half.jpg", std::span(whole).first(whole.size() / 2));
    }

    TemporaryFolder m_folder;
};

TEST_F(Photo, IsMadeWithoutAWord) {
    const ToolResult result = runTool({"photo", photo(), "-o", out("a.jpg")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(written(), std::vector<std::string>{"a.jpg"});
    const auto picture = pictureAt(out("a.jpg"));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width(), 240U);
    EXPECT_EQ(picture->height(), 160U);
}

TEST_F(Photo, IsUprightInEveryOrientation) {
    for (const uint16_t orientation : kOrientations) {
        SCOPED_TRACE(orientation);
        for (const std::string& file : {photo(orientation), tiffPhoto(240, 160, orientation)}) {
            for (const char* name : {"a.jpg", "a.tif"}) {
                EXPECT_EQ(runTool({"photo", file, "-o", out(name)}).status, 0);
                const auto picture = pictureAt(out(name));
                EXPECT_TRUE(isUpright(picture.get())) << file << ' ' << name;
                if (!picture) continue;
                EXPECT_EQ(picture->width(), 240U);
                EXPECT_EQ(picture->height(), 160U);
            }
        }
    }
}

TEST_F(Photo, IsUprightWithinALimitInEveryOrientation) {
    for (const uint16_t orientation : kOrientations) {
        SCOPED_TRACE(orientation);
        for (const std::string& file : {photo(orientation), tiffPhoto(240, 160, orientation)}) {
            EXPECT_EQ(runTool({"photo", file, "-o", out("a.tif"), "--limit", "60"}).status, 0);
            const auto picture = pictureAt(out("a.tif"));
            EXPECT_TRUE(isUpright(picture.get())) << file;
            if (!picture) continue;
            EXPECT_EQ(picture->width(), 90U);
            EXPECT_EQ(picture->height(), 60U);
        }
    }
}

TEST_F(Photo, ATiffFileKeepsEveryPixel) {
    ASSERT_EQ(runTool({"photo", tiffPhoto(41, 23, 6), "-o", out("a.tif")}).status, 0);
    const auto picture = pictureAt(out("a.tif"));
    ASSERT_TRUE(picture);
    const PixelBuffer expected = testPicture(41, 23);
    ASSERT_EQ(picture->width(), 41U);
    ASSERT_EQ(picture->height(), 23U);
    for (uint32_t y = 0; y < 23; ++y) {
        for (uint32_t x = 0; x < 41; ++x) {
            const uint8_t* at = expected.row(y) + size_t{x} * 4;
            ASSERT_EQ(colorAt(*picture, x, y), (std::array<int, 3>{at[0], at[1], at[2]})) << x << ' ' << y;
        }
    }
}

TEST_F(Photo, TheShorterSideIsExactlyTheLimitAndNeverEnlarged) {
    struct Case {
        uint32_t width;
        uint32_t height;
        uint32_t limit;
        uint32_t newWidth;
        uint32_t newHeight;
    };
    for (const Case& c :
         {Case{300, 200, 100, 150, 100}, Case{200, 300, 100, 100, 150}, Case{99, 99, 98, 98, 98},
          Case{641, 479, 478, 640, 478}, Case{641, 479, 2, 3, 2}, Case{5, 7, 1, 1, 1}, Case{5, 7, 2, 2, 3},
          Case{5, 7, 3, 3, 4}, Case{7, 5, 4, 6, 4}, Case{7, 5, 3, 4, 3}, Case{2000, 3, 2, 1333, 2},
          Case{3, 2000, 1, 1, 667}, Case{300, 200, 200, 300, 200}, Case{300, 200, 201, 300, 200},
          Case{300, 200, 65535, 300, 200}, Case{1, 9, 1, 1, 9}}) {
        const std::string limit = std::to_string(c.limit);
        EXPECT_EQ(
            runTool({"photo", tiffPhoto(c.width, c.height), "-o", out("a.tif"), "--limit", limit}).status,
            0);
        const auto picture = pictureAt(out("a.tif"));
        ASSERT_TRUE(picture);
        EXPECT_EQ(std::pair(picture->width(), picture->height()), std::pair(c.newWidth, c.newHeight))
            << c.width << " x " << c.height << " within " << c.limit;
    }
}

TEST_F(Photo, ItsKindIsThatOfTheExtension) {
    for (const char* name : {"a.jpg", "a.jpeg", "a.JPG", "a.tif.Jpeg"}) {
        EXPECT_EQ(runTool({"photo", photo(), "-o", out(name)}).status, 0) << name;
        EXPECT_TRUE(isJpeg(out(name))) << name;
    }
    for (const char* name : {"a.tif", "a.tiff", "a.TIF", "a.jpg.Tiff"}) {
        EXPECT_EQ(runTool({"photo", photo(), "-o", out(name)}).status, 0) << name;
        EXPECT_TRUE(isTiff(out(name))) << name;
    }
}

TEST_F(Photo, AnEarlierFileIsReplaced) {
    m_folder.write("out/a.jpg", "an earlier file");
    EXPECT_EQ(runTool({"photo", photo(), "-o", out("a.jpg")}).status, 0);
    EXPECT_TRUE(isJpeg(out("a.jpg")));
    EXPECT_EQ(written(), std::vector<std::string>{"a.jpg"});
}

TEST_F(Photo, JsonTellsWhereItIsAndHowLarge) {
    const std::string file = photo(6);
    const ToolResult result = runTool({"photo", file, "-o", out("a.jpg"), "--limit", "80", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const Json expected = {{"path", file}, {"output", out("a.jpg")}, {"width", 120}, {"height", 80}};
    EXPECT_EQ(result.out, expected.dump() + "\n");
}

TEST_F(Photo, JsonGivesNamesThatAreNotUtf8Exactly) {
    const std::string file = m_folder.write("\xe9.jpg", jpegOf(testPicture(32, 24)));
    const ToolResult result = runTool({"photo", file, "-o", out("\xe8.jpg"), "--json"});
    EXPECT_EQ(result.status, 0);
    const Json answer = Json::parse(result.lines().at(0));
    EXPECT_EQ(answer.at("path"), m_folder.at("\xef\xbf\xbd.jpg"));
    EXPECT_EQ(answer.at("output"), out("\xef\xbf\xbd.jpg"));
    EXPECT_TRUE(answer.contains("pathBytes"));
    EXPECT_TRUE(answer.contains("outputBytes"));
    EXPECT_EQ(written(), std::vector<std::string>{"\xe8.jpg"});
}

TEST_F(Photo, WhatIsNoPictureIsNamedAndNothingIsWritten) {
    struct Case {
        std::string file;
        int code;
        int status;
    };
    const std::string pipe = m_folder.at("pipe.jpg");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    m_folder.write("out/a.jpg", "an earlier file");
    for (const Case& c :
         {Case{m_folder.write("text.jpg", "This is no picture, whatever its name says."), 1100, 1},
          Case{m_folder.write("empty.jpg", ""), 1100, 1}, Case{pipe, 1100, 1},
          Case{m_folder.write("cut.jpg", "\xff\xd8\xff\xe0"), 1100, 1}, Case{m_folder.path(), 1100, 1},
          Case{m_folder.at("gone.jpg"), -43, 3}}) {
        const ToolResult result = runTool({"photo", c.file, "-o", out("a.jpg"), "--limit", "9", "--json"});
        EXPECT_EQ(result.status, c.status) << c.file;
        const Json answer = Json::parse(result.lines().at(0));
        EXPECT_EQ(answer.at("path"), c.file);
        EXPECT_EQ(answer.at("width"), nullptr) << c.file;
        EXPECT_EQ(answer.at("height"), nullptr) << c.file;
        EXPECT_EQ(answer.at("error").at("code"), c.code) << c.file;
        EXPECT_EQ(result.err, "fileimporter: " + c.file + ": " +
                                  answer.at("error").at("text").get<std::string>() + "\n");
        EXPECT_EQ(written(), std::vector<std::string>{"a.jpg"}) << c.file;
        EXPECT_EQ(readFile(out("a.jpg")), "an earlier file") << c.file;
    }
}

TEST_F(Photo, OfACutFileWhatIsThereIsWrittenAndTheRestIsTold) {
    const std::string file = halfAPhoto();
    const ToolResult result = runTool({"photo", file, "-o", out("a.tif"), "--json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "fileimporter: " + file + ": a part of the picture is missing\n");
    const Json answer = Json::parse(result.lines().at(0));
    EXPECT_EQ(answer.at("width"), 320);
    EXPECT_EQ(answer.at("height"), 240);
    EXPECT_EQ(answer.at("error").at("code"), 1100);
    const auto picture = pictureAt(out("a.tif"));
    ASSERT_TRUE(picture);
    EXPECT_TRUE(isColor(colorAt(*picture, 40, 30), kCorners.topLeft));
}

TEST_F(Photo, APhotoIsNeverWrittenOverItself) {
    const std::string file = photo(6);
    const std::string before = readFile(file);
    fs::create_hard_link(file, out("hard.jpg"));
    fs::create_symlink(file, out("soft.jpg"));
    const std::string roundabout = m_folder.at("out/../photo.jpg");
    for (const std::string& same : {file, out("hard.jpg"), out("soft.jpg"), roundabout}) {
        const ToolResult result = runTool({"photo", file, "-o", same, "--json"});
        EXPECT_EQ(result.status, 2) << same;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err,
                  "fileimporter: " + same + ": that is one of the photos, which would be overwritten\n");
        EXPECT_TRUE(readFile(file) == before) << same;
    }
    EXPECT_EQ(runTool({"photo", out("soft.jpg"), "-o", file}).status, 2);
    EXPECT_TRUE(readFile(file) == before);
}

TEST_F(Photo, WrongUsageIsToldBeforeAnythingIsDone) {
    const std::string file = photo();
    const std::string folder = m_folder.makeFolder("folder.jpg");
    const std::vector<std::vector<std::string>> wrong = {
        {"photo"},
        {"photo", file},
        {"photo", "-o", out("a.jpg")},
        {"photo", file, file, "-o", out("a.jpg")},
        {"photo", file, "-o", out("a.png")},
        {"photo", file, "-o", out("a")},
        {"photo", file, "-o", out(".jpg")},
        {"photo", file, "-o", out("jpg")},
        {"photo", file, "-o", folder},
        {"photo", file, "-o", out("a.jpg"), "--limit", "0"},
        {"photo", file, "-o", out("a.jpg"), "--limit", "65536"},
        {"photo", file, "-o", out("a.jpg"), "--limit", "-1"},
        {"photo", file, "-o", out("a.jpg"), "--limit", "9.5"},
        {"photo", file, "-o", out("a.jpg"), "--limit"},
    };
    for (const auto& arguments : wrong) {
        const ToolResult result = runTool(arguments);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(result.out, "") << testing::PrintToString(arguments);
        EXPECT_NE(result.err, "") << testing::PrintToString(arguments);
    }
    EXPECT_EQ(written(), std::vector<std::string>{});
    EXPECT_NE(runTool(wrong[4]).err.find(".jpg, .jpeg, .tif or .tiff"), std::string::npos);
}

TEST_F(Photo, APlaceWhereNothingCanBeWrittenIsTold) {
    const std::string file = photo();
    const std::vector<std::pair<std::string, std::string>> places = {
        {out(std::string(300, 'n') + ".jpg"), "File name too long"},
        {m_folder.at("gone/a.jpg"), "no file can be written into that folder: No such file or directory"},
        {m_folder.write("file", "x") + "/a.jpg",
         "no file can be written into that folder: Not a directory"},
    };
    for (const auto& [place, reason] : places) {
        const ToolResult result = runTool({"photo", file, "-o", place, "--json"});
        EXPECT_EQ(result.status, 1) << place;
        EXPECT_EQ(result.err, "fileimporter: " + place + ": " + reason + "\n");
        const Json answer = Json::parse(result.lines().at(0));
        EXPECT_EQ(answer.at("width"), nullptr);
        EXPECT_EQ(answer.at("error"), (Json{{"code", -1}, {"text", reason}}));
    }
    EXPECT_EQ(written(), std::vector<std::string>{});
}

TEST_F(Photo, AFolderThatMayNotBeWrittenIsTold) {
    const std::string file = photo();
    ASSERT_EQ(chmod(file.c_str(), 0644), 0);
    ASSERT_EQ(chmod(m_folder.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(m_folder.at("out").c_str(), 0555), 0);
    const OrdinaryUser user;
    if (eaccess(FILEIMPORTER_TOOL, X_OK) != 0)
        GTEST_SKIP() << "an ordinary user may not run the built tool";
    const ToolResult result = runTool({"photo", file, "-o", out("a.jpg")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "fileimporter: " + out("a.jpg") +
                              ": no file can be written into that folder: Permission denied\n");
    EXPECT_EQ(written(), std::vector<std::string>{});
}

TEST_F(Photo, APhotoThatMayNotBeReadIsTold) {
    const std::string file = photo();
    ASSERT_EQ(chmod(file.c_str(), 0), 0);
    ASSERT_EQ(chmod(m_folder.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(m_folder.at("out").c_str(), 0777), 0);
    const OrdinaryUser user;
    if (eaccess(FILEIMPORTER_TOOL, X_OK) != 0)
        GTEST_SKIP() << "an ordinary user may not run the built tool";
    const ToolResult result = runTool({"photo", file, "-o", out("a.jpg")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "fileimporter: " + file + ": it cannot be opened: Permission denied\n");
    EXPECT_EQ(written(), std::vector<std::string>{});
}

TEST_F(Photo, OnAFullDiskNothingIsLeft) {
    const std::string file = photo();
    for (const char* name : {"a.jpg", "a.tif"}) {
        m_folder.write(std::string("out/") + name, "an earlier file");
        const FullDisk disk(1000);
        const ToolResult result = runTool({"photo", file, "-o", out(name), "--json"});
        EXPECT_EQ(result.status, 1) << name;
        EXPECT_EQ(result.err,
                  "fileimporter: " + out(name) + ": the file cannot be written: File too large\n");
        const Json answer = Json::parse(result.lines().at(0));
        EXPECT_EQ(answer.at("width"), nullptr);
        EXPECT_EQ(answer.at("error").at("code"), -1);
        EXPECT_EQ(readFile(out(name)), "an earlier file");
    }
    EXPECT_EQ(written(), (std::vector<std::string>{"a.jpg", "a.tif"}));
}

TEST_F(Photo, AStopLeavesNoFile) {
    // So large that the signal comes while it is read.
    const std::string file = m_folder.write("large.jpg", jpegOf(testPicture(6000, 6000)));
    for (const int signal : {SIGINT, SIGTERM}) {
        ToolRun run({"photo", file, "-o", out("a.tif"), "--json"});
        usleep(60000);
        kill(run.process(), signal);
        const ToolResult result = run.finish();
        EXPECT_EQ(result.signal, signal);
        EXPECT_EQ(result.out + result.err, "");
        EXPECT_EQ(written(), std::vector<std::string>{});
    }
}

TEST_F(Photo, AStopWhileItIsWrittenLeavesNoPartOfIt) {
    const std::string file = m_folder.write("large.jpg", jpegOf(testPicture(6000, 6000)));
    ToolRun run({"photo", file, "-o", out("a.jpg")});
    for (int i = 0; i < 10000 && written().empty(); ++i)
        usleep(1000);
    EXPECT_NE(written(), std::vector<std::string>{"a.jpg"}) << "it was there before the signal";
    kill(run.process(), SIGTERM);
    EXPECT_EQ(run.finish().signal, SIGTERM);
    EXPECT_EQ(written(), std::vector<std::string>{"a.jpg"});
    const auto picture = pictureAt(out("a.jpg"));
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->isDamaged());
}

}  // namespace
}  // namespace fi::test
