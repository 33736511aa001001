// SPDX-License-Identifier: Apache-2.0
// Opening and closing files of a card, and what is told of an open one.
#include "FileImporter/CMEMCARDFILE.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "FileImporter/CFileImporterCocoa.h"
#include "Foundation/ScopedTimeZone.h"
#include "Foundation/TestText.h"
#include "ImageMetadata/CardProbe.h"
#include "Support/FailingAllocations.h"
#include "Support/Privileges.h"
#include "Support/ScopedFaults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

constexpr DateTimeRec kNoDate{};
constexpr DateTimeRec kUntouched{-1, -2, -3, -4, -5, -6, -7};

bool isOpen(int descriptor) {
    return fcntl(descriptor, F_GETFD) != -1;
}

size_t openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

/// A path of exactly `length` bytes in folders that exist; nothing is at the path itself.
std::string pathOfLength(const TemporaryFolder& folder, size_t length) {
    std::string path = folder.path();
    while (length - path.size() > 201)
        path += "/" + std::string(99, 'd');
    std::filesystem::create_directories(path);
    return path + "/" + std::string(length - path.size() - 1, 'f');
}

/// The offset of a member of `card`.
size_t placeOf(const CardProbe& card, const void* member) {
    return static_cast<size_t>(static_cast<const char*>(member) -
                               reinterpret_cast<const char*>(static_cast<const CMEMCARDFILE*>(&card)));
}

/// Lets as many files be open as a test needs.
class ScopedDescriptorLimit {
public:
    explicit ScopedDescriptorLimit(rlim_t most) {
        getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit wanted{most, std::max(most, m_before.rlim_max)};
        m_granted = setrlimit(RLIMIT_NOFILE, &wanted) == 0;
    }
    ~ScopedDescriptorLimit() { setrlimit(RLIMIT_NOFILE, &m_before); }
    ScopedDescriptorLimit(const ScopedDescriptorLimit&) = delete;
    ScopedDescriptorLimit& operator=(const ScopedDescriptorLimit&) = delete;

    [[nodiscard]] bool granted() const { return m_granted; }

private:
    rlimit m_before{};
    bool m_granted = false;
};

}  // namespace

TEST(CMEMCARDFILETest, MembersStandInTheirHistoricOrderAndWidths) {
    const CardProbe card;
    static_assert(std::is_same_v<decltype(CardProbe::m_descriptor), int16_t>);
    static_assert(std::is_same_v<decltype(CardProbe::m_block), char*>);
    static_assert(std::has_virtual_destructor_v<CMEMCARDFILE>);
    static_assert(sizeof(MEMCARDFILE_INFO) == 52 && sizeof(CMEMCARDFILE) == 96);
    EXPECT_EQ(placeOf(card, &card.m_descriptor), 8U) << "behind the table of virtual functions";
    EXPECT_EQ(placeOf(card, &card.m_block), 16U);
    EXPECT_EQ(placeOf(card, &card.m_blockSize), 24U);
    EXPECT_EQ(placeOf(card, &card.m_bytesInBlock), 28U);
    EXPECT_EQ(placeOf(card, &card.m_readPosition), 32U);
    EXPECT_EQ(placeOf(card, &card.m_info), 36U);
    EXPECT_EQ(placeOf(card, &card.m_info.creationDate), 40U);
    EXPECT_EQ(placeOf(card, &card.m_info.secondDate), 54U);
    EXPECT_EQ(placeOf(card, &card.m_info.modificationDate), 68U);
    EXPECT_EQ(placeOf(card, &card.m_info.trailing), 84U);
    EXPECT_EQ(placeOf(card, &card.m_alignmentUnit), 88U);
}

TEST(CMEMCARDFILETest, ANewReaderIsZeroButForItsUnitOfOneSector) {
    alignas(CardProbe) unsigned char memory[sizeof(CardProbe)];
    std::memset(memory, 0xA5, sizeof memory);
    CardProbe* card = new (memory) CardProbe;
    EXPECT_EQ(card->m_descriptor, 0);
    EXPECT_EQ(card->m_block, nullptr);
    EXPECT_EQ(card->m_blockSize, 0U);
    EXPECT_EQ(card->m_bytesInBlock, 0U);
    EXPECT_EQ(card->m_readPosition, 0U);
    EXPECT_EQ(card->m_info.fileSize, 0U);
    EXPECT_EQ(card->m_info.creationDate, kNoDate);
    EXPECT_EQ(card->m_info.secondDate, kNoDate);
    EXPECT_EQ(card->m_info.modificationDate, kNoDate);
    EXPECT_EQ(card->m_info.trailing, 0U);
    EXPECT_EQ(card->m_alignmentUnit, 512U);
    std::destroy_at(card);
}

