// SPDX-License-Identifier: Apache-2.0
// fileimporter list, from its command line to its exit status.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "Support/MakePictures.h"
#include "Support/Privileges.h"
#include "Support/TemporaryFolder.h"
#include "Text.h"
#include "Tools/ToolRun.h"

namespace fi::test {
namespace {

using Json = nlohmann::ordered_json;

std::vector<Json> listed(const ToolResult& result) {
    std::vector<Json> objects;
    for (const std::string& line : result.lines())
        objects.push_back(Json::parse(line));
    return objects;
}

/// The bytes of a small one.
const std::string& photo() {
    static const Bytes bytes = jpegOf(testPicture(8, 6));
    static const std::string text(bytes.begin(), bytes.end());
    return text;
}

/// Paths from the card's root.
std::vector<std::string> listedPaths(const ToolResult& result, const TemporaryFolder& card) {
    std::vector<std::string> paths;
    for (const Json& object : listed(result))
        paths.push_back(object.at("path").get<std::string>().substr(card.path().size() + 1));
    return paths;
}

using Paths = std::vector<std::string>;

/// A folder that only the superuser can list, as long as this lasts.
class ClosedFolder {
public:
    explicit ClosedFolder(std::string path) : m_path(std::move(path)) {
        EXPECT_EQ(chmod(m_path.c_str(), 0), 0);
    }
    ~ClosedFolder() { chmod(m_path.c_str(), 0755); }
    ClosedFolder(const ClosedFolder&) = delete;
    ClosedFolder& operator=(const ClosedFolder&) = delete;

private:
    std::string m_path;
};

class List : public testing::Test {
protected:
    ToolResult list(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"list", "--json"});
        return runTool(arguments);
    }
    [[nodiscard]] ToolResult listCard() const { return list({m_card.path()}); }

    TemporaryFolder m_card;
};

TEST_F(List, GivesThePhotosOfACardDepthFirstByTheirFoldedNames) {
    for (const char* path :
         {"DCIM/101BBBBB/BBBB0001.JPG", "DCIM/100AAAAA/AAAA0002.jpg", "DCIM/100AAAAA/aaaa0001.JPG",
          "DCIM/100AAAAA/inner/deep.TIF", "b.pct", "A.pic", "c/d.tif"}) {
        m_card.write(path, photo());
    }
    const ToolResult result = listCard();
    EXPECT_EQ(
        listedPaths(result, m_card),
        (Paths{"A.pic", "b.pct", "c/d.tif", "DCIM/100AAAAA/aaaa0001.JPG", "DCIM/100AAAAA/AAAA0002.jpg",
               "DCIM/100AAAAA/inner/deep.TIF", "DCIM/101BBBBB/BBBB0001.JPG"}));
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
}

TEST_F(List, TakesFourExtensionsAndNoOthers) {
    for (const char* path :
         {"a.jpg", "b.TIF", "c.Pct", "d.pIC", "e.jpeg", "f.tiff", "g.pict", "h.png", "i.bmp", "j.pdf",
          "k.thm", "l.wav", "m.avi", "jpg", ".jpg", "n.jpg.txt", "Thumbs.db"}) {
        m_card.write(path, photo());
    }
    EXPECT_EQ(listedPaths(listCard(), m_card), (Paths{"a.jpg", "b.TIF", "c.Pct", "d.pIC"}));
}

TEST_F(List, EntersNoFolderThatHoldsWhatWasThrownAway) {
    for (const char* folder : {"Trash", "TRASH", "resource.frk", "___Move&Rename",
                               "TheVolumeSettingsFolder", "___mov~", "thevol~", ".Trashes", "trash2"}) {
        m_card.write(std::string(folder) + "/a.jpg", photo());
    }
    m_card.write(".Trash-1000/files/a.jpg", photo());
    m_card.makeFolder(".Trash-1000/info");
    m_card.write(".Trash-1001/files/a.jpg", photo());
    EXPECT_EQ(listedPaths(listCard(), m_card), (Paths{".Trash-1001/files/a.jpg", "trash2/a.jpg"}));
}

