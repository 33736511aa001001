// SPDX-License-Identifier: Apache-2.0
// The library's own folders. Each case runs in a process of its own, since a process chooses once.
#include "PlatformKit/PrivateFolders.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>

#include "PlatformKit/Base/Faults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;

class PrivateFolders : public testing::Test {
protected:
    TemporaryFolder m_home;

    /// Runs `work` in a new process whose folders lie in m_home, lets it exit as programs do, and returns
    /// what `work` returned.
    [[nodiscard]] std::string inProcess(const std::function<std::string()>& work) const {
        std::array<int, 2> pipe{};
        EXPECT_EQ(::pipe(pipe.data()), 0);
        const pid_t child = fork();
        if (child == 0) {
            prepare();
            const std::string answer = work();
            const bool told =
                write(pipe[1], answer.data(), answer.size()) == static_cast<ssize_t>(answer.size());
            std::exit(told ? 0 : 1);
        }
        close(pipe[1]);
        std::string answer(4096, '\0');
        answer.resize(
            static_cast<size_t>(std::max<ssize_t>(0, ::read(pipe[0], answer.data(), answer.size()))));
        close(pipe[0]);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
        return answer;
    }

    void prepare() const {
        setenv("TMPDIR", m_home.makeFolder("tmp").c_str(), 1);
        setenv("XDG_CACHE_HOME", m_home.at("cache").c_str(), 1);
        setenv("HOME", m_home.at("home").c_str(), 1);
    }

    [[nodiscard]] std::string at(std::string_view name) const { return m_home.at(name); }
};

std::string text(const Ref<const CFURL>& url) {
    return url ? std::string(url->path()->view()) : "(none)";
}

std::string modeOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return "missing";
    std::array<char, 8> octal{};
    std::snprintf(octal.data(), octal.size(), "%03o", status.st_mode & 0777U);
    return octal.data();
}

TEST_F(PrivateFolders, TemporaryFolderIsPrivateAndGoesWithTheProcess) {
    const std::string answer = inProcess([] {
        const std::string path = text(copyTemporaryFolder());
        const bool same = text(copyTemporaryFolder()) == path;
        (void)(std::fopen((path + "/left behind").c_str(), "w"));
        return modeOf(path) + (same ? " " : " another ") + path;
    });
    ASSERT_TRUE(answer.starts_with("700 /")) << answer;
    const std::string path = answer.substr(4);
    EXPECT_TRUE(path.starts_with(at("tmp/FilesTests-"))) << path;
    EXPECT_FALSE(fs::exists(path)) << "removed with all it held";
    EXPECT_TRUE(fs::is_empty(at("tmp")));
}

TEST_F(PrivateFolders, TwoProcessesHaveTemporaryFoldersOfTheirOwn) {
    const std::string answer = inProcess([&] {
        const std::string mine = text(copyTemporaryFolder());
        // The second process is started by the first, so that both live at the same time.
        const std::string other = PrivateFolders::inProcess([] { return std::string("x"); });
        return (fs::exists(mine) ? "there " : "gone ") + other;
    });
    EXPECT_EQ(answer, "there x") << "a child that ends must not remove its parent's folder";
}

TEST_F(PrivateFolders, TemporaryFolderThatVanishedIsMadeAnew) {
    EXPECT_EQ(inProcess([] {
                  const std::string first = text(copyTemporaryFolder());
                  fs::remove_all(first);
                  const std::string second = text(copyTemporaryFolder());
                  return std::string(first != second && fs::exists(second) ? "new" : "old");
              }),
              "new");
    EXPECT_TRUE(fs::is_empty(at("tmp")));
}

TEST_F(PrivateFolders, CacheFolderThatVanishedIsMadeAgainInItsPlace) {
    EXPECT_EQ(inProcess([] {
                  const std::string first = text(copyCacheFolder());
                  fs::remove_all(first);
                  const std::string second = text(copyCacheFolder());
                  return std::string(first == second && fs::is_directory(second) ? "again" : "gone");
              }),
              "again");
}

TEST_F(PrivateFolders, ChosenTemporaryFolderIsUsedAndNeverRemoved) {
    EXPECT_EQ(inProcess([&] {
                  const bool accepted = setTemporaryFolder(at("mine/deep"));
                  return (accepted ? "accepted " : "refused ") + text(copyTemporaryFolder());
              }),
              "accepted " + at("mine/deep"));
    EXPECT_TRUE(fs::is_directory(at("mine/deep")));
}

TEST_F(PrivateFolders, NothingCanBeChosenAfterTheFirstUse) {
    EXPECT_EQ(
        inProcess([&] {
            (void)copyTemporaryFolder();
            (void)copyCacheFolder();
            return std::string(setTemporaryFolder(at("late")) || setCacheFolder(at("late")) ? "yes" : "no");
        }),
        "no");
    EXPECT_FALSE(fs::exists(at("late")));
}

