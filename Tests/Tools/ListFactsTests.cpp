// SPDX-License-Identifier: Apache-2.0
// What fileimporter list says of each photo, and of those that cannot be read.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"
#include "Tools/ToolRun.h"

namespace fi::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// The directories of a camera's photo: the dates count only beside a version.
Bytes cameraBlock(uint16_t orientation, const std::string& taken, const std::string& digitized) {
    TiffDirectory exif;
    exif.bytes(0x9000, 7, {'0', '2', '3', '0'});
    if (!taken.empty()) exif.text(0x9003, taken);
    if (!digitized.empty()) exif.text(0x9004, digitized);
    return tiffBlock({TiffDirectory().shorts(0x0112, {orientation}).directory(0x8769, exif)},
                     ByteOrder::Little);
}

class ListFacts : public testing::Test {
protected:
    std::string writeJpeg(const char* name, const Bytes& exifBlock) const {
        return m_card.write(name, withExif(jpegOf(testPicture(64, 48)), exifBlock));
    }
    /// Gives a file the date 2001-02-03 04:05:06.
    static void makeOld(const std::string& file) {
        tm date{};
        date.tm_year = 101;
        date.tm_mon = 1;
        date.tm_mday = 3;
        date.tm_hour = 4;
        date.tm_min = 5;
        date.tm_sec = 6;
        date.tm_isdst = -1;
        const timespec time{mktime(&date), 999'999'999};
        const timespec times[2] = {time, time};
        ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
    }
    static constexpr const char* kOld = "2001-02-03T04:05:06";

    [[nodiscard]] ToolResult list() const { return runTool({"list", "--json", m_card.path()}); }
    [[nodiscard]] Json onlyPhoto() const { return Json::parse(list().lines().at(0)); }

    TemporaryFolder m_card;
};

void expectNoPicture(const Json& photo) {
    for (const char* key : {"orientation", "width", "height", "exif"})
        EXPECT_EQ(photo.at(key), nullptr) << key;
}

TEST_F(ListFacts, AreThoseOfTheHeadersOfAJpegFile) {
    makeOld(writeJpeg("a.jpg", cameraBlock(6, "2004:05:01 06:07:08", "2005:05:01 06:07:08")));
    const Json photo = onlyPhoto();
    EXPECT_EQ(photo.at("date"), "2004-05-01T06:07:08");
    EXPECT_EQ(photo.at("modified"), kOld);
    EXPECT_EQ(photo.at("orientation"), 6);
    EXPECT_EQ(photo.at("width"), 64);
    EXPECT_EQ(photo.at("height"), 48);
    EXPECT_EQ(photo.at("exif"), true);
}

TEST_F(ListFacts, AreThoseOfTheHeadersOfATiffFile) {
    m_card.write("a.tif", tiffOf(testPicture(30, 20), 8));
    const Json photo = onlyPhoto();
    EXPECT_EQ(photo.at("orientation"), 8);
    EXPECT_EQ(photo.at("width"), 30);
    EXPECT_EQ(photo.at("height"), 20);
    EXPECT_EQ(photo.at("exif"), false);
}

struct DateRule {
    const char* what;
    std::string taken;
    std::string digitized;
    std::string date;
};

TEST_F(ListFacts, TheDateIsOfTheShotElseOfDigitizingElseOfTheFile) {
    const DateRule rules[] = {
        {"both", "2004:05:01 06:07:08", "2005:05:01 06:07:08", "2004-05-01T06:07:08"},
        {"digitized only", "", "2005:05:01 06:07:08", "2005-05-01T06:07:08"},
        {"no shot's date", "0000:00:00 00:00:00", "2005:05:01 06:07:08", "2005-05-01T06:07:08"},
        {"blank", "    :  :     :  :  ", "", kOld},
        {"neither", "", "", kOld},
    };
    for (const DateRule& rule : rules) {
        const std::string file = writeJpeg("a.jpg", cameraBlock(1, rule.taken, rule.digitized));
        makeOld(file);
        EXPECT_EQ(onlyPhoto().at("date"), rule.date) << rule.what;
        const Json info = Json::parse(runTool({"info", "--json", file}).lines().at(0));
        EXPECT_EQ(info.at("date"), rule.date) << rule.what;
    }
}

TEST_F(ListFacts, ADateWithoutAnExifVersionDoesNotCount) {
    ExifFacts facts;
    facts.orientation = 6;
    facts.date = "2004:05:01 06:07:08";
    makeOld(m_card.write("a.jpg", withExif(jpegOf(testPicture(64, 48)), facts)));
    const Json photo = onlyPhoto();
    EXPECT_EQ(photo.at("date"), kOld);
    EXPECT_EQ(photo.at("orientation"), 6);
    EXPECT_EQ(photo.at("exif"), true);
}

TEST_F(ListFacts, ADateThatNoCalendarTellsIsNull) {
    const std::string file = m_card.write("a.jpg", jpegOf(testPicture(8, 6)));
    for (const int64_t seconds : {int64_t{-4'000'000'000'000}, int64_t{4'000'000'000'000}}) {
        const timespec time{seconds, 0};
        const timespec times[2] = {time, time};
        struct stat status {};
        if (utimensat(AT_FDCWD, file.c_str(), times, 0) != 0 || stat(file.c_str(), &status) != 0 ||
            status.st_mtime != seconds)
            GTEST_SKIP() << "the file system keeps no such date";
        EXPECT_EQ(onlyPhoto().at("modified"), nullptr) << seconds;
        EXPECT_EQ(onlyPhoto().at("date"), nullptr) << seconds;
    }
}