TEST_F(List, PassesOverCompanionFiles) {
    m_card.write("a.jpg", photo());
    m_card.write("._a.jpg", std::string("\x00\x05\x16\x07rest", 8));
    m_card.write("._b.jpg", "an ordinary photo with a strange name");
    EXPECT_EQ(listedPaths(listCard(), m_card), (Paths{"._b.jpg", "a.jpg"}));
}

TEST_F(List, GoesAsDeepAsItIsTold) {
    m_card.write("a.jpg", photo());
    m_card.write("b/b.jpg", photo());
    m_card.write("b/c/c.jpg", photo());
    EXPECT_EQ(listedPaths(list({"--depth", "1", m_card.path()}), m_card), (Paths{"a.jpg"}));
    EXPECT_EQ(listedPaths(list({"--depth", "2", m_card.path()}), m_card), (Paths{"a.jpg", "b/b.jpg"}));
    EXPECT_EQ(listedPaths(list({m_card.path()}), m_card), (Paths{"a.jpg", "b/b.jpg", "b/c/c.jpg"}));
}

TEST_F(List, ReadsNumbersAsDecimal) {
    std::string folder;
    for (int level = 1; level <= 11; ++level, folder += "f/")
        m_card.write(folder + "a.jpg", photo());
    EXPECT_EQ(list({"--depth", "010", m_card.path()}).lines().size(), 10U);
    EXPECT_EQ(list({"--depth=002", m_card.path()}).lines().size(), 2U);
}

TEST_F(List, TakesFoldersAndSingleFilesInTheirOrderAndEachOnce) {
    const std::string single = m_card.write("z/odd.name", photo());
    m_card.write("a/1.jpg", photo());
    m_card.write("b/2.jpg", photo());
    const ToolResult result = list({single, m_card.at("b"), m_card.path()});
    EXPECT_EQ(listedPaths(result, m_card), (Paths{"z/odd.name", "b/2.jpg", "a/1.jpg"}));
    EXPECT_EQ(listed(result)[0].at("type"), "image");
}

TEST_F(List, JsonHasItsKeysAndNothingElse) {
    m_card.write("DCIM/100ABCDE/ABCD0001.JPG", photo());
    const Json item = listed(listCard()).at(0);
    std::vector<std::string> keys;
    for (const auto& entry : item.items())
        keys.push_back(entry.key());
    EXPECT_EQ(keys, (Paths{"index", "path", "name", "type", "bytes", "modified", "date", "orientation",
                           "width", "height", "exif"}));
    EXPECT_EQ(item.at("index"), 1);
    EXPECT_EQ(item.at("name"), "ABCD0001.JPG");
    EXPECT_EQ(item.at("type"), "jpeg");
    EXPECT_EQ(item.at("bytes"), photo().size());
    EXPECT_EQ(item.at("modified").get<std::string>().size(), std::string("2004-05-01T06:07:08").size());
}

TEST_F(List, AsTextItIsOneLineAPhoto) {
    m_card.write("a.jpg", photo());
    m_card.write("bb.pct", "12345");
    const auto lines = runTool({"list", m_card.path()}).lines();
    ASSERT_EQ(lines.size(), 2U);
    const std::string date = lines[0].substr(lines[0].size() - 19);
    EXPECT_EQ(lines[0], fmt::format("1  a.jpg   jpeg   {:>8}        8 x 6  -  -     {}",
                                    readableSize(photo().size()), date));
    EXPECT_EQ(lines[1],
              "2  bb.pct  pict        5 B            -  -  -     " + lines[1].substr(lines[1].size() - 19));
    EXPECT_EQ(date.substr(0, 2), "20");
}

