// SPDX-License-Identifier: Apache-2.0
// A stranger's card through the shared library as an application has it: whatever lies on it, the photos
// are found and neither the terminal nor the system log hears of the rest.
#include <FileImporter/FileImporter.h>
#include <PlatformKit/Log.h>
#include <PlatformKit/PropertyList.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.h"

namespace fi::test {
namespace {

/// Holds what the process writes to its terminal and what the library logs.
class HostileCard : public testing::Test {
protected:
    void SetUp() override {
        s_logged = 0;
        setLogSink([](const char*, void*) { ++s_logged; }, nullptr);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }

    void TearDown() override {
        setLogSink(nullptr, nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(s_logged, 0);
    }

    [[nodiscard]] std::vector<std::string> photosOf(const std::string& folder) const {
        std::vector<std::string> photos;
        CFileSearchDC search;
        EXPECT_TRUE(search.Open(CFURL::createFromPath(folder).get()));
        search.FileSearch(64);
        for (uint32_t index = 1; index <= search.GetListNum(); ++index) {
            CFURLRef url = nullptr;
            EXPECT_TRUE(search.GetURLAt(&url, index));
            photos.emplace_back(adopt(url)->path()->view());
        }
        return photos;
    }

    TemporaryFolder m_card;

private:
    static inline std::atomic<int> s_logged = 0;
};

TEST_F(HostileCard, PhotosAreFoundBesideLinksThatGoInCircles) {
    const std::string photo = m_card.write("DCIM/100ABCDE/IMG_0001.JPG", "x");
    m_card.link("DCIM/100ABCDE/AGAIN", "..");
    m_card.link("DCIM/SELF.JPG", "SELF.JPG");
    m_card.link("DCIM/GONE.JPG", "nothing/here");
    EXPECT_EQ(photosOf(m_card.path()), std::vector{photo});
}

TEST_F(HostileCard, PhotosAreFoundBesideANamedPipe) {
    const std::string photo = m_card.write("IMG_0001.JPG", "x");
    ASSERT_EQ(mkfifo(m_card.at("A.PIP").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(m_card.at("B.PDF").c_str(), 0600), 0);
    EXPECT_EQ(photosOf(m_card.path()), std::vector{photo});
}

TEST_F(HostileCard, NamesOfAnyBytesComeBackUnchanged) {
    const std::vector<std::string> written = {
        m_card.write("\xFF\xFE.JPG", "x"), m_card.write("new\nline.jpg", "x"),
        m_card.write("per%sent%n.JPG", "x"), m_card.write("\xED\xA0\x80.tif", "x")};
    const std::vector<std::string> found = photosOf(m_card.path());
    EXPECT_EQ(found.size(), written.size());
    for (const std::string& path : written) {
        EXPECT_EQ(std::count(found.begin(), found.end(), path), 1) << testing::PrintToString(path);
    }
}

TEST_F(HostileCard, FoldersInEachOtherDoNotExhaustTheStack) {
    std::string folder = "a";
    for (int level = 0; level < 60; ++level)
        folder += "/a";
    const std::string photo = m_card.write(folder + "/deep.jpg", "x");
    EXPECT_EQ(photosOf(m_card.path()), std::vector{photo});
}

TEST_F(HostileCard, PropertyListsOfEveryKindOfHarmAreRefusedInSilence) {
    std::string bomb = "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\">";
    for (char name = 'b'; name <= 'p'; ++name) {
        const std::string entity = "&" + std::string(1, static_cast<char>(name - 1)) + ";";
        bomb += "<!ENTITY " + std::string(1, name) + " \"";
        for (int times = 0; times < 10; ++times)
            bomb += entity;
        bomb += "\">";
    }
    bomb += "]><plist><string>&p;</string></plist>";
    std::string nested = "<plist>";
    for (int level = 0; level < 100'000; ++level)
        nested += "<array>";

    const std::vector<std::string> harms = {
        "",          "<plist",
        nested,      "<plist><array><string>a</string>",
        "\xFF\xFE<", std::string("bplist00\xD1\x01\x02\xFF\xFF\xFF\xFF", 16)};
    for (const std::string& harm : harms) {
        const std::string path = m_card.write("history.plist", harm);
        EXPECT_FALSE(readPropertyList(CFURL::createFromPath(path).get())) << harm.substr(0, 40);
    }
    // Entities that a document declares itself may be refused or stay unexpanded; they never grow.
    const std::string path = m_card.write("history.plist", bomb);
    const auto root = readPropertyList(CFURL::createFromPath(path).get());
    const auto* text = dynamic_cast<const CFString*>(root.get());
    EXPECT_TRUE(text == nullptr || text->view().size() < 1000);
}

}  // namespace
}  // namespace fi::test
