// SPDX-License-Identifier: Apache-2.0
// Folders of the library's own in the temporary folder.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "FileImporter/CFileImporterCocoa.h"
#include "Foundation/TestText.h"
#include "PlatformKit/Base/ImplicitPool.h"
#include "PlatformKit/PrivateFolders.h"
#include "Support/ScopedFaults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;

/// The library's temporary folder, emptied before and after.
class TemporaryItemsTest : public testing::Test {
protected:
    TemporaryItemsTest() { clear(); }
    ~TemporaryItemsTest() override { clear(); }

    static std::string temporary() {
        const auto url = copyTemporaryFolder();
        return url ? std::string(url->path()->view()) : "";
    }

    static void clear() {
        for (const auto& entry : fs::directory_iterator(temporary()))
            fs::remove_all(entry.path());
    }

    static void writeFile(const std::string& path) { std::ofstream(path) << "bytes"; }

    struct Made {
        OSErr code;
        Ref<const CFURL> url;

        [[nodiscard]] std::string path() const { return url ? std::string(url->path()->view()) : "(null)"; }
    };

    static Made make(std::string_view name) {
        CFURLRef url = nullptr;
        const OSErr code = GetTempFolderURLCocoa(&url, pascal(name).data(), nullptr);
        return {code, adopt(url)};
    }

    static Made make(std::string_view name, std::string_view subName) {
        CFURLRef url = nullptr;
        const OSErr code = GetTempFolderURLCocoa(&url, pascal(name).data(), pascal(subName).data());
        return {code, adopt(url)};
    }

    static void expectRefused(const Made& made, OSErr code) {
        EXPECT_EQ(made.code, code);
        EXPECT_EQ(made.url.get(), nullptr);
    }
};

}  // namespace

TEST_F(TemporaryItemsTest, AFolderIsMadeInTheTemporaryFolder) {
    const Made made = make("Photos \u00e9");
    EXPECT_EQ(made.code, 0);
    EXPECT_EQ(made.path(), temporary() + "/Photos \u00e9");
    EXPECT_TRUE(fs::is_directory(made.path()));
}

TEST_F(TemporaryItemsTest, ASubFolderIsMadeInThatFolder) {
    const Made made = make("Photos", "Small");
    EXPECT_EQ(made.code, 0);
    EXPECT_EQ(made.path(), temporary() + "/Photos/Small");
    EXPECT_TRUE(fs::is_directory(made.path()));
}

TEST_F(TemporaryItemsTest, TheURLBelongsToTheCaller) {
    const size_t waiting = autoreleasedObjects();
    const Made made = make("Photos", "Small");
    ASSERT_TRUE(made.url);
    EXPECT_EQ(made.url->retainCount(), 1U);
    EXPECT_EQ(autoreleasedObjects(), waiting);
}

TEST_F(TemporaryItemsTest, FoldersThatAreThereKeepWhatTheyHold) {
    const std::string inside = make("Photos", "Small").path() + "/photo.jpg";
    writeFile(inside);
    EXPECT_EQ(make("Photos").code, 0);
    EXPECT_EQ(make("Photos", "Small").code, 0);
    EXPECT_EQ(readFile(inside), "bytes");
}

TEST_F(TemporaryItemsTest, AnEmptySubNameAddsNoFolder) {
    const Made made = make("Photos", "");
    EXPECT_EQ(made.code, 0);
    EXPECT_EQ(made.path(), temporary() + "/Photos");
}

TEST_F(TemporaryItemsTest, NamesThatAreNoTextAreNotFound) {
    expectRefused(make("caf\xe9"), -43);
    expectRefused(make("caf\xe9", "Small"), -43);
    EXPECT_TRUE(fs::is_empty(temporary()));
    expectRefused(make("Photos", "caf\xe9"), -43);
}

TEST_F(TemporaryItemsTest, NamesThatLeadOutOfTheFolderAreNotFound) {
    for (const char* name : {"..", "../outside", "a/../../outside", "a/..", "../"}) {
        expectRefused(make(name), -43);
        expectRefused(make("Photos", name), -43);
    }
    EXPECT_FALSE(fs::exists(temporary() + "/../outside"));
    EXPECT_EQ(make("..hidden").code, 0);
    CFURLRef url = nullptr;
    EXPECT_EQ(GetTempFolderURLCocoa(&url, nullptr, nullptr), -43);
    EXPECT_EQ(url, nullptr);
}

TEST_F(TemporaryItemsTest, AFileInTheWayRefusesTheFolder) {
    writeFile(temporary() + "/Photos");
    expectRefused(make("Photos"), -120);
    expectRefused(make("Photos", "Small"), -120);
    ASSERT_EQ(make("Album").code, 0);
    writeFile(temporary() + "/Album/Small");
    expectRefused(make("Album", "Small"), -120);
    EXPECT_EQ(readFile(temporary() + "/Photos"), "bytes");
    EXPECT_EQ(readFile(temporary() + "/Album/Small"), "bytes");
}

TEST_F(TemporaryItemsTest, WithoutATemporaryFolderNothingIsFound) {
    fs::remove_all(temporary());
    const ScopedFaults faults{Fault::TemporaryFolder};
    expectRefused(make("Photos"), -43);
    expectRefused(make("Photos", "Small"), -43);
}

TEST_F(TemporaryItemsTest, TheTemporaryFolderIsPrivateAndNotTheSharedOne) {
    const std::string path = make("Photos").path();
    EXPECT_NE(temporary(), fs::temp_directory_path().string());
    struct stat status {};
    ASSERT_EQ(stat(temporary().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    EXPECT_TRUE(path.starts_with(temporary()));
}

}  // namespace fi::test
