// SPDX-License-Identifier: Apache-2.0
// fileimporter sheet, from its command line to its exit status.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "Support/MakePictures.h"
#include "Support/Privileges.h"
#include "Support/TemporaryFolder.h"
#include "Tools/SheetPictures.h"
#include "Tools/ToolRun.h"

namespace fi::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

class Sheet : public testing::Test {
protected:
    void SetUp() override { m_out.makeFolder("out"); }

    std::string writePhoto(const std::string& name) const {
        return m_card.write(name, jpegOf(testPicture(320, 240)));
    }
    [[nodiscard]] std::string out(const char* name) const { return m_out.at("out/") + name; }
    [[nodiscard]] std::vector<std::string> written() const { return namesIn(m_out.at("out")); }

    TemporaryFolder m_card;
    TemporaryFolder m_out;
};

TEST_F(Sheet, IsMadeWithoutAWord) {
    writePhoto("DCIM/100ABCDE/ABCD0001.JPG");
    writePhoto("DCIM/100ABCDE/ABCD0002.JPG");
    const ToolResult result = runTool({"sheet", m_card.path(), "-o", out("sheet.jpg")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(written(), std::vector<std::string>{"sheet.jpg"});
    const SheetPictures sheet(out("sheet.jpg"), *SheetLayout::forPhotos(2, 0));
    EXPECT_NEAR(sheet.inkInCell(0), 0.75, 0.02);
    EXPECT_NEAR(sheet.inkInCell(1), 0.75, 0.02);
}

TEST_F(Sheet, AnOldOneIsReplaced) {
    writePhoto("a.jpg");
    m_out.write("out/sheet.jpg", "an old sheet");
    EXPECT_EQ(runTool({"sheet", m_card.path(), "-o", out("sheet.jpg")}).status, 0);
    EXPECT_EQ(written(), std::vector<std::string>{"sheet.jpg"});
    EXPECT_NE(readFile(out("sheet.jpg")), "an old sheet");
}

/// Gives a file the local date 05-01 06:07 of a year.
void setYear(const std::string& file, int year) {
    tm date{};
    date.tm_year = year - 1900;
    date.tm_mon = 4;
    date.tm_mday = 1;
    date.tm_hour = 6;
    date.tm_min = 7;
    date.tm_isdst = -1;
    const timespec time{mktime(&date), 0};
    const timespec times[2] = {time, time};
    ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
}

TEST_F(Sheet, ACaptionTellsTheDateThatTheListTells) {
    TiffDirectory exif;
    exif.bytes(0x9000, 7, {'0', '2', '3', '0'}).text(0x9003, "2004:05:01 06:07:08");
    const Bytes plain = jpegOf(testPicture(320, 240));
    const Bytes block = tiffBlock({TiffDirectory().directory(0x8769, exif)}, ByteOrder::Little);
    const auto sheetOf = [&](const Bytes& photo, int year) {
        setYear(m_card.write("a.jpg", photo), year);
        EXPECT_EQ(runTool({"sheet", m_card.path(), "-o", out("sheet.tif")}).status, 0);
        return readFile(out("sheet.tif"));
    };
    const std::string taken = sheetOf(withExif(plain, block), 2005);
    EXPECT_TRUE(taken == sheetOf(plain, 2004));
    EXPECT_FALSE(taken == sheetOf(plain, 2005));
}

TEST_F(Sheet, SmallPhotosAreNotEnlarged) {
    m_card.write("a.jpg", jpegOf(testPicture(32, 32)));
    ASSERT_EQ(runTool({"sheet", m_card.path(), "-o", out("sheet.tif")}).status, 0);
    const auto layout = SheetLayout::forPhotos(1, 0);
    const double framed = 34.0 * 34.0 / (160.0 * 160.0);
    EXPECT_NEAR(SheetPictures(out("sheet.tif"), *layout).inkInCell(0), framed, 0.001);
}

TEST_F(Sheet, PhotosThatFailGetATileAndAreNamed) {
    writePhoto("a.jpg");
    m_card.write("b.jpg", "This is no picture, whatever its name says.");
    m_card.write("c.jpg", "");
    ASSERT_EQ(mkfifo(m_card.at("d.jpg").c_str(), 0600), 0);
    const Bytes whole = jpegOf(testPicture(320, 240));
    m_card.write("e.jpg", std::span(whole).first(whole.size() / 2));
    const ToolResult result = runTool({"sheet", m_card.path(), "-o", out("sheet.jpg"), "--columns", "5"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 4);
    const SheetPictures sheet(out("sheet.jpg"), *SheetLayout::forPhotos(5, 5));
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_GT(sheet.inkInCell(i), 0.7) << i;
        const std::string complaint = m_card.at(std::string(1, static_cast<char>('a' + i)) + ".jpg: ");
        EXPECT_EQ(result.err.find(complaint) != std::string::npos, i > 0) << complaint;
    }
}

TEST_F(Sheet, APathThatDoesNotExistIsNamedAndTheOthersAreShown) {
    writePhoto("a.jpg");
    const ToolResult result = runTool({"sheet", m_card.at("gone"), m_card.path(), "-o", out("sheet.jpg")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "fileimporter: " + m_card.at("gone") + ": there is no such file\n");
    EXPECT_EQ(written(), std::vector<std::string>{"sheet.jpg"});
}

TEST_F(Sheet, WhereNothingIsFoundNothingIsWritten) {
    EXPECT_EQ(runTool({"sheet", m_card.path(), "-o", out("sheet.jpg")}).status, 3);
    EXPECT_EQ(written(), std::vector<std::string>{});
}

TEST_F(Sheet, WrongUsageIsToldBeforeAnythingIsDone) {
    const std::string photo = writePhoto("a.jpg");
    const std::string folder = m_out.makeFolder("folder.jpg");
    const std::vector<std::vector<std::string>> wrong = {
        {"sheet", m_card.path()},
        {"sheet", "-o", out("sheet.jpg")},
        {"sheet", m_card.path(), "-o", out("sheet.png")},
        {"sheet", m_card.path(), "-o", out("sheet")},
        {"sheet", m_card.path(), "-o", ".jpg"},
        {"sheet", m_card.path(), "-o", out("sheet.jpg"), "--columns", "0"},
        {"sheet", m_card.path(), "-o", out("sheet.jpg"), "--columns", "501"},
        {"sheet", m_card.path(), "-o", folder},
        {"sheet", m_card.path(), "-o", photo},
    };
    const std::string before = readFile(photo);
    for (const auto& arguments : wrong) {
        const ToolResult result = runTool(arguments);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_NE(result.err, "") << testing::PrintToString(arguments);
    }
    EXPECT_EQ(written(), std::vector<std::string>{});
    EXPECT_EQ(readFile(photo), before);
    EXPECT_NE(runTool(wrong[2]).err.find(".jpg, .jpeg, .tif or .tiff"), std::string::npos);
}

TEST_F(Sheet, APlaceWhereNothingCanBeWrittenIsToldBeforeThePhotosAreRead) {
    m_card.write("a.jpg", "This is no picture, and would be named if it were read.");
    const std::string longName = std::string(300, 'n') + ".jpg";
    const std::vector<std::pair<std::string, std::string>> places = {
        {out(longName.c_str()), "File name too long"},
        {m_out.at("gone/sheet.jpg"), "no file can be written into that folder: No such file or directory"},
        {m_out.write("file", "x") + "/sheet.jpg",
         "no file can be written into that folder: Not a directory"},
    };
    for (const auto& [place, reason] : places) {
        const ToolResult result = runTool({"sheet", m_card.path(), m_card.at("gone"), "-o", place});
        EXPECT_EQ(result.status, 1) << place;
        EXPECT_EQ(result.err, "fileimporter: " + place + ": " + reason + "\n");
    }
    EXPECT_EQ(written(), std::vector<std::string>{});
}

TEST_F(Sheet, AFolderThatMayNotBeWrittenIsToldBeforeThePhotosAreRead) {
    m_card.write("a.jpg", "This is no picture, and would be named if it were read.");
    ASSERT_EQ(chmod(m_card.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(m_out.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(m_out.at("out").c_str(), 0555), 0);
    const OrdinaryUser user;
    if (eaccess(FILEIMPORTER_TOOL, X_OK) != 0)
        GTEST_SKIP() << "an ordinary user may not run the built tool";
    const ToolResult result = runTool({"sheet", m_card.path(), "-o", out("sheet.jpg")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "fileimporter: " + out("sheet.jpg") +
                              ": no file can be written into that folder: Permission denied\n");
}

TEST_F(Sheet, TheEarlierSheetAmongThePhotosIsNoneOfThem) {
    writePhoto("a.jpg");
    writePhoto("b.jpg");
    m_card.makeFolder("z");
    const std::string once = out("sheet.jpg");
    ASSERT_EQ(runTool({"sheet", m_card.path(), "-o", once}).status, 0);
    for (const char* name : {"sheet.jpg", "z/../sheet.tif"}) {
        const std::string sheet = m_card.at(name);
        for (int i = 0; i < 3; ++i) {
            const ToolResult result = runTool({"sheet", m_card.path(), "-o", sheet});
            EXPECT_EQ(result.status, 0) << name << ' ' << i;
            EXPECT_EQ(result.err, "");
            if (fs::path(name).extension() == ".jpg") {
                EXPECT_TRUE(readFile(sheet) == readFile(once)) << i;
            }
        }
        EXPECT_EQ(runTool({"sheet", sheet, "-o", sheet}).status, 3);
        fs::remove(sheet);
    }
}

TEST_F(Sheet, APhotoIsNotTakenForAnEarlierSheet) {
    const auto page = SheetLayout::forPhotos(2, 0);
    const auto photo = jpegOf(testPicture(page->pageWidth(), page->pageHeight()));
    writePhoto("a.jpg");
    writePhoto("of-the-wrong-size.jpg");
    ExifFacts facts;
    facts.date = "2004:05:01 06:07:08";
    m_card.write("with-exif.jpg", withExif(photo, facts));
    m_card.write("damaged.jpg", "This was a photo.");
    for (const char* name : {"of-the-wrong-size.jpg", "with-exif.jpg", "damaged.jpg"}) {
        const std::string before = readFile(m_card.at(name));
        const ToolResult result = runTool({"sheet", m_card.path(), "-o", m_card.at(name)});
        EXPECT_EQ(result.status, 2) << name;
        EXPECT_EQ(result.err, "fileimporter: " + m_card.at(name) +
                                  ": that is one of the photos, which would be overwritten\n");
        EXPECT_TRUE(readFile(m_card.at(name)) == before) << name;
    }
}

class StoppedSheet : public Sheet {
protected:
    /// Photos for some seconds of work.
    void SetUp() override {
        Sheet::SetUp();
        const fs::path first = m_card.write("0.jpg", jpegOf(testPicture(3000, 2000)));
        for (int i = 1; i < 2000; ++i)
            fs::create_hard_link(first, m_card.at(std::to_string(i) + ".jpg"));
    }

    ToolResult stopWith(int signal) const {
        ToolRun run({"sheet", m_card.path(), "-o", out("sheet.jpg")});
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
        kill(run.process(), signal);
        m_stopped = std::chrono::steady_clock::now();
        return run.finish();
    }

    mutable std::chrono::steady_clock::time_point m_stopped;
};

TEST_F(StoppedSheet, EndsWithinAPhotoAndLeavesNoFile) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const ToolResult result = stopWith(signal);
        EXPECT_EQ(result.signal, signal);
        EXPECT_EQ(result.out + result.err, "");
        EXPECT_EQ(written(), std::vector<std::string>{});
        EXPECT_LT(std::chrono::steady_clock::now() - m_stopped, std::chrono::seconds(2));
    }
}

TEST_F(StoppedSheet, LeavesAnOldSheetAsItWas) {
    m_out.write("out/sheet.jpg", "an old sheet");
    EXPECT_EQ(stopWith(SIGINT).signal, SIGINT);
    EXPECT_EQ(written(), std::vector<std::string>{"sheet.jpg"});
    EXPECT_EQ(readFile(out("sheet.jpg")), "an old sheet");
}

}  // namespace
}  // namespace fi::test
