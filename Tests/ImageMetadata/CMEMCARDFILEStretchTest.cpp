// SPDX-License-Identifier: Apache-2.0
// Stretches of a card's file at any offset, and their widening to whole alignment units.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "Foundation/TestText.h"
#include "ImageMetadata/CardModel.h"
#include "ImageMetadata/CardProbe.h"
#include "Support/ScopedFaults.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

constexpr uint32_t kUnit = 512;
constexpr uint32_t kHuge = 0xFFFFFFFF;

class CMEMCARDFILEStretchTest : public ::testing::Test {
protected:
    void openFile(size_t size) {
        m_card.CloseFile();
        m_bytes = patternedBytes(size);
        m_path = m_folder.write("photo.jpg", m_bytes);
        ASSERT_EQ(m_card.open(urlAt(m_path).get()), 0U);
    }

    /// The bytes from `offset` on, `length` at most.
    [[nodiscard]] CardAnswer bytesAt(size_t offset, size_t length) const {
        const std::string bytes = m_bytes.substr(offset, length);
        return {kTagNoError, static_cast<uint32_t>(bytes.size()), bytes};
    }

    TemporaryFolder m_folder;
    std::string m_bytes;
    std::string m_path;
    CardProbe m_card;
};

/// The most address space, in kilobytes, that this process has had.
uint64_t peakAddressSpace() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmPeak:", 0) == 0) return std::stoull(line.substr(7));
    }
    return 0;
}

struct Extended {
    int64_t offset;
    int64_t lead;
    uint32_t length;
    uint32_t units;

    friend bool operator==(const Extended&, const Extended&) = default;
};

Extended extended(CardProbe& card, int64_t offset, uint32_t length, uint32_t limit) {
    Extended result{offset, -4711, length, 0};
    result.units = card.CalcExtendSize(&result.offset, &result.lead, &result.length, limit);
    return result;
}

std::ostream& operator<<(std::ostream& out, const Extended& e) {
    return out << "{" << e.offset << ", " << e.lead << ", " << e.length << ", " << e.units << "}";
}

}  // namespace

TEST_F(CMEMCARDFILEStretchTest, TheBytesStartExactlyAtTheOffset) {
    openFile(3000);
    for (const uint32_t offset :
         {0U, 1U, kUnit - 1, kUnit, kUnit + 1, 2 * kUnit - 1, 2 * kUnit, 2 * kUnit + 1, 2999U}) {
        for (const uint32_t length : {0U, 1U, 2U, kUnit - 1, kUnit, kUnit + 1, 1500U})
            EXPECT_EQ(m_card.stretch(offset, length), bytesAt(offset, length)) << offset << " " << length;
    }
}

TEST_F(CMEMCARDFILEStretchTest, AnyUnitGivesTheSameBytes) {
    openFile(3000);
    for (const uint32_t unit : {1U, 2U, 7U, 100U, 2999U, 3000U, 4096U, 0x80000000U, kHuge}) {
        m_card.m_alignmentUnit = unit;
        for (const uint32_t offset : {0U, 6U, 7U, 8U, 1000U, 2999U, 3000U})
            EXPECT_EQ(m_card.stretch(offset, 50), bytesAt(offset, 50)) << unit << " " << offset;
    }
}

