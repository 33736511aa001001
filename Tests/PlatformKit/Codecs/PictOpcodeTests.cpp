// SPDX-License-Identifier: Apache-2.0
// Opcodes without pixels: each is stepped over by its exact length, and what it would draw is told.
#include <gtest/gtest.h>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/PictBytes.h"
#include "PlatformKit/Codecs/PictOpcodes.h"
#include "PlatformKit/Codecs/PictText.h"

namespace fi::test {

namespace {

constexpr PictRect kFrame{0, 0, 1, 16};
constexpr const char* kDrawn = "#.#..#.#########\n";

PictMapRecipe drawing() {
    return bitMap(16, {{0xA5, 0xFF}});
}

/// How the data of a range of opcodes is laid out, after the published table.
struct Range {
    uint32_t first;
    uint32_t last;
    char kind;       ///< f: fixed; s: a word that counts itself; w: a word; l: a long; c: comment; t: text
    uint32_t bytes;  ///< fixed: the data; text: what stands in front of the count
};

constexpr Range kRanges[] = {
    {0x00, 0x00, 'f', 0},     {0x01, 0x01, 's', 0},     {0x02, 0x02, 'f', 8},    {0x03, 0x03, 'f', 2},
    {0x04, 0x04, 'f', 1},     {0x05, 0x05, 'f', 2},     {0x06, 0x07, 'f', 4},    {0x08, 0x08, 'f', 2},
    {0x09, 0x0A, 'f', 8},     {0x0B, 0x0C, 'f', 4},     {0x0D, 0x0D, 'f', 2},    {0x0E, 0x0F, 'f', 4},
    {0x10, 0x10, 'f', 8},     {0x15, 0x16, 'f', 2},     {0x17, 0x19, 'f', 0},    {0x1A, 0x1B, 'f', 6},
    {0x1C, 0x1C, 'f', 0},     {0x1D, 0x1D, 'f', 6},     {0x1E, 0x1E, 'f', 0},    {0x1F, 0x1F, 'f', 6},
    {0x20, 0x20, 'f', 8},     {0x21, 0x21, 'f', 4},     {0x22, 0x22, 'f', 6},    {0x23, 0x23, 'f', 2},
    {0x24, 0x27, 'w', 0},     {0x28, 0x28, 't', 4},     {0x29, 0x2A, 't', 1},    {0x2B, 0x2B, 't', 2},
    {0x2C, 0x2F, 'w', 0},     {0x30, 0x37, 'f', 8},     {0x38, 0x3F, 'f', 0},    {0x40, 0x47, 'f', 8},
    {0x48, 0x4F, 'f', 0},     {0x50, 0x57, 'f', 8},     {0x58, 0x5F, 'f', 0},    {0x60, 0x67, 'f', 12},
    {0x68, 0x6F, 'f', 4},     {0x70, 0x77, 's', 0},     {0x78, 0x7F, 'f', 0},    {0x80, 0x87, 's', 0},
    {0x88, 0x8F, 'f', 0},     {0x92, 0x97, 'w', 0},     {0x9C, 0x9F, 'w', 0},    {0xA0, 0xA0, 'f', 2},
    {0xA1, 0xA1, 'c', 0},     {0xA2, 0xAF, 'w', 0},     {0xB0, 0xCF, 'f', 0},    {0xD0, 0xFE, 'l', 0},
    {0x8000, 0x80FF, 'f', 0}, {0x8100, 0x81FF, 'l', 0}, {0x8202, 0xFFFF, 'l', 0}};

/// Data that would be misread as the end of the picture if a length were wrong.
void putData(PictBytes& pict, const Range& range, uint32_t opcode, uint32_t fixed) {
    constexpr uint32_t kCount = 5;
    uint32_t rest = kCount;
    switch (range.kind) {
        case 's':
            pict.word(10).rect({-9, -9, 99, 99});
            return;
        case 'w':
            pict.word(kCount);
            break;
        case 'l':
            pict.longWord(kCount);
            break;
        case 'c':
            pict.word(100).word(kCount);
            break;
        case 't':
            for (uint32_t i = 0; i < range.bytes; ++i)
                pict.byte(9);
            pict.byte(kCount);
            break;
        default:
            rest = fixed;
    }
    for (uint32_t i = 0; i < rest; ++i)
        pict.byte(opcode == 0x0C ? 0 : 0xFF);
}

void expectSteppedOver(uint32_t version, const Range& range, uint32_t opcode, uint32_t fixed) {
    PictBytes pict(version, kFrame);
    pict.opcode(static_cast<uint16_t>(opcode));
    putData(pict, range, opcode, fixed);
    // Colors that the opcode may have set are set back.
    pict.opcode(0x0E).longWord(33).opcode(0x0F).longWord(30);
    const auto picture = decodePictBytes(pict.map(drawing()).end().bytes());
    ASSERT_TRUE(picture) << std::hex << opcode << ": " << picture.reason().text;
    EXPECT_EQ(pictText(picture->pixels), kDrawn) << std::hex << opcode;
    EXPECT_FALSE(picture->damaged) << std::hex << opcode;
    const bool text = opcode >= 0x28 && opcode <= 0x2B;
    const bool line = opcode >= 0x20 && opcode <= 0x23;
    const bool shape = opcode >= 0x30 && opcode < 0x90 && opcode % 8 < 5;
    EXPECT_EQ(picture->partial, text || line || shape) << std::hex << opcode;
}

}  // namespace

TEST(PictOpcodes, EachIsSteppedOverByItsLengthInVersionTwo) {
    for (const Range& range : kRanges) {
        for (uint32_t opcode = range.first; opcode <= range.last; opcode += range.last > 0x8200 ? 97 : 1)
            expectSteppedOver(2, range, opcode, range.bytes);
    }
    for (uint32_t opcode = 0x0100; opcode < 0x8000; opcode += 64)
        expectSteppedOver(2, {opcode, opcode, 'f', 0}, opcode, opcode / 256 * 2);
    expectSteppedOver(2, {0x0C00, 0x0C00, 'f', 24}, 0x0C01, 24);
    expectSteppedOver(2, {0x11, 0x11, 'f', 2}, 0x11, 2);
}

TEST(PictOpcodes, EachIsSteppedOverByItsLengthInVersionOne) {
    for (const Range& range : kRanges) {
        if (range.first == 0 || range.last > 0xFF) continue;
        // The first opcode is one that version 1 surely has; so that the file is recognised.
        for (uint32_t opcode = range.first; opcode <= range.last; ++opcode) {
            PictBytes pict(1, kFrame);
            pict.opcode(0).opcode(static_cast<uint16_t>(opcode));
            putData(pict, range, opcode, range.bytes);
            pict.opcode(0x0E).longWord(33).opcode(0x0F).longWord(30);
            const auto picture = decodePictBytes(pict.map(drawing()).end().bytes());
            ASSERT_TRUE(picture) << std::hex << opcode;
            EXPECT_EQ(pictText(picture->pixels), kDrawn) << std::hex << opcode;
        }
    }
}

TEST(PictOpcodes, PatternsOfPixelsAreSteppedOver) {
    for (const PictOpcode opcode : {kOpcodeBackPattern, kOpcodePenPattern, kOpcodeFillPattern}) {
        PictMapRecipe pattern;
        pattern.bounds = {0, 0, 2, 10};
        pattern.bits = 8;
        pattern.colors = {0, 1, 2, 3};
        pattern.rows.assign(2, std::vector<uint8_t>(10, 0));
        const auto map = PictBytes(2, kFrame, false).mapData(pattern).bytes();
        PictBytes pict(2, kFrame);
        pict.opcode(opcode).word(2).longWord(1).longWord(2).word(1).word(2).word(3);
        pict.opcode(opcode).word(0).longWord(1).longWord(2);
        pict.opcode(opcode).word(1).longWord(1).longWord(2);
        // Up to the colors a map in a pattern is like any other; rectangles and mode are missing.
        constexpr size_t kHead = 14;
        constexpr size_t kDescription = 46 + 16;
        pict.data(std::span(map).subspan(kHead, kDescription));
        pict.data(std::span(map).subspan(kHead + kDescription + 18));
        const auto picture = decodePictBytes(pict.map(drawing()).end().bytes());
        ASSERT_TRUE(picture);
        EXPECT_EQ(pictText(picture->pixels), kDrawn);
        EXPECT_FALSE(picture->damaged || picture->partial);
    }
}

TEST(PictOpcodes, LinesOfAPenWithoutSizeLeaveNoMark) {
    const std::pair<uint32_t, bool> cases[] = {{0, false}, {0x00010000, false}, {0x00010001, true}};
    for (const auto& [size, marks] : cases) {
        PictBytes pict(2, kFrame);
        pict.opcode(7).longWord(size).opcode(0x23).word(0).opcode(0x30).rect(kFrame).map(drawing());
        const auto picture = decodePictBytes(pict.end().bytes());
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->partial, marks) << size;
    }
}

