// SPDX-License-Identifier: Apache-2.0
// Whole cards: those of the photo collection, and cards that nobody may write on.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "Support/Corpus.h"
#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"
#include "Tools/ToolRun.h"

namespace fi::test {
namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

// By hand: four extensions, depth first, folders and files mixed by their names in small letters.
const std::map<std::string, Paths> kListsOfCards = {
    {"canon", {"DCIM/100CANON/_MG_0002.JPG", "DCIM/100CANON/IMG_0001.JPG", "DCIM/100CANON/STA_0003.JPG"}},
    {"pentax", {"DCIM/102_2910/IMGP7537.JPG"}},
    {"sony", {"DCIM/101MSDCF/DSC00001.JPG"}},
    {"spec",
     {"DCIM/100ABCDE/ABCD0001.JPG", "DCIM/100ABCDE/ABCD0002.JPG", "DCIM/100ABCDE/ABCD0003.JPG",
      "DCIM/102_BLUE/BLUE0001.JPG"}},
    {"no-dcim", {"holiday/picture one.jpg", "pic2.JPG"}},
};

struct CardFile {
    std::string path;
    std::string content;  ///< a file of the collection, "-" for anything, "DIR" for a folder
};

std::map<std::string, std::vector<CardFile>> cardsOf(const std::string& table) {
    std::map<std::string, std::vector<CardFile>> cards;
    std::ifstream in(table);
    std::string line;
    std::getline(in, line);  // the headings
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::string card;
        CardFile file;
        std::getline(fields, card, '\t');
        std::getline(fields, file.path, '\t');
        std::getline(fields, file.content, '\t');
        cards[card].push_back(file);
    }
    return cards;
}

void build(const TemporaryFolder& card, const std::vector<CardFile>& files, const std::string& collection) {
    for (const CardFile& file : files) {
        if (file.content == "DIR") {
            card.makeFolder(file.path);
        } else if (file.content == "-") {
            card.write(file.path, "something");
        } else {
            card.write(file.path, readFile(collection + "/" + file.content));
        }
    }
}

Paths listOf(const TemporaryFolder& card, const ToolResult& result) {
    Paths paths;
    for (const std::string& line : result.lines())
        paths.push_back(
            nlohmann::json::parse(line).at("path").get<std::string>().substr(card.path().size() + 1));
    return paths;
}

TEST(Cards, OfTheCollectionAreListedByTheRules) {
    const auto collection = corpusFolder();
    const std::string table = collection.value_or("") + "/dcf-cards/cards.tsv";
    if (!fs::exists(table)) GTEST_SKIP() << "no photo collection with dcf-cards/cards.tsv";
    const auto cards = cardsOf(table);
    EXPECT_EQ(cards.size(), kListsOfCards.size());
    for (const auto& [name, files] : cards) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(kListsOfCards.contains(name));
        const TemporaryFolder card;
        build(card, files, *collection);
        const ToolResult result = runTool({"list", "--json", card.path()});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(listOf(card, result), kListsOfCards.at(name));
        const ToolResult sheet = runTool({"sheet", card.path(), "-o", card.at("sheet.jpeg")});
        EXPECT_EQ(sheet.status, 0);
        EXPECT_EQ(sheet.err, "");
    }
}

/// Everything about the files that a program could have changed; reading may move the time of access.
std::vector<std::string> stateOf(const std::string& folder) {
    std::vector<std::string> state;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        struct stat status {};
        EXPECT_EQ(lstat(entry.path().c_str(), &status), 0);
        std::ostringstream line;
        line << entry.path().native() << ' ' << status.st_ino << ' ' << status.st_mode << ' '
             << status.st_size << ' ' << status.st_mtim.tv_sec << '.' << status.st_mtim.tv_nsec << ' '
             << status.st_ctim.tv_sec << '.' << status.st_ctim.tv_nsec;
        state.push_back(line.str());
    }
    std::sort(state.begin(), state.end());
    return state;
}

class UntouchedCard : public testing::Test {
protected:
    void SetUp() override {
        m_photo = m_card.write("DCIM/100ABCDE/ABCD0001.JPG", jpegOf(testPicture(64, 48)));
        m_card.write("DCIM/100ABCDE/ABCD0002.JPG", "no picture");
        m_card.write("MISC/AUTPRINT.MRK", "[HDR]");
    }

    void runEverything() const {
        EXPECT_EQ(runTool({"list", m_card.path()}).status, 1);
        EXPECT_EQ(runTool({"info", "--tags", m_photo}).status, 0);
        EXPECT_EQ(runTool({"sheet", m_card.path(), "-o", m_out.at("sheet.jpg")}).status, 1);
        EXPECT_TRUE(fs::exists(m_out.at("sheet.jpg")));
    }

    TemporaryFolder m_card;
    TemporaryFolder m_out;
    std::string m_photo;
};

TEST_F(UntouchedCard, NothingIsWrittenOnIt) {
    const auto before = stateOf(m_card.path());
    runEverything();
    EXPECT_EQ(stateOf(m_card.path()), before);
}

TEST_F(UntouchedCard, MayBeWriteProtected) {
    const char* const card = m_card.path().c_str();
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount(card, card, nullptr, MS_BIND, nullptr) != 0 ||
        mount("none", card, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
        GTEST_SKIP() << "mounting is not permitted here";
    }
    EXPECT_FALSE(std::ofstream(m_card.at("probe")).is_open());
    runEverything();
    EXPECT_EQ(umount2(card, MNT_DETACH), 0);
}

}  // namespace
}  // namespace fi::test