TEST(CMEMCARDFILETest, OpeningTellsSizeAndDates) {
    const TemporaryFolder folder;
    const ScopedTimeZone zone("UTC0");
    const std::string path = folder.write("photo.jpg", patternedBytes(1000));
    const timespec times[2] = {{1627821296, 0}, {1627821296, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const auto url = urlAt(path);
    DateTimeRec creation = kUntouched;
    DateTimeRec modification = kUntouched;
    ASSERT_EQ(CMF_GetFileTime(url.get(), &creation, nullptr, &modification), 0);

    CardProbe card;
    uint32_t error = 4711;
    int32_t unused = 4712;
    EXPECT_EQ(card.OpenFile(url.get(), &error, &unused), 1);
    EXPECT_EQ(error, 0U);
    EXPECT_EQ(unused, 4712);
    EXPECT_EQ(card.m_blockSize, 1000U);
    MEMCARDFILE_INFO info{};
    std::memset(&info, 0x5A, sizeof info);
    EXPECT_EQ(card.GetFileInfo(&info, &error), 1);
    EXPECT_EQ(error, 0U);
    EXPECT_EQ(info.fileSize, 1000U);
    EXPECT_EQ(info.creationDate, creation);
    EXPECT_EQ(info.secondDate, kNoDate);
    EXPECT_EQ(info.modificationDate, (DateTimeRec{2021, 8, 1, 12, 34, 56, 1})) << "Sunday is 1";
    EXPECT_EQ(info.modificationDate, modification);
    EXPECT_EQ(info.trailing, 0U);
}

TEST(CMEMCARDFILETest, TheRecordIsCopiedWhole) {
    const TemporaryFolder folder;
    CardProbe card;
    ASSERT_EQ(card.open(urlAt(folder.write("photo.jpg", "bytes")).get()), 0U);
    card.m_info = {77, {1, 2, 3, 4, 5, 6, 7}, {8, 9, 10, 11, 12, 13, 14}, {15, 16, 17, 18, 19, 20, 21}, 88};
    MEMCARDFILE_INFO info{};
    uint32_t error = 4711;
    EXPECT_EQ(card.GetFileInfo(&info, &error), 1);
    EXPECT_EQ(error, 0U);
    EXPECT_EQ(info.fileSize, 77U);
    EXPECT_EQ(info.creationDate, (DateTimeRec{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(info.secondDate, (DateTimeRec{8, 9, 10, 11, 12, 13, 14}));
    EXPECT_EQ(info.modificationDate, (DateTimeRec{15, 16, 17, 18, 19, 20, 21}));
    EXPECT_EQ(info.trailing, 88U);
}

TEST(CMEMCARDFILETest, AMissingFileIsCreatedWithTheUsualRights) {
    const TemporaryFolder folder;
    const mode_t before = umask(022);
    for (const mode_t mask : {mode_t{0}, mode_t{027}}) {
        umask(mask);
        const std::string path = folder.at("new" + std::to_string(mask) + ".jpg");
        CardProbe card;
        EXPECT_EQ(card.open(urlAt(path).get()), 0U);
        EXPECT_EQ(card.m_info.fileSize, 0U);
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_TRUE(S_ISREG(status.st_mode));
        EXPECT_EQ(status.st_mode & 0777U, 0666U & ~mask);
    }
    umask(before);
}

TEST(CMEMCARDFILETest, AnExistingFileKeepsItsBytes) {
    const TemporaryFolder folder;
    const std::string bytes = patternedBytes(3000);
    const std::string path = folder.write("photo.jpg", bytes);
    CardProbe card;
    EXPECT_EQ(card.open(urlAt(path).get()), 0U);
    EXPECT_TRUE(readFile(path) == bytes) << "while it is open";
    card.CloseFile();
    EXPECT_TRUE(readFile(path) == bytes);
}

TEST(CMEMCARDFILETest, TheFileIsOpenForReadingAndWriting) {
    const TemporaryFolder folder;
    CardProbe card;
    ASSERT_EQ(card.open(urlAt(folder.write("photo.jpg", "bytes")).get()), 0U);
    EXPECT_EQ(fcntl(card.m_descriptor, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_EQ(fcntl(card.m_descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(CMEMCARDFILETest, APathOf2047BytesOpensAndALongerOneFails) {
    const TemporaryFolder folder;
    const std::string longest = pathOfLength(folder, 2047);
    ASSERT_EQ(longest.size(), 2047U);
    CardProbe card;
    EXPECT_EQ(card.open(urlAt(longest).get()), 0U);
    EXPECT_TRUE(std::filesystem::exists(longest));

    const std::string tooLong = longest + "f";
    EXPECT_EQ(card.open(urlAt(tooLong).get()), 1U);
    EXPECT_EQ(card.m_descriptor, 0);
    EXPECT_FALSE(std::filesystem::exists(tooLong));
}

TEST(CMEMCARDFILETest, WithoutAPathNothingOpens) {
    CardProbe card;
    EXPECT_EQ(card.open(nullptr), 1U);
    EXPECT_EQ(card.open(urlWithoutPath().get()), 1U);
    EXPECT_EQ(card.m_descriptor, 0);
}

TEST(CMEMCARDFILETest, DescriptorZeroIsAFailureAndIsGivenBack) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.jpg", "bytes"));
    CardProbe card;
    const int standardInput = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    const uint32_t code = card.open(url.get());
    const bool leaked = isOpen(STDIN_FILENO);
    if (standardInput >= 0) {
        dup2(standardInput, STDIN_FILENO);
        close(standardInput);
    }
    EXPECT_EQ(code, 1U);
    EXPECT_EQ(card.m_descriptor, 0);
    EXPECT_EQ(card.m_info.fileSize, 0U) << "nothing behind that step happens";
    EXPECT_FALSE(leaked);
}

TEST(CMEMCARDFILETest, AFileThatCannotBeOpenedGoesOnAsIfItWereOpen) {
    const TemporaryFolder folder;
    CardProbe card;
    EXPECT_EQ(card.open(urlAt(folder.at("no-folder/photo.jpg")).get()), 0U);
    EXPECT_EQ(card.m_descriptor, -1);
    EXPECT_EQ(card.m_info.fileSize, 0U);
    EXPECT_EQ(card.m_info.modificationDate, kNoDate);
    EXPECT_NE(card.m_block, nullptr);
    EXPECT_EQ(card.nextBlock(), (CardAnswer{3})) << "even a read of nothing";
    EXPECT_EQ(card.stretch(0, 10), (CardAnswer{3}));
    card.CloseFile();
    EXPECT_EQ(card.m_descriptor, 0);
}

TEST(CMEMCARDFILETest, AFileOfALockedCardLooksOpenAndCannotBeRead) {
    const TemporaryFolder folder;
    const std::string path = folder.write("photo.jpg", patternedBytes(1000));
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    const OrdinaryUser user;
    CardProbe card;
    EXPECT_EQ(card.open(urlAt(path).get()), 0U);
    EXPECT_EQ(card.m_descriptor, -1);
    EXPECT_EQ(card.m_info.fileSize, 1000U);
    EXPECT_NE(card.m_info.modificationDate, kNoDate);
    uint32_t size = 0;
    uint32_t error = 4711;
    EXPECT_EQ(card.GetMaxSizeofDataBlock(&size, &error), 1);
    EXPECT_EQ(size, 1000U);
    EXPECT_EQ(card.nextBlock(), (CardAnswer{3}));
    EXPECT_EQ(card.stretch(0, 10), (CardAnswer{3}));
    EXPECT_EQ(card.extend(10, 0), (CardAnswer{3}));
}

TEST(CMEMCARDFILETest, ADescriptorTooLargeFor16BitsCountsAsNone) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.jpg", "bytes"));
    const ScopedDescriptorLimit limit(70'000);
    if (!limit.granted()) GTEST_SKIP() << "needs the right to open 70000 files";
    std::vector<int> fillers = {dup(STDERR_FILENO)};
    while (fillers.back() >= 0 && fillers.back() < 65'538)
        fillers.push_back(dup(STDERR_FILENO));
    ASSERT_GE(fillers.back(), 0) << "the system has no files left";
    // 65539 cut to 16 bits is 3: somebody else's.
    const size_t before = openDescriptors();
    CardProbe card;
    EXPECT_EQ(card.open(url.get()), 0U);
    EXPECT_EQ(card.m_descriptor, -1);
    EXPECT_EQ(openDescriptors(), before);
    for (const int filler : fillers)
        close(filler);
}

TEST(CMEMCARDFILETest, ASizeOfAllOnesFails) {
    const TemporaryFolder folder;
    const std::string path = folder.write("huge.tif", "");
    if (truncate(path.c_str(), 0xFFFFFFFFLL) != 0) GTEST_SKIP() << "needs a file system with sparse files";
    CardProbe card;
    EXPECT_EQ(card.open(urlAt(path).get()), 1U);
    EXPECT_NE(card.m_descriptor, 0);
    EXPECT_EQ(card.m_info.fileSize, 0xFFFFFFFFU);
    EXPECT_EQ(card.m_blockSize, 0xFFFFFFFFU);
    EXPECT_EQ(card.m_info.modificationDate, kNoDate) << "dates come later";
    EXPECT_EQ(card.m_block, nullptr);
}

TEST(CMEMCARDFILETest, FailingDatesAndMemoryHaveTheirCodes) {
    struct Case {
        Fault fault;
        uint32_t code;
    };
    for (const Case& expected : {Case{Fault::FileTimes, 1}, Case{Fault::Allocation, 2}}) {
        const TemporaryFolder folder;
        const auto url = urlAt(folder.write("photo.jpg", "bytes"));
        const size_t before = openDescriptors();
        CardProbe card;
        {
            const ScopedFaults faults{expected.fault};
            EXPECT_EQ(card.open(url.get()), expected.code);
        }
        EXPECT_TRUE(isOpen(card.m_descriptor)) << "what is there stays until CloseFile";
        EXPECT_EQ(card.m_blockSize, 5U);
        EXPECT_EQ(card.m_block, nullptr);
        EXPECT_EQ(card.nextBlock(), (CardAnswer{3})) << "there is no block to read to";
        card.CloseFile();
        EXPECT_EQ(card.m_descriptor, 0);
        EXPECT_EQ(openDescriptors(), before);
    }
}

TEST(CMEMCARDFILETest, NothingIsThrownWithoutMemoryForTheDates) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("a-name-that-needs-memory-of-its-own.jpg", "bytes"));
    CardProbe card;
    uint32_t code = 0;
    bool happened = false;
    {
        const FailingAllocations none(0);
        code = card.open(url.get());
        happened = none.happened();
    }
    EXPECT_EQ(code, 1U);
    EXPECT_TRUE(happened);
}

TEST(CMEMCARDFILETest, TimesOfAFileNeedNoOpenFile) {
    const TemporaryFolder folder;
    const auto there = urlAt(folder.write("photo.jpg", "bytes"));
    const auto missing = urlAt(folder.at("missing.jpg"));
    for (const CFURLRef url : {there.get(), missing.get(), CFURLRef{nullptr}}) {
        DateTimeRec wanted[2] = {kUntouched, kUntouched};
        const OSErr code = CMF_GetFileTime(url, &wanted[0], nullptr, &wanted[1]);
        CardProbe card;
        DateTimeRec dates[3] = {kUntouched, kUntouched, kUntouched};
        EXPECT_EQ(card.GetFileTime(url, &dates[0], &dates[1], &dates[2]), code);
        EXPECT_EQ(dates[0], wanted[0]);
        EXPECT_EQ(dates[1], kUntouched) << "never written";
        EXPECT_EQ(dates[2], wanted[1]);
    }
    CardProbe card;
    DateTimeRec date = kUntouched;
    EXPECT_EQ(card.GetFileTime(there.get(), nullptr, nullptr, &date), -2700);
    EXPECT_EQ(card.GetFileTime(there.get(), &date, nullptr, nullptr), -2700);
    EXPECT_EQ(card.GetFileTime(nullptr, nullptr, nullptr, nullptr), -43);
    EXPECT_FALSE(std::filesystem::exists(folder.at("missing.jpg"))) << "asking creates nothing";
}

TEST(CMEMCARDFILETest, ClosingTwiceIsSafe) {
    const TemporaryFolder folder;
    const size_t before = openDescriptors();
    CardProbe card;
    ASSERT_EQ(card.open(urlAt(folder.write("photo.jpg", "bytes")).get()), 0U);
    const int descriptor = card.m_descriptor;
    EXPECT_TRUE(isOpen(descriptor));
    card.CloseFile();
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_EQ(card.m_descriptor, 0);
    EXPECT_EQ(card.m_block, nullptr);
    const int next = dup(STDERR_FILENO);
    EXPECT_EQ(next, descriptor) << "somebody else has the number now";
    card.CloseFile();
    EXPECT_TRUE(isOpen(next));
    close(next);
    EXPECT_EQ(openDescriptors(), before);
    CardProbe unopened;
    unopened.CloseFile();
    EXPECT_EQ(unopened.m_descriptor, 0);
}

TEST(CMEMCARDFILETest, OpeningAnotherFileGivesTheFirstBack) {
    const TemporaryFolder folder;
    const auto first = urlAt(folder.write("1.jpg", "bytes"));
    const auto second = urlAt(folder.write("2.jpg", "more bytes"));
    const size_t before = openDescriptors();
    CardProbe card;
    ASSERT_EQ(card.open(first.get()), 0U);
    ASSERT_EQ(card.open(second.get()), 0U);
    EXPECT_EQ(openDescriptors(), before + 1);
    EXPECT_EQ(card.nextBlock(), (CardAnswer{0, 10, "more bytes", 0}));
}

TEST(CMEMCARDFILETest, TheDestructorDoesNotClose) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.jpg", "bytes"));
    struct Members : CMEMCARDFILE {
        using CMEMCARDFILE::m_block;
        using CMEMCARDFILE::m_descriptor;
    };
    auto card = std::make_unique<Members>();
    uint32_t error = 4711;
    ASSERT_EQ(card->OpenFile(url.get(), &error, nullptr), 1);
    const int descriptor = card->m_descriptor;
    char* block = card->m_block;
    card.reset();
    EXPECT_TRUE(isOpen(descriptor));
    close(descriptor);
    std::free(block);
}

TEST(CMEMCARDFILETest, AReaderThatIsNotOpenSaysSo) {
    CardProbe card;
    MEMCARDFILE_INFO info{};
    uint32_t size = 4712;
    uint32_t error = 4711;
    EXPECT_EQ(card.GetMaxSizeofDataBlock(&size, &error), 0);
    EXPECT_EQ(error, 4U);
    EXPECT_EQ(size, 4712U);
    error = 4711;
    EXPECT_EQ(card.ReadImage1Block(&error), 0);
    EXPECT_EQ(error, 4U);
    error = 4711;
    EXPECT_EQ(card.GetFileInfo(&info, &error), 0);
    EXPECT_EQ(error, 4U);
    EXPECT_EQ(card.nextBlock(), (CardAnswer{4}));
    EXPECT_EQ(card.stretch(0, 10), (CardAnswer{4}));
    EXPECT_EQ(card.extend(10, 0), (CardAnswer{4}));
    EXPECT_EQ(card.extend(10, -1), (CardAnswer{4}));
    const ScopedFaults faults{Fault::Allocation};
    EXPECT_EQ(card.stretch(0, 10), (CardAnswer{4})) << "before memory is asked for";
}

TEST(CMEMCARDFILETest, AClosedReaderSaysTheSame) {
    const TemporaryFolder folder;
    CardProbe card;
    ASSERT_EQ(card.open(urlAt(folder.write("photo.jpg", "bytes")).get()), 0U);
    card.CloseFile();
    EXPECT_EQ(card.nextBlock(), (CardAnswer{4}));
    EXPECT_EQ(card.stretch(0, 3), (CardAnswer{4}));
    EXPECT_EQ(card.extend(3, 0), (CardAnswer{4}));
}

}  // namespace fi::test