TEST(PictOpcodes, APictureOfShapesIsRefusedAndSaysSo) {
    PictBytes pict(2, kFrame);
    pict.opcode(0x31).rect(kFrame).end();
    const auto picture = decodePictBytes(pict.bytes());
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.reason().code, CodecError::Unsupported);
    EXPECT_EQ(picture.reason().text,
              "The picture consists of lines, texts and shapes only, which are not drawn.");
    const auto header = pictHeader(pict.bytes());
    ASSERT_TRUE(header) << "its size is known all the same";
    EXPECT_EQ(header->width, 16U);
    EXPECT_EQ(header->height, 1U);
}

TEST(PictOpcodes, APictureOfNothingIsRefused) {
    const auto picture = decodePictBytes(PictBytes(2, kFrame).end().bytes());
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.reason().code, CodecError::Unsupported);
    EXPECT_EQ(picture.reason().text, "The picture is empty.");
}

TEST(PictOpcodes, WhatFollowsTheEndIsNotRead) {
    PictBytes pict(2, kFrame);
    pict.map(drawing()).end().opcode(0x31).rect(kFrame).word(0x9A).word(1);
    const auto picture = decodePictBytes(pict.bytes());
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->damaged || picture->partial);
}

TEST(PictOpcodes, AMissingEndIsNoDamage) {
    const auto picture = decodePictBytes(PictBytes(2, kFrame).map(drawing()).bytes());
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->damaged);
    EXPECT_EQ(pictText(picture->pixels), kDrawn);
}

}  // namespace fi::test