TEST_F(List, NamesOfAnyBytesSurvive) {
    m_card.write("\xFF\xFE.JPG", photo());
    m_card.write("new\nline\x1b[31m.jpg", photo());
    const ToolResult result = listCard();
    EXPECT_EQ(result.status, 0);
    const auto photos = listed(result);
    ASSERT_EQ(photos.size(), 2U);
    EXPECT_EQ(photos[0].at("name"), "new\nline\x1b[31m.jpg");
    EXPECT_FALSE(photos[0].contains("pathBytes"));
    EXPECT_EQ(photos[1].at("name"), "\uFFFD\uFFFD.JPG");
    EXPECT_TRUE(photos[1].contains("pathBytes"));
    const std::string text = runTool({"list", m_card.path()}).out;
    EXPECT_NE(text.find("new\\nline\\x1b[31m.jpg"), std::string::npos);
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

TEST_F(List, WordsThatTheParserCouldTakeForListsAreNames) {
    const std::string brackets = m_card.makeFolder("[a,b]");
    m_card.write("[a,b]/1.jpg", photo());
    m_card.write("list/2.jpg", photo());
    ASSERT_EQ(chdir(m_card.path().c_str()), 0);
    EXPECT_EQ(listedPaths(list({"[a,b]"}), m_card), (Paths{"[a,b]/1.jpg"}));
    EXPECT_EQ(listedPaths(list({"list", "[a,b]"}), m_card), (Paths{"list/2.jpg", "[a,b]/1.jpg"}));
    for (const char* name : {"{}", "%%", "[]", "\x01"}) {
        const ToolResult result = list({name, brackets});
        EXPECT_EQ(result.status, 1) << name;
        EXPECT_EQ(listedPaths(result, m_card), (Paths{"[a,b]/1.jpg"})) << name;
    }
    ASSERT_EQ(chdir("/"), 0);
}

TEST_F(List, APhotoThatCannotBeUsedIsListedAndNamed) {
    m_card.write("a.jpg", photo());
    m_card.write("b.jpg", "");
    ASSERT_EQ(mkfifo(m_card.at("c.jpg").c_str(), 0600), 0);
    const ToolResult result = listCard();
    EXPECT_EQ(result.status, 1);
    const auto photos = listed(result);
    ASSERT_EQ(photos.size(), 3U);
    EXPECT_FALSE(photos[0].contains("error"));
    EXPECT_EQ(photos[1].at("error").at("code"), 1100);
    EXPECT_EQ(photos[1].at("error").at("text"), "its data is not an image that can be read");
    EXPECT_EQ(photos[2].at("error").at("code"), 1100);
    EXPECT_EQ(photos[2].at("bytes"), nullptr);
    EXPECT_EQ(result.err,
              "fileimporter: " + m_card.at("b.jpg") + ": its data is not an image that can be read\n" +
                  "fileimporter: " + m_card.at("c.jpg") + ": it is a pipe or a device, not a file\n");
}

TEST_F(List, APhotoThatMayNotBeReadIsListedAndNamed) {
    m_card.write("a.jpg", photo());
    ASSERT_EQ(chmod(m_card.write("b.jpg", photo()).c_str(), 0), 0);
    ASSERT_EQ(chmod(m_card.path().c_str(), 0755), 0);
    const OrdinaryUser user;
    if (eaccess(FILEIMPORTER_TOOL, X_OK) != 0)
        GTEST_SKIP() << "an ordinary user may not run the built tool";
    const ToolResult result = listCard();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "fileimporter: " + m_card.at("b.jpg") + ": it cannot be opened: Permission denied\n");
    EXPECT_EQ(listed(result).at(1).at("error").at("code"), -108);
}

