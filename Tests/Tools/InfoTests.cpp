// SPDX-License-Identifier: Apache-2.0
// fileimporter info, from its command line to its exit status.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"
#include "Tools/ToolRun.h"

namespace fi::test {
namespace {

using Json = nlohmann::ordered_json;

class Info : public testing::Test {
protected:
    /// A photo with an Exif version, without which its date does not count.
    [[nodiscard]] std::string writeJpeg(const char* name, uint16_t orientation = 0,
                                        const std::string& date = {}) const {
        TiffDirectory exif;
        exif.bytes(0x9000, 7, {'0', '2', '3', '0'});
        if (!date.empty()) exif.text(0x9003, date);
        TiffDirectory first;
        if (orientation != 0) first.shorts(0x0112, {orientation});
        const Bytes block = tiffBlock({first.directory(0x8769, exif)}, ByteOrder::Big);
        return m_folder.write(name, withExif(jpegOf(testPicture(64, 48)), block));
    }
    [[nodiscard]] static Json only(const std::vector<std::string>& arguments) {
        return Json::parse(runTool(arguments).lines().at(0));
    }

    TemporaryFolder m_folder;
};

TEST_F(Info, TellsWhatTheHeadersOfAJpegFileSay) {
    const ToolResult result = runTool({"info", "--json", writeJpeg("a.jpg", 6, "2004:05:01 06:07:08")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const Json photo = Json::parse(result.lines().at(0));
    std::vector<std::string> keys;
    for (const auto& item : photo.items())
        keys.push_back(item.key());
    EXPECT_EQ(keys, (std::vector<std::string>{"path", "name", "type", "bytes", "modified", "date",
                                              "orientation", "width", "height", "exif"}));
    EXPECT_EQ(photo.at("date"), "2004-05-01T06:07:08");
    EXPECT_EQ(photo.at("orientation"), 6);
    EXPECT_EQ(photo.at("width"), 64);
    EXPECT_EQ(photo.at("height"), 48);
    EXPECT_EQ(photo.at("exif"), true);
}

TEST_F(Info, TellsWhatTheHeadersOfATiffFileSay) {
    const std::string file = m_folder.write("a.tif", tiffOf(testPicture(30, 20), 8));
    const Json photo = only({"info", "--json", file});
    EXPECT_EQ(photo.at("type"), "tiff");
    EXPECT_EQ(photo.at("orientation"), 8);
    EXPECT_EQ(photo.at("width"), 30);
    EXPECT_EQ(photo.at("height"), 20);
    EXPECT_EQ(photo.at("date"), photo.at("modified"));
    EXPECT_EQ(photo.at("exif"), false);
}

TEST_F(Info, WhatAFileDoesNotSayIsNullAndItsDateThatOfTheFile) {
    const Json photo = only({"info", "--json", m_folder.write("a.jpg", jpegOf(testPicture(64, 48)))});
    EXPECT_EQ(photo.at("date"), photo.at("modified"));
    EXPECT_NE(photo.at("date"), nullptr);
    EXPECT_EQ(photo.at("orientation"), nullptr);
    EXPECT_EQ(photo.at("exif"), false);
}

TEST_F(Info, ADateThatIsNoneIsThatOfTheFile) {
    const Json photo = only({"info", "--json", writeJpeg("a.jpg", 0, "0000:00:00 00:00:00")});
    EXPECT_EQ(photo.at("date"), photo.at("modified"));
    EXPECT_EQ(photo.at("exif"), true);
}

TEST_F(Info, WithTagsJsonHasEveryTagByItsDirectory) {
    const std::string file = writeJpeg("a.jpg", 6, "2004:05:01 06:07:08");
    const Json photo = only({"info", "--tags", "--json", file});
    std::vector<std::string> keys;
    for (const auto& item : photo.items())
        keys.push_back(item.key());
    EXPECT_EQ(keys,
              (std::vector<std::string>{"path", "name", "type", "bytes", "modified", "date", "orientation",
                                        "width", "height", "exif", "tags", "tagsIncomplete"}));
    EXPECT_EQ(photo.at("tags").dump(),
              R"({"IFD0":[{"tag":274,"name":"Orientation","type":"SHORT","count":1,"value":6}],)"
              R"("Exif":[{"tag":36864,"name":"ExifVersion","type":"UNDEFINED","count":4,)"
              R"("value":"MDIzMA=="},{"tag":36867,"name":"DateTimeOriginal","type":"ASCII","count":20,)"
              R"("value":"2004:05:01 06:07:08"}]})");
    EXPECT_EQ(photo.at("tagsIncomplete"), false);
}

TEST_F(Info, WithTagsAFileWithoutThemHasAnEmptyObject) {
    const std::string plain = m_folder.write("a.jpg", jpegOf(testPicture(64, 48)));
    EXPECT_EQ(only({"info", "--tags", "--json", plain}).at("tags").dump(), "{}");
    const std::string text = m_folder.write("text.jpg", "This is no picture, whatever its name says.");
    const Json photo = only({"info", "--tags", "--json", text});
    EXPECT_EQ(photo.at("tags").dump(), "{}");
    EXPECT_EQ(photo.at("error").at("code"), 1100);
}

TEST_F(Info, WithTagsAFileThatCannotBeReadHasNull) {
    const Json photo = only({"info", "--tags", "--json", m_folder.at("gone.jpg")});
    EXPECT_EQ(photo.at("tags"), nullptr);
    EXPECT_EQ(photo.at("tagsIncomplete"), nullptr);
}

TEST_F(Info, WithTagsTheFileIsLeftAsItWas) {
    const std::string file = writeJpeg("a.jpg", 6, "2004:05:01 06:07:08");
    const std::string before = readFile(file);
    EXPECT_EQ(runTool({"info", "--tags", file}).status, 0);
    EXPECT_TRUE(readFile(file) == before);
    EXPECT_EQ(runTool({"info", "--tags", m_folder.at("gone.jpg")}).status, 3);
    EXPECT_NE(access(m_folder.at("gone.jpg").c_str(), F_OK), 0);
}

TEST_F(Info, WithTagsTheParagraphHasALineEach) {
    const std::string file = writeJpeg("a.jpg", 6, "2004:05:01 06:07:08");
    const std::string text = runTool({"info", file, "--tags"}).out;
    EXPECT_NE(text.find("  exif        yes\n"
                        "  IFD0\n"
                        "    0x0112  Orientation       SHORT      6\n"
                        "  Exif\n"
                        "    0x9000  ExifVersion       UNDEFINED  \"0230\"\n"
                        "    0x9003  DateTimeOriginal  ASCII      2004:05:01 06:07:08\n"),
              std::string::npos)
        << text;
}

TEST_F(Info, AsTextItIsAParagraphAFile) {
    const std::string file = writeJpeg("a.jpg", 3, "2004:05:01 06:07:08");
    const std::string text = runTool({"info", file}).out;
    for (const std::string& part :
         {file + "\n", std::string("  date        2004-05-01 06:07:08\n"),
          std::string("  pixels      64 x 48\n"), std::string("  orientation 3\n")}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
}

TEST_F(Info, EachFileThatFailsIsNamedAndTheOthersAreTold) {
    const std::string good = writeJpeg("good.jpg");
    const std::string text = m_folder.write("text.jpg", "This is no picture, whatever its name says.");
    const std::string empty = m_folder.write("empty.jpg", "");
    const std::string pipe = m_folder.at("pipe.jpg");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string gone = m_folder.at("gone.jpg");
    const std::vector<std::string> files = {text, empty, pipe, gone, m_folder.path()};
    const ToolResult result = runTool({"info", "--json", text, empty, pipe, gone, m_folder.path(), good});
    EXPECT_EQ(result.status, 1);
    const auto lines = result.lines();
    ASSERT_EQ(lines.size(), 6U);
    for (size_t i = 0; i < files.size(); ++i) {
        const Json photo = Json::parse(lines[i]);
        EXPECT_EQ(photo.at("path"), files[i]);
        EXPECT_EQ(photo.at("error").at("code"), files[i] == gone ? -43 : 1100) << files[i];
        const std::string complaint =
            "fileimporter: " + files[i] + ": " + photo.at("error").at("text").get<std::string>() + "\n";
        EXPECT_NE(result.err.find(complaint), std::string::npos) << complaint;
    }
    EXPECT_FALSE(Json::parse(lines[5]).contains("error"));
}

TEST_F(Info, WhereNoFileIsThereTheStatusSaysSo) {
    EXPECT_EQ(runTool({"info", m_folder.at("gone.jpg")}).status, 3);
    EXPECT_EQ(runTool({"info"}).status, 2);
}

}  // namespace
}  // namespace fi::test
