// SPDX-License-Identifier: Apache-2.0
// Blocks of a card's file in sequence, and files that are no files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "Foundation/TestText.h"
#include "ImageMetadata/CardProbe.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

class CMEMCARDFILESequenceTest : public ::testing::Test {
protected:
    void openFile(const std::string& bytes) {
        m_bytes = bytes;
        m_path = m_folder.write("photo.jpg", bytes);
        ASSERT_EQ(m_card.open(urlAt(m_path).get()), 0U);
    }

    TemporaryFolder m_folder;
    std::string m_bytes;
    std::string m_path;
    CardProbe m_card;
};

}  // namespace

TEST_F(CMEMCARDFILESequenceTest, TheLargestBlockIsTheWholeFile) {
    openFile(patternedBytes(1000));
    uint32_t size = 4712;
    uint32_t error = 4711;
    EXPECT_EQ(m_card.GetMaxSizeofDataBlock(&size, &error), 1);
    EXPECT_EQ(size, 1000U);
    EXPECT_EQ(error, 0U);
    m_card.m_blockSize = 77;
    EXPECT_EQ(m_card.GetMaxSizeofDataBlock(&size, &error), 1);
    EXPECT_EQ(size, 77U) << "the block's size, not the file's";
}

TEST_F(CMEMCARDFILESequenceTest, TheFirstBlockIsTheWholeFileAndTheSecondIsEmpty) {
    openFile(patternedBytes(1000));
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 1000, m_bytes, 0}));
    EXPECT_EQ(m_card.m_readPosition, 1000U);
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 0, "", 0}));
    EXPECT_EQ(m_card.m_readPosition, 1000U);
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 0, "", 0}));
}

TEST_F(CMEMCARDFILESequenceTest, AnEmptyFileHasOneEmptyBlock) {
    openFile("");
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 0, "", 0}));
}

TEST_F(CMEMCARDFILESequenceTest, SmallerBlocksTellWhetherMoreFollows) {
    openFile(patternedBytes(1000));
    m_card.m_blockSize = 400;
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 400, m_bytes.substr(0, 400), 1}));
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 400, m_bytes.substr(400, 400), 1}));
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 200, m_bytes.substr(800), 0}));
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 0, "", 0}));
}

TEST_F(CMEMCARDFILESequenceTest, ABlockCanBeReadWithoutACopy) {
    openFile(patternedBytes(1000));
    uint32_t error = 4711;
    EXPECT_EQ(m_card.ReadImage1Block(&error), 1);
    EXPECT_EQ(error, 0U);
    EXPECT_EQ(m_card.m_bytesInBlock, 1000U);
    EXPECT_TRUE(std::string(m_card.m_block, 1000) == m_bytes);
    EXPECT_EQ(m_card.m_readPosition, 1000U);
}

TEST_F(CMEMCARDFILESequenceTest, AFileThatShrankIsAFailedReadAndThePositionStays) {
    openFile(patternedBytes(1000));
    m_card.m_blockSize = 400;
    ASSERT_EQ(m_card.nextBlock().code, 0U);
    ASSERT_EQ(truncate(m_path.c_str(), 700), 0);
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{3}));
    EXPECT_EQ(m_card.m_readPosition, 400U);
    EXPECT_EQ(m_card.m_bytesInBlock, 300U) << "what came";
}

TEST_F(CMEMCARDFILESequenceTest, AReadThatTheSystemRefusesFailsAndThePositionStays) {
    openFile(patternedBytes(1000));
    const int16_t descriptor = m_card.m_descriptor;
    m_card.m_descriptor = -1;
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{3}));
    EXPECT_EQ(m_card.m_readPosition, 0U);
    EXPECT_EQ(m_card.m_bytesInBlock, 0xFFFFFFFFU) << "the -1 that came";
    m_card.m_descriptor = descriptor;
}

TEST_F(CMEMCARDFILESequenceTest, AFileThatGrewIsReadToItsFormerEnd) {
    openFile(patternedBytes(1000));
    std::ofstream(m_path, std::ios::app) << "more";
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 1000, m_bytes, 0}));
}

TEST_F(CMEMCARDFILESequenceTest, TheReadPositionOutlivesClosing) {
    openFile(patternedBytes(1000));
    ASSERT_EQ(m_card.nextBlock().code, 0U);
    m_card.CloseFile();
    ASSERT_EQ(m_card.open(urlAt(m_path).get()), 0U);
    EXPECT_EQ(m_card.m_readPosition, 1000U);
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 0, "", 0}));
}

TEST_F(CMEMCARDFILESequenceTest, OfALinkTheTargetIsReadAndTheLinksOwnLengthCounts) {
    m_bytes = patternedBytes(1000);
    m_folder.write("photo.jpg", m_bytes);
    ASSERT_EQ(m_card.open(urlAt(m_folder.link("link.jpg", "photo.jpg")).get()), 0U);
    EXPECT_EQ(m_card.m_info.fileSize, 9U) << "the letters of photo.jpg";
    EXPECT_EQ(m_card.m_blockSize, 9U);
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 9, m_bytes.substr(0, 9), 0}));
}

TEST_F(CMEMCARDFILESequenceTest, AFolderLooksOpenAndCannotBeRead) {
    ASSERT_EQ(m_card.open(urlAt(m_folder.makeFolder("DCIM")).get()), 0U);
    EXPECT_EQ(m_card.m_descriptor, -1);
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{3}));
    EXPECT_EQ(m_card.stretch(0, 10), (CardAnswer{3}));
    EXPECT_EQ(m_card.extend(10, 0), (CardAnswer{3}));
}

TEST_F(CMEMCARDFILESequenceTest, APipeAnswersAtOnce) {
    const std::string path = m_folder.at("pipe.jpg");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    ASSERT_EQ(m_card.open(urlAt(path).get()), 0U);
    EXPECT_GT(m_card.m_descriptor, 0);
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 0, "", 0})) << "a file of no bytes";
    EXPECT_EQ(m_card.stretch(0, 10), (CardAnswer{3})) << "cannot be sought";
    EXPECT_EQ(m_card.extend(10, 0), (CardAnswer{3}));
    EXPECT_EQ(m_card.extend(10, -1), (CardAnswer{3, 0xFFFFFFFF})) << "nothing to read, and no waiting";
    ASSERT_EQ(write(m_card.m_descriptor, "bytes", 5), 5);
    EXPECT_EQ(m_card.extend(10, -1), (CardAnswer{3, 5})) << "more than the file has";
}

TEST_F(CMEMCARDFILESequenceTest, ADeviceAnswersAtOnce) {
    ASSERT_EQ(m_card.open(urlAt("/dev/zero").get()), 0U);
    ASSERT_GT(m_card.m_descriptor, 0);
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 0, "", 0}));
    for (const uint32_t offset : {0U, 100U, 4096U, 0xFFFFFFFFU}) {
        for (const uint32_t length : {10U, 100'000U, 0xFFFFFFFFU})
            EXPECT_EQ(m_card.stretch(offset, length), (CardAnswer{3})) << offset << " " << length;
    }
}

}  // namespace fi::test