TEST_F(PrivateFolders, EmptyChoiceIsNone) {
    EXPECT_EQ(
        inProcess([] { return std::string(setTemporaryFolder("") || setCacheFolder("") ? "yes" : "no"); }),
        "no");
}

TEST_F(PrivateFolders, CacheFolderIsTheProgramsOwnAndStays) {
    EXPECT_EQ(inProcess([] { return modeOf(text(copyCacheFolder())) + " " + text(copyCacheFolder()); }),
              "700 " + at("cache/FilesTests/FileImporter"));
    EXPECT_TRUE(fs::is_directory(at("cache/FilesTests/FileImporter")));
}

TEST_F(PrivateFolders, SecondRunningCopyGetsACacheFolderOfItsOwn) {
    const auto cacheFolder = [] { return text(copyCacheFolder()); };
    const std::string folder = at("cache/FilesTests/FileImporter");
    std::array<int, 2> goOn{};
    std::array<int, 2> ready{};
    ASSERT_EQ(pipe(goOn.data()), 0);
    ASSERT_EQ(pipe(ready.data()), 0);
    const pid_t running = fork();
    if (running == 0) {
        prepare();
        close(goOn[1]);
        char byte = copyCacheFolder() ? 'y' : 'n';
        const bool told = write(ready[1], &byte, 1) == 1 && ::read(goOn[0], &byte, 1) == 0;
        std::exit(told ? 0 : 1);
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'y');
    EXPECT_EQ(inProcess(cacheFolder), folder + ".2");
    for (const int end : {goOn[0], goOn[1], ready[0], ready[1]})
        close(end);
    int status = 0;
    EXPECT_EQ(waitpid(running, &status, 0), running);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(inProcess(cacheFolder), folder) << "free again when the copy has ended";
}

TEST_F(PrivateFolders, ChosenCacheFolderIsUsed) {
    EXPECT_EQ(inProcess([&] {
                  const bool accepted = setCacheFolder(at("my cache"));
                  return (accepted ? "accepted " : "refused ") + text(copyCacheFolder());
              }),
              "accepted " + at("my cache"));
    EXPECT_TRUE(fs::is_directory(at("my cache")));
    EXPECT_FALSE(fs::exists(at("cache")));
}

TEST_F(PrivateFolders, CacheFolderIsInTheHomeFolderWithoutAnotherWish) {
    EXPECT_EQ(inProcess([] {
                  unsetenv("XDG_CACHE_HOME");
                  return text(copyCacheFolder());
              }),
              at("home/.cache/FilesTests/FileImporter"));
    EXPECT_EQ(inProcess([] {
                  setenv("XDG_CACHE_HOME", "relative", 1);
                  return text(copyCacheFolder());
              }),
              at("home/.cache/FilesTests/FileImporter"))
        << "a relative wish counts as none";
}

TEST_F(PrivateFolders, CacheFolderThatOthersMayWriteIsNotUsed) {
    const std::string shared = m_home.makeFolder("cache/FilesTests/FileImporter");
    fs::permissions(shared, fs::perms::all);
    const std::string answer = inProcess([] { return text(copyCacheFolder()); });
    EXPECT_TRUE(answer.starts_with(at("tmp/"))) << answer;
    EXPECT_TRUE(answer.ends_with("/FileImporter")) << answer;
}

TEST_F(PrivateFolders, CacheFolderThatIsALinkIsNotUsed) {
    m_home.makeFolder("elsewhere");
    m_home.link("cache/FilesTests/FileImporter", at("elsewhere"));
    const std::string answer = inProcess([] { return text(copyCacheFolder()); });
    EXPECT_TRUE(answer.starts_with(at("tmp/"))) << answer;
}

TEST_F(PrivateFolders, WithoutAnyPlaceThereIsNone) {
    EXPECT_EQ(inProcess([] {
                  setenv("TMPDIR", "/proc/nowhere", 1);
                  setenv("XDG_CACHE_HOME", "/proc/nowhere", 1);
                  return text(copyTemporaryFolder()) + " " + text(copyCacheFolder());
              }),
              "(none) (none)");
}

TEST_F(PrivateFolders, TemporaryFolderCanBeMadeToFail) {
    EXPECT_EQ(inProcess([] {
                  g_faultInjector = [](Fault fault, std::string_view) {
                      return fault == Fault::TemporaryFolder;
                  };
                  const std::string first = text(copyTemporaryFolder());
                  g_faultInjector = nullptr;
                  return first + (copyTemporaryFolder() ? " then one" : " for ever");
              }),
              "(none) then one");
}

}  // namespace

}  // namespace fi::test