TEST_F(List, FoldersThatMayNotBeReadAreNamedOnceAndTheRestIsListed) {
    m_card.write("DCIM/100AAAAA/AAAA0001.JPG", photo());
    m_card.write("DCIM/101AAAAA/AAAA0002.JPG", photo());
    m_card.link("again", "DCIM");
    const std::string closed = m_card.at("DCIM/100AAAAA");
    ASSERT_EQ(chmod(m_card.path().c_str(), 0755), 0);
    const ClosedFolder folder(closed);
    const OrdinaryUser user;
    if (eaccess(FILEIMPORTER_TOOL, X_OK) != 0)
        GTEST_SKIP() << "an ordinary user may not run the built tool";
    const ToolResult result = list({m_card.path(), m_card.at("DCIM")});
    EXPECT_EQ(listedPaths(result, m_card), (Paths{"DCIM/101AAAAA/AAAA0002.JPG"}));
    EXPECT_EQ(result.err, "fileimporter: " + closed + ": Permission denied\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(list({m_card.at("DCIM/100AAAAA/../100AAAAA")}).status, 3);
}

TEST_F(List, AFolderThatMayNotBeReadIsNamedAsItWasGiven) {
    m_card.write("a.jpg", photo());
    ASSERT_EQ(chmod(m_card.path().c_str(), 0755), 0);
    const ClosedFolder folder(m_card.makeFolder("closed"));
    const OrdinaryUser user;
    if (eaccess(FILEIMPORTER_TOOL, X_OK) != 0)
        GTEST_SKIP() << "an ordinary user may not run the built tool";
    const std::string given = m_card.path() + "/./closed/";
    const ToolResult result = list({given, m_card.at("a.jpg")});
    EXPECT_EQ(result.err, "fileimporter: " + given + ": Permission denied\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(List, APhotoIsListedOnceHoweverItIsSpelt) {
    const std::string file = m_card.write("o/a.jpg", photo());
    m_card.link("o/b.jpg", "a.jpg");
    m_card.link("elsewhere", "o");
    ASSERT_EQ(chdir(m_card.path().c_str()), 0);
    const Paths spellings = {"o",       "o/a.jpg",         "./o/a.jpg", "o//a.jpg", "o/../o/a.jpg",
                             "o/b.jpg", "elsewhere/a.jpg", file};
    const ToolResult result = list(spellings);
    for (const std::string& spelling : spellings)
        EXPECT_EQ(listedPaths(list({spelling, "elsewhere"}), m_card), (Paths{"o/a.jpg"})) << spelling;
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(listedPaths(result, m_card), (Paths{"o/a.jpg"}));
    EXPECT_EQ(result.status, 0);
}

TEST_F(List, APathThatDoesNotExistIsNamedAndTheOthersAreListed) {
    m_card.write("a.jpg", photo());
    const ToolResult result = list({m_card.at("gone"), m_card.path()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(listedPaths(result, m_card), (Paths{"a.jpg"}));
    EXPECT_EQ(result.err, "fileimporter: " + m_card.at("gone") + ": there is no such file\n");
}

TEST_F(List, WhereNothingIsFoundTheStatusSaysSo) {
    EXPECT_EQ(listCard().status, 3);
    EXPECT_EQ(listCard().err, "fileimporter: no photos were found\n");
    EXPECT_EQ(list({m_card.at("gone")}).status, 3);
    EXPECT_EQ(list({""}).status, 3);
}

TEST_F(List, WrongUsageIsToldApart) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"lists", "/"},
                                               {"list"},
                                               {"list", "--depth", "0", "/"},
                                               {"list", "--depth", "257", "/"},
                                               {"list", "--depth", "-1", "/"},
                                               {"list", "--depth", "many", "/"},
                                               {"list", "--depth", "0x1", "/"},
                                               {"list", "--depth", "+1", "/"},
                                               {"list", "--depth", "1.0", "/"},
                                               {"list", "--depth", " 1", "/"},
                                               {"list", "--depth", "", "/"},
                                               {"list", "--depth", "0256257", "/"},
                                               {"list", "--depth", "99999999999999999999", "/"},
                                               {"list", "--unknown", "/"},
                                               {"list", "/", "--plist"}}) {
        const ToolResult result = runTool(arguments);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(result.out, "") << testing::PrintToString(arguments);
        EXPECT_NE(result.err, "") << testing::PrintToString(arguments);
    }
}

TEST_F(List, HelpAndVersionGoToStandardOutput) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--help"},
                                               {"--version"},
                                               {"list", "--help"},
                                               {"info", "--help"},
                                               {"sheet", "--help"},
                                               {"sample-card", "--help"}}) {
        const ToolResult result = runTool(arguments);
        EXPECT_EQ(result.status, 0) << testing::PrintToString(arguments);
        EXPECT_NE(result.out, "") << testing::PrintToString(arguments);
        EXPECT_EQ(result.err, "") << testing::PrintToString(arguments);
    }
    EXPECT_EQ(runTool({"--version"}).out, "fileimporter " FILEIMPORTER_VERSION "\n");
}

