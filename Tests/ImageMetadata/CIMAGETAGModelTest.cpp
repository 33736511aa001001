// SPDX-License-Identifier: Apache-2.0
// Structures by chance: well-formed ones are parsed to what was put in, damaged ones do no harm.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "ImageMetadata/RandomTags.h"
#include "ImageMetadata/TagTypes.h"

namespace fi::test {

namespace {

/// Looks at every byte that the records own.
uint64_t touchAll(const OpenTag& tag) {
    uint64_t sum = 0;
    for (size_t slot = 0; slot < 8; ++slot) {
        for (int i = 0; i < tag.field(slot).count; ++i) {
            const IMAGETAG_INFO& record = tag.record(slot, static_cast<size_t>(i));
            EXPECT_GE(record.count, 0);
            EXPECT_GT(unitSizeOfType(record.type), 0U);
            EXPECT_LE(record.kind, kImageTagKindFlashpixVersion);
            EXPECT_NE(record.value, nullptr);
            for (const uint8_t byte : bytesOf(record))
                sum += byte;
            if (record.type == kTagASCII) {
                EXPECT_EQ(record.value[record.count] | record.value[record.count + 1], 0);
            }
        }
    }
    return sum;
}

/// Changes some bytes, or cuts the end off.
void damage(std::mt19937& random, Bytes& file) {
    static constexpr uint8_t kBytes[] = {0, 1, 2, 0x7F, 0x80, 0xFF, 0x0A, 0xA0, 0x87, 0x69};
    for (auto changes = random() % 8; changes > 0; --changes)
        file[random() % file.size()] =
            random() % 2 == 0 ? kBytes[random() % std::size(kBytes)] : static_cast<uint8_t>(random());
    if (random() % 4 == 0) file.resize(1 + random() % file.size());
}

void expectAnAnswer(const Answer& answer) {
    if (answer.result == 1) {
        EXPECT_TRUE(answer == kDone || answer == kMore) << answer;
    } else {
        EXPECT_TRUE(answer.error >= kTagBadData && answer.error <= kTagNotRecognised) << answer;
    }
}

}  // namespace

TEST(CIMAGETAGModelTest, WellFormedStructuresAreParsedToWhatWasPutIn) {
    std::mt19937 random(20190506);
    for (int round = 0; round < 3000; ++round) {
        const RandomStructure made = randomStructure(random, Arrangement::Mixed);
        const Bytes before = made.file;
        OpenTag tag;
        ASSERT_EQ(parse(tag, made.file).answer, kDone) << round;
        ASSERT_TRUE(slotsOf(tag) == made.slots) << round;
        ASSERT_TRUE(made.file == before) << round;
    }
}

TEST(CIMAGETAGModelTest, FilesAreParsedByURLToWhatWasPutIn) {
    const TemporaryFolder folder;
    std::mt19937 random(20190507);
    for (int round = 0; round < 200; ++round) {
        const RandomStructure made = randomStructure(random, Arrangement::Mixed);
        OpenTag tag;
        ASSERT_EQ(parseFile(tag, folder.write("photo", made.file)).answer, kDone) << round;
        ASSERT_TRUE(slotsOf(tag) == made.slots) << round;
    }
}

TEST(CIMAGETAGModelTest, AReaderBringsTheValuesThatWerePutIn) {
    std::mt19937 random(20190508);
    for (int round = 0; round < 200; ++round) {
        const RandomStructure made = randomStructure(random, Arrangement::DirectoriesFirst);
        Card card(made.file);
        OpenTag tag;
        tag.RentMemCard(&card);
        const size_t more = random() % (made.file.size() - made.endOfDirectories + 1);
        ASSERT_EQ(parse(tag, made.file, made.endOfDirectories + more).answer, kDone) << round;
        ASSERT_TRUE(slotsOf(tag) == made.slots) << round;
    }
}

TEST(CIMAGETAGModelTest, DamagedStructuresEndAndTheirBytesStay) {
    std::mt19937 random(20190509);
    for (int round = 0; round < 6000; ++round) {
        Bytes file = randomStructure(random, Arrangement::Mixed).file;
        damage(random, file);
        const Bytes before = file;
        OpenTag tag;
        const size_t head = random() % 2 == 0 ? file.size() : random() % (file.size() + 1);
        Outcome outcome = parse(tag, file, head);
        expectAnAnswer(outcome.answer);
        touchAll(tag);
        std::set<std::pair<uint32_t, uint32_t>> asked;
        while (outcome.answer == kMore &&
               asked.insert({outcome.nextOffset, tag.position().currentMainIFD}).second) {
            outcome = resume(tag, file, outcome.nextOffset, outcome.nextSize);
            expectAnAnswer(outcome.answer);
            touchAll(tag);
        }
        ASSERT_LE(asked.size(), 2U) << round;
        ASSERT_TRUE(file == before) << round;
    }
}

TEST(CIMAGETAGModelTest, DamagedStructuresEndWithAReader) {
    std::mt19937 random(20190510);
    for (int round = 0; round < 300; ++round) {
        Bytes file = randomStructure(random, Arrangement::Mixed).file;
        damage(random, file);
        const Bytes before = file;
        Card card(file);
        OpenTag tag;
        tag.RentMemCard(&card);
        const Outcome outcome = parse(tag, file, random() % (file.size() + 1));
        expectAnAnswer(outcome.answer);
        if (outcome.answer == kMore) {
            EXPECT_EQ(outcome.format, kImageTagFormatJFIF) << round;
        }
        touchAll(tag);
        ASSERT_TRUE(file == before) << round;
    }
}

TEST(CIMAGETAGModelTest, FramesAreSearchedInAnyBytes) {
    std::mt19937 random(20190511);
    for (int round = 0; round < 6000; ++round) {
        Bytes file = {0xFF, 0xD8};
        const auto segments = random() % 4;
        for (auto left = segments; left > 0; --left) {
            const Bytes segment =
                jpegSegment(random() % 2 == 0 ? 0xC2 : static_cast<uint8_t>(0xC0 + random() % 32),
                            std::string(random() % 20, '\1'));
            file.insert(file.end(), segment.begin(), segment.end());
        }
        damage(random, file);
        OpenTag tag;
        Outcome outcome;
        outcome.answer.result =
            tag.SetJfifInfo(reinterpret_cast<char*>(file.data()), static_cast<uint32_t>(file.size()),
                            &outcome.nextOffset, &outcome.nextSize, &outcome.answer.error);
        ASSERT_TRUE(outcome.answer == kDone || outcome.answer == kMore) << outcome.answer;
        EXPECT_EQ(tag.field(0).count, outcome.answer == kDone ? 2 : 0);
        touchAll(tag);
    }
}

}  // namespace fi::test