TEST_F(ListFacts, AKindThatIsNotReadIsListedWithItsDateAndIsNoFailure) {
    m_card.makeFolder("kinds");
    for (const char* name : {"a.pct", "b.PIC", "c.png", "d.bmp", "e.pdf", "f.qal", "g"}) {
        const std::string file = m_card.write("kinds/photo." + std::string(name), "of another kind");
        makeOld(file);
        const ToolResult result = runTool({"list", "--json", file});
        EXPECT_EQ(result.status, 0) << name;
        EXPECT_EQ(result.err, "") << name;
        const Json photo = Json::parse(result.lines().at(0));
        EXPECT_EQ(photo.at("date"), kOld) << name;
        EXPECT_FALSE(photo.contains("error")) << name;
        expectNoPicture(photo);
    }
}

TEST_F(ListFacts, ADamagedPhotoIsNamedAndTheOthersAreTold) {
    const Bytes jpeg = jpegOf(testPicture(64, 48));
    const Bytes tiff = tiffOf(testPicture(64, 48));
    m_card.write("a.jpg", std::span(jpeg).first(40));
    m_card.write("b.tif", std::span(tiff).first(9));
    m_card.write("c.jpg", "This is no picture, whatever its name says.");
    m_card.write("d.jpg", jpeg);
    for (const char* name : {"a.jpg", "b.tif", "c.jpg"})
        makeOld(m_card.at(name));
    const ToolResult result = list();
    EXPECT_EQ(result.status, 1);
    const auto lines = result.lines();
    ASSERT_EQ(lines.size(), 4U);
    std::string complaints;
    for (size_t i = 0; i < 3; ++i) {
        const Json photo = Json::parse(lines[i]);
        EXPECT_EQ(photo.at("error").at("code"), 1100) << lines[i];
        EXPECT_EQ(photo.at("date"), kOld);
        expectNoPicture(photo);
        complaints += "fileimporter: " + photo.at("path").get<std::string>() + ": " +
                      photo.at("error").at("text").get<std::string>() + "\n";
    }
    EXPECT_EQ(result.err, complaints);
    EXPECT_EQ(Json::parse(lines[3]).at("width"), 64);
}

TEST_F(ListFacts, TheTableShowsThemInColumns) {
    writeJpeg("a.jpg", cameraBlock(6, "2004:05:01 06:07:08", ""));
    makeOld(m_card.write("b.pct", "12345"));
    const auto lines = runTool({"list", m_card.path()}).lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(lines[0].ends_with("      64 x 48  6  exif  2004-05-01 06:07:08")) << lines[0];
    EXPECT_EQ(lines[1], "2  b.pct  pict        5 B            -  -  -     2001-02-03 04:05:06");
}

class LongList : public ListFacts {
protected:
    static constexpr size_t kCount = 4000;

    void SetUp() override {
        const fs::path first = writeJpeg("0.jpg", cameraBlock(1, "2004:05:01 06:07:08", ""));
        for (size_t i = 1; i < kCount; ++i)
            fs::create_hard_link(first, m_card.at(std::to_string(i) + ".jpg"));
    }
};

TEST_F(LongList, EndsWhenItIsAskedToStop) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        // It cannot come to its end: nobody reads what it writes.
        ToolRun run({"list", "--json", m_card.path()});
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        kill(run.process(), signal);
        const auto stopped = std::chrono::steady_clock::now();
        const ToolResult result = run.finish();
        EXPECT_EQ(result.signal, signal);
        EXPECT_LT(result.lines().size(), kCount);
        EXPECT_LT(std::chrono::steady_clock::now() - stopped, std::chrono::seconds(2));
    }
}

/// Everything that is written to standard error while it is a terminal.
std::string onTheTerminal(const std::vector<std::string>& arguments) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) return "no terminal";
    const std::string name = ptsname(terminal);
    const int kept = open(name.c_str(), O_RDWR | O_NOCTTY);
    ToolRun run(arguments, {}, name);
    // However fast it is, it has to wait with a full pipe until there is something to tell.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(run.finish().status, 0);
    fcntl(terminal, F_SETFL, O_NONBLOCK);
    std::string text;
    std::array<char, 4096> block{};
    for (ssize_t count = 0; (count = read(terminal, block.data(), block.size())) > 0;)
        text.append(block.data(), static_cast<size_t>(count));
    close(kept);
    close(terminal);
    return text;
}

TEST_F(LongList, TellsATerminalHowFarItHasCome) {
    const std::string text = onTheTerminal({"list", "--json", m_card.path()});
    if (text == "no terminal") GTEST_SKIP() << "no terminal can be made here";
    EXPECT_NE(text.find(" of 4000 photos"), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("\r\x1b[K")) << text;
    EXPECT_EQ(onTheTerminal({"list", "--json", "-q", m_card.path()}), "");
}

}  // namespace
}  // namespace fi::test