TEST_F(List, QuietIsTakenBeforeAndBehindTheCommand) {
    m_card.write("a.jpg", photo());
    EXPECT_EQ(runTool({"-q", "list", m_card.path()}).status, 0);
    EXPECT_EQ(runTool({"list", m_card.path(), "--quiet"}).status, 0);
}

TEST_F(List, AReaderThatHasSeenEnoughEndsItQuietly) {
    const std::string longName(200, 'n');
    for (int i = 0; i < 600; ++i)
        m_card.write(longName + std::to_string(i) + ".jpg", photo());
    ToolRun run({"list", "--json", m_card.path()});
    run.stopReading();
    const ToolResult result = run.finish();
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
}

TEST_F(List, AnOutputThatCannotBeWrittenIsAFailure) {
    m_card.write("a.jpg", photo());
    const ToolResult result = ToolRun({"list", m_card.path()}, "/dev/full").finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "fileimporter: standard output: No space left on device\n");
}

TEST_F(List, AnOutputThatIsClosedIsAFailure) {
    m_card.write("a.jpg", photo());
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"list", m_card.path()}, {"--version"}, {"list", "--help"}}) {
        const ToolResult result = ToolRun(arguments, ToolRun::kClosed).finish();
        EXPECT_EQ(result.status, 1) << testing::PrintToString(arguments);
        EXPECT_EQ(result.err, "fileimporter: standard output: Bad file descriptor\n");
    }
    EXPECT_EQ(ToolRun({"--help"}, "/dev/full").finish().status, 1);
}

class HistoryList : public List {
protected:
    [[nodiscard]] std::string history(const std::string& type, const Paths& paths) const {
        std::string items;
        for (const std::string& path : paths)
            items += "<string>" + path + "</string>";
        return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><array><dict>)"
               "<key>historyDataSourceTypeKey</key><string>" +
               type +
               "</string><key>historyDataSourceChildrenKey</key><array><dict>"
               "<key>historyDataSourceChildrenKey</key><array>" +
               items + "</array></dict></array></dict></array></plist>";
    }
};

TEST_F(HistoryList, GivesItsPhotosBeforeThoseOfThePaths) {
    const std::string a = m_card.write("x/a.jpg", photo());
    const std::string b = m_card.write("x/b.jpg", photo());
    const std::string list = m_card.write("history.plist", history("mailHistory", {b, a}));
    const std::string other = m_card.write("y/c.jpg", photo());
    const ToolResult result = List::list({"--plist", list, other});
    EXPECT_EQ(listedPaths(result, m_card), (Paths{"x/b.jpg", "x/a.jpg", "y/c.jpg"}));
    EXPECT_EQ(result.status, 0);
}

TEST_F(HistoryList, APhotoThatIsGoneIsListedWithItsCode) {
    const std::string a = m_card.write("a.jpg", photo());
    const std::string list =
        m_card.write("history.plist", history("sendAppHistory", {a, m_card.at("gone.jpg")}));
    const ToolResult result = List::list({"--plist", list});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(listed(result).at(1).at("error").at("code"), -43);
    EXPECT_EQ(result.err, "fileimporter: " + m_card.at("gone.jpg") + ": there is no such file\n");
}

TEST_F(HistoryList, ItsPhotosAreListedOnceHoweverTheyAreSpelt) {
    const std::string a = m_card.write("a.jpg", photo());
    m_card.link("b.jpg", "a.jpg");
    const std::string list = m_card.write(
        "history.plist", history("mailHistory", {m_card.path() + "/./a.jpg", m_card.at("b.jpg"), a}));
    EXPECT_EQ(listedPaths(List::list({"--plist", list, m_card.path()}), m_card), (Paths{"a.jpg"}));
}

TEST_F(HistoryList, AFileThatIsNoListIsNamed) {
    m_card.write("a.jpg", photo());
    const std::string list = m_card.write("history.plist", "no list");
    const ToolResult result = List::list({"--plist", list, m_card.path()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(listedPaths(result, m_card), (Paths{"a.jpg"}));
    EXPECT_NE(result.err.find("history.plist: it is not a property list"), std::string::npos);
    EXPECT_EQ(List::list({"--plist", list}).status, 3);
}

}  // namespace
}  // namespace fi::test