TEST_F(CMEMCARDFILEStretchTest, AStretchThatReachesPastTheEndIsCutThere) {
    openFile(1000);
    EXPECT_EQ(m_card.stretch(900, 500), bytesAt(900, 100));
    EXPECT_EQ(m_card.stretch(0, 1001), bytesAt(0, 1000));
    EXPECT_EQ(m_card.stretch(999, 2), bytesAt(999, 1));
    EXPECT_EQ(m_card.stretch(512, 60'000), bytesAt(512, 488));
}

TEST_F(CMEMCARDFILEStretchTest, AtTheEndThereIsNothing) {
    for (const uint32_t size : {0U, 1U, 511U, 512U, 513U, 1000U, 1024U}) {
        openFile(size);
        for (const uint32_t length : {0U, 1U, 600U, kHuge})
            EXPECT_EQ(m_card.stretch(size, length), (CardAnswer{0, 0, ""})) << size << " " << length;
    }
}

TEST_F(CMEMCARDFILEStretchTest, AnOffsetBehindTheEndFails) {
    struct Case {
        uint32_t size;
        uint32_t offset;
    };
    for (const Case& c :
         {Case{1000, 1001}, Case{1000, 1023}, Case{1000, 1024}, Case{1024, 1030}, Case{0, 1}, Case{0, 512},
          Case{1000, 5000}, Case{1000, 0x80000000}, Case{1000, kHuge - 511}, Case{1000, kHuge}}) {
        openFile(c.size);
        for (const uint32_t length : {0U, 1U, 100U, 5000U, kHuge}) {
            char dest[100] = {};
            uint32_t got = 4712;
            uint32_t error = 4711;
            EXPECT_EQ(m_card.GetDataBlockSpecification(dest, c.offset, length, &got, &error), 0);
            EXPECT_EQ(error, 3U) << c.size << " " << c.offset << " " << length;
            EXPECT_EQ(got, 4712U);
            EXPECT_EQ(std::string(dest, sizeof dest), std::string(sizeof dest, '\0'))
                << "nothing is copied";
        }
    }
}

TEST_F(CMEMCARDFILEStretchTest, LengthsUpTo32BitsNeitherWrapNorTakeMemory) {
    openFile(1000);
    const uint64_t before = peakAddressSpace();
    ASSERT_GT(before, 0U);
    for (const uint32_t length : {0x7FFFFFFFU, kHuge - 1024, kHuge - 511, kHuge - 1, kHuge}) {
        for (const uint32_t offset : {0U, 1U, 511U, 512U, 700U, 1000U})
            EXPECT_EQ(m_card.stretch(offset, length, 1000), bytesAt(offset, 1000))
                << offset << " " << length;
    }
    EXPECT_LT(peakAddressSpace() - before, 500'000U) << "kilobytes; the lengths are 2 to 4 gigabytes";
}

TEST_F(CMEMCARDFILEStretchTest, WithoutMemoryItSaysSo) {
    openFile(1000);
    const ScopedFaults faults{Fault::Allocation};
    EXPECT_EQ(m_card.stretch(0, 10), (CardAnswer{2}));
}

TEST_F(CMEMCARDFILEStretchTest, AFileThatChangedItsLengthFails) {
    openFile(1000);
    EXPECT_EQ(m_card.stretch(500, 600), bytesAt(500, 600));
    std::ofstream(m_path, std::ios::app) << std::string(24, 'x');
    EXPECT_EQ(m_card.stretch(500, 600), (CardAnswer{3})) << "24 bytes more than expected";
    EXPECT_EQ(m_card.stretch(500, kHuge), (CardAnswer{3}));
    ASSERT_EQ(truncate(m_path.c_str(), 999), 0);
    EXPECT_EQ(m_card.stretch(500, 600), (CardAnswer{3})) << "a byte too few";
    EXPECT_EQ(m_card.stretch(0, 500), bytesAt(0, 500)) << "where nothing changed";
}

TEST_F(CMEMCARDFILEStretchTest, TheReadPositionStays) {
    openFile(3000);
    m_card.m_blockSize = 100;
    ASSERT_EQ(m_card.nextBlock().code, 0U);
    EXPECT_EQ(m_card.stretch(1000, 100).code, 0U);
    EXPECT_EQ(m_card.m_readPosition, 100U);
    EXPECT_EQ(m_card.stretch(5000, 100).code, 3U);
    EXPECT_EQ(m_card.m_readPosition, 100U);
    EXPECT_EQ(m_card.extend(100, 700).code, 0U);
    EXPECT_EQ(m_card.m_readPosition, 100U);
}

TEST_F(CMEMCARDFILEStretchTest, AfterwardsTheFileStandsAtTheUnitPlusTheReadPosition) {
    openFile(3000);
    m_card.m_blockSize = 100;
    ASSERT_EQ(m_card.nextBlock().code, 0U);
    ASSERT_EQ(m_card.stretch(1000, 100).code, 0U);
    EXPECT_EQ(m_card.place(), 512 + 100);
    ASSERT_EQ(m_card.extend(100, 1000).code, 0U);
    EXPECT_EQ(m_card.place(), 1000 + 100);
    ASSERT_EQ(m_card.stretch(3, 100).code, 0U);
    EXPECT_EQ(m_card.place(), 0 + 100) << "only here the next block is the right one";
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{0, 100, m_bytes.substr(100, 100), 1}));
}

TEST_F(CMEMCARDFILEStretchTest, ABlockAfterAStretchStartsWhereTheFileStands) {
    openFile(1000);
    ASSERT_EQ(m_card.stretch(600, 10).code, 0U);
    EXPECT_EQ(m_card.nextBlock(), (CardAnswer{3})) << "488 bytes follow, 1000 are expected";
    EXPECT_EQ(m_card.m_bytesInBlock, 488U);
    EXPECT_EQ(m_card.m_readPosition, 0U);
}

TEST_F(CMEMCARDFILEStretchTest, ExtendReadsAllThatIsAskedOrThatTheFileHas) {
    openFile(1000);
    EXPECT_EQ(m_card.extend(100, 0), bytesAt(0, 100));
    EXPECT_EQ(m_card.extend(100, 333), bytesAt(333, 100));
    EXPECT_EQ(m_card.extend(100, 950), bytesAt(950, 50));
    EXPECT_EQ(m_card.extend(100, 1000), (CardAnswer{0, 0, ""}));
    EXPECT_EQ(m_card.extend(0, 2000), (CardAnswer{0, 0, ""})) << "not one byte is missing";
}

TEST_F(CMEMCARDFILEStretchTest, ExtendBehindTheEndExpectsAllAndFails) {
    openFile(1000);
    EXPECT_EQ(m_card.extend(100, 1001), (CardAnswer{3, 0}));
    EXPECT_EQ(m_card.extend(1, 1'000'000), (CardAnswer{3, 0}));
    // Offsets count modulo 2^32: here everything of the file is expected.
    EXPECT_EQ(m_card.extend(100, (int64_t{1} << 32) + 950), (CardAnswer{3, 0}));
    EXPECT_EQ(m_card.extend(100, (int64_t{1} << 32) + 1000), (CardAnswer{0, 0, ""}));
    EXPECT_EQ(m_card.extend(100, std::numeric_limits<int64_t>::max()).code, 3U);
}

TEST_F(CMEMCARDFILEStretchTest, ExtendAsksForTheFullLength) {
    openFile(1000);
    std::ofstream(m_path, std::ios::app) << std::string(50, 'x');
    EXPECT_EQ(m_card.extend(2000, 0), (CardAnswer{3, 1050})) << "all that is there, against 1000";
    EXPECT_EQ(m_card.extend(100, 1001), (CardAnswer{3, 49}));
    EXPECT_EQ(m_card.extend(40, 1001), (CardAnswer{0, 40, std::string(40, 'x')}))
        << "behind the former end everything is expected, and came";
    ASSERT_EQ(truncate(m_path.c_str(), 700), 0);
    EXPECT_EQ(m_card.extend(1000, 0), (CardAnswer{3, 700}));
}

TEST_F(CMEMCARDFILEStretchTest, ANegativeOffsetReadsWhereTheFileStands) {
    openFile(1000);
    m_card.m_blockSize = 300;
    ASSERT_EQ(m_card.nextBlock().code, 0U);
    EXPECT_EQ(m_card.extend(100, -5), bytesAt(300, 100));
    EXPECT_EQ(m_card.place(), 300 - 5) << "the offset plus the read position";
    // 705 bytes are there, those behind the read position are expected.
    EXPECT_EQ(m_card.extend(800, -5), (CardAnswer{3, 705}));
    EXPECT_EQ(m_card.place(), 1000);
    ASSERT_EQ(lseek(m_card.m_descriptor, 300, SEEK_SET), 300);
    EXPECT_EQ(m_card.extend(800, -300), bytesAt(300, 700));
    EXPECT_EQ(m_card.place(), 0);
}

TEST_F(CMEMCARDFILEStretchTest, ANegativeOffsetThatCannotBeReturnedToFails) {
    openFile(1000);
    EXPECT_EQ(m_card.extend(100, -1), (CardAnswer{3, 100}));
    EXPECT_EQ(m_card.place(), 100) << "no seek in front, none behind";
    EXPECT_EQ(m_card.extend(100, std::numeric_limits<int64_t>::min()), (CardAnswer{3, 100}));
    EXPECT_EQ(m_card.place(), 200);
}

TEST_F(CMEMCARDFILEStretchTest, ARefusedSeekLeavesTheCountAlone) {
    openFile(1000);
    const int16_t descriptor = m_card.m_descriptor;
    m_card.m_descriptor = -1;
    EXPECT_EQ(m_card.extend(100, 0), (CardAnswer{3, 0}));
    EXPECT_EQ(m_card.extend(100, -1), (CardAnswer{3, kHuge})) << "the read's -1";
    m_card.m_descriptor = descriptor;
}

TEST_F(CMEMCARDFILEStretchTest, CalcExtendSizeWidensToWholeUnits) {
    struct Case {
        int64_t offset;
        uint32_t length;
        uint32_t limit;
        Extended expected;
    };
    constexpr uint32_t kNoLimit = kHuge;
    const Case cases[] = {
        {0, 0, kNoLimit, {0, 0, 0, 0}},
        {0, 1, kNoLimit, {0, 0, 512, 1}},
        {0, 512, kNoLimit, {0, 0, 512, 1}},
        {0, 513, kNoLimit, {0, 0, 1024, 2}},
        {511, 1, kNoLimit, {0, 511, 512, 1}},
        {511, 2, kNoLimit, {0, 511, 1024, 2}},
        {512, 1, kNoLimit, {512, 0, 512, 1}},
        {513, 511, kNoLimit, {512, 1, 512, 1}},
        {1000, 0, kNoLimit, {512, 488, 512, 1}},
        {1000, 100, kNoLimit, {512, 488, 1024, 2}},
        // The limit cuts the length, not the units.
        {1000, 100, 700, {512, 488, 700, 2}},
        {1000, 100, 0, {512, 488, 0, 2}},
        {1000, 100, 1024, {512, 488, 1024, 2}},
        // Only the low 32 bits of an offset count.
        {(int64_t{3} << 32) + 1000, 100, kNoLimit, {512, 488, 1024, 2}},
        {-1, 1, kNoLimit, {0xFFFFFE00, 511, 512, 1}},
        // No wrap at the greatest length.
        {511, kHuge, kNoLimit, {0, 511, kHuge, 0x800001}},
        {0, kHuge, 4096, {0, 0, 4096, 0x800000}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(extended(m_card, c.offset, c.length, c.limit), c.expected) << c.offset << " " << c.length;
    m_card.m_alignmentUnit = 10;
    EXPECT_EQ(extended(m_card, 27, 5, kNoLimit), (Extended{20, 7, 20, 2}));
}

TEST_F(CMEMCARDFILEStretchTest, RandomReadsAnswerLikeTheModel) {
    std::mt19937 random(20'240'506);
    const auto below = [&](uint32_t end) { return static_cast<uint32_t>(random() % end); };
    for (int round = 0; round < 150; ++round) {
        openFile(below(3000));
        m_card.m_readPosition = 0;
        m_card.m_alignmentUnit = below(2) == 0 ? kUnit : 1 + below(700);
        m_card.m_blockSize = below(static_cast<uint32_t>(m_bytes.size()) + 1);
        CardModel model(m_bytes, m_card.m_alignmentUnit, m_card.m_blockSize);
        for (int step = 0; step < 60; ++step) {
            const uint32_t kind = below(4);
            uint32_t offset = below(100) == 0 ? static_cast<uint32_t>(random()) : below(3600);
            uint32_t length = below(3600);
            if (below(8) == 0) {  // needs no bytes at all
                offset -= offset % m_card.m_alignmentUnit;
                length = 0;
            }
            const int64_t signedOffset = kind == 2 ? int64_t{offset} : -int64_t{below(1000)} - 1;
            SCOPED_TRACE(testing::Message() << "round " << round << " step " << step << " kind " << kind
                                            << " offset " << offset << " length " << length);
            if (kind == 0) {
                EXPECT_TRUE(m_card.nextBlock() == model.nextBlock());
            } else if (kind == 1) {
                EXPECT_TRUE(m_card.stretch(offset, length) == model.stretch(offset, length));
            } else {
                EXPECT_TRUE(m_card.extend(length, signedOffset) == model.extend(length, signedOffset));
            }
            ASSERT_EQ(static_cast<uint64_t>(m_card.place()), model.place());
            ASSERT_EQ(m_card.m_readPosition, model.readPosition());
            if (HasFailure()) return;
        }
    }
}

}  // namespace fi::test
