// SPDX-License-Identifier: Apache-2.0
// Harmed and hostile QuickDraw pictures: what is there is kept, and nothing is without a bound.
#include <gtest/gtest.h>

#include <chrono>

#include "PlatformKit/Codecs/CodecPictures.h"
#include "PlatformKit/Codecs/PictBytes.h"
#include "PlatformKit/Codecs/PictText.h"
#include "PlatformKit/Codecs/ScopedLimits.h"

namespace fi::test {

namespace {

/// Ten rows of 64 direct pixels, all red.
PictMapRecipe redRows() {
    PictMapRecipe recipe;
    recipe.bounds = {0, 0, 10, 64};
    recipe.bits = 16;
    std::vector<uint8_t> row;
    for (int i = 0; i < 64; ++i)
        row.insert(row.end(), {0x7C, 0x00});
    recipe.rows.assign(10, row);
    return recipe;
}

PictBytes redPicture() {
    PictBytes pict(2, {0, 0, 10, 64});
    pict.map(redRows()).end();
    return pict;
}

/// A source that stops working at a place.
class BrokenSource final : public ByteSource {
public:
    BrokenSource(std::span<const uint8_t> bytes, uint64_t worksTo) : m_memory(bytes), m_worksTo(worksTo) {}
    [[nodiscard]] uint64_t size() const override { return m_memory.size(); }
    [[nodiscard]] bool failed() const override { return m_failed; }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override {
        const size_t works = static_cast<size_t>(offset < m_worksTo ? m_worksTo - offset : 0);
        const size_t count = m_memory.read(offset, out.first(std::min(out.size(), works)));
        m_failed = m_failed || (count < out.size() && offset + count < size());
        return count;
    }

private:
    MemorySource m_memory;
    uint64_t m_worksTo;
    bool m_failed = false;
};

void expectReason(const std::vector<uint8_t>& bytes, CodecError code, const char* text) {
    const auto picture = decodePictBytes(bytes);
    ASSERT_FALSE(picture) << text;
    EXPECT_EQ(picture.reason().code, code) << picture.reason().text;
    EXPECT_EQ(picture.reason().text, text);
}

}  // namespace

TEST(PictDamage, RowsInFrontOfTheCutAreKeptAndOthersAreGray) {
    const auto bytes = redPicture().bytes();
    // Each row takes a length, a code and a word; the last one ends in front of the end's opcode.
    const size_t rowBytes = 4;
    const auto picture = decodePictBytes(firstBytes(bytes, bytes.size() - 2 - 6 * rowBytes - 1));
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture->damaged);
    for (uint32_t y = 0; y < 10; ++y) {
        EXPECT_EQ(colorAt(picture->pixels, 63, y), y < 3 ? (Rgb{255, 0, 0}) : (Rgb{128, 128, 128})) << y;
    }
}

TEST(PictDamage, ACutInFrontOfThePixelsIsAFailure) {
    const auto bytes = redPicture().bytes();
    const size_t pixels = bytes.size() - 2 - 10 * 4;
    expectReason(firstBytes(bytes, pixels), CodecError::Damaged,
                 "None of the picture's pixels can be read.");
    expectReason(firstBytes(bytes, pixels - 10), CodecError::Damaged,
                 "The file is damaged in front of its pixels.");
}

TEST(PictDamage, EveryCutAndHarmIsSurvived) {
    PictMapRecipe masked = bitMap(64, std::vector<std::vector<uint8_t>>(4, std::vector<uint8_t>(8, 0xAA)));
    masked.mask = {0, 0, 4, 64, 0, 0, 9, 20, 60, 0x7FFF, 2, 9, 20, 0x7FFF, 0x7FFF};
    PictBytes pict(2, {0, 0, 10, 64}, false);
    pict.extendedHeader(72 << 16, 72 << 16, {0, 0, 10, 64}).map(masked).map(redRows()).end();
    for (size_t count = 0; count < pict.bytes().size(); ++count) {
        const auto picture = decodePictBytes(firstBytes(pict.bytes(), count));
        EXPECT_TRUE(picture || !picture.reason().text.empty());
    }
    ScopedLimits small([](DecodeLimits& limits) { limits.maximumPixels = 1 << 16; });
    for (uint32_t seed = 0; seed < 2000; ++seed) {
        const auto picture = decodePictBytes(mutated(pict.bytes(), seed, 1 + seed % 4));
        EXPECT_TRUE(picture || !picture.reason().text.empty());
    }
}

TEST(PictDamage, NonsenseEndsThePictureWithWhatIsThere) {
    const auto tail = [](auto add) {
        PictBytes pict(2, {0, 0, 10, 64});
        pict.map(redRows());
        add(pict);
        pict.end();
        return pict.bytes();
    };
    const std::vector<uint8_t> files[] = {
        tail([](PictBytes& p) { p.opcode(0x01).word(9).longWord(0); }),     // a region without room
        tail([](PictBytes& p) { p.opcode(0x70).word(1); }),                 // a polygon as well
        tail([](PictBytes& p) { p.opcode(0x12).word(3).longWord(0); }),     // a kind of pattern
        tail([](PictBytes& p) { p.opcode(0xA1).word(0).word(60000); }),     // a comment beyond the end
        tail([](PictBytes& p) { p.opcode(0xFFFF).longWord(0xFFFFFFFF); }),  // a block beyond the end
        tail([](PictBytes& p) {                                             // a depth of 3
            PictMapRecipe odd = redRows();
            odd.bits = 3;
            p.map(odd);
        }),
        tail([](PictBytes& p) {  // rows without bytes
            p.opcode(0x90).word(0).rect({0, 0, 30000, 30000}).rect({}).rect({}).word(0);
        }),
    };
    for (size_t i = 0; i < std::size(files); ++i) {
        const auto picture = decodePictBytes(files[i]);
        ASSERT_TRUE(picture) << i;
        EXPECT_TRUE(picture->damaged) << i;
        EXPECT_EQ(colorAt(picture->pixels, 0, 9), (Rgb{255, 0, 0})) << i;
    }
}

TEST(PictDamage, ARowThatUnpacksToLessIsFilled) {
    PictMapRecipe recipe;
    recipe.bounds = {0, 0, 1, 200};
    recipe.bits = 16;
    std::vector<uint8_t> row;
    for (int i = 0; i < 60; ++i)
        row.insert(row.end(), {0x7C, 0x00});
    recipe.rows = {row};
    auto bytes = PictBytes(2, {0, 0, 1, 200}).map(recipe).end().bytes();
    bytes[512 + 14 + 2 + 5] = 144;  // 60 pixels in a row that is said to hold 72
    const auto picture = decodePictBytes(bytes);
    ASSERT_TRUE(picture);
    EXPECT_EQ(colorAt(picture->pixels, 59, 0), (Rgb{255, 0, 0}));
    EXPECT_EQ(colorAt(picture->pixels, 60, 0), (Rgb{0, 0, 0})) << "unpacked to nothing";
    EXPECT_EQ(colorAt(picture->pixels, 72, 0), (Rgb{255, 255, 255})) << "beyond the row";
}

TEST(PictDamage, AFailingSourceIsSaid) {
    const auto bytes = redPicture().bytes();
    for (const size_t worksTo : {size_t{0}, size_t{300}, size_t{540}}) {
        BrokenSource source(bytes, worksTo);
        const auto picture = decodePict(source, {});
        ASSERT_FALSE(picture) << worksTo;
        EXPECT_EQ(picture.reason().code, CodecError::ReadFailed) << worksTo;
    }
    BrokenSource source(bytes, bytes.size() - 20);
    const auto picture = decodePict(source, {});
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture->damaged);
}

TEST(PictLimits, EachIsNamed) {
    const auto bytes = redPicture().bytes();
    {
        ScopedLimits limits([](DecodeLimits& l) { l.maximumSide = 63; });
        expectReason(bytes, CodecError::LimitExceeded, "A side of the picture is longer than is allowed.");
    }
    {
        ScopedLimits limits([](DecodeLimits& l) { l.maximumPixels = 639; });
        expectReason(bytes, CodecError::LimitExceeded, "The picture has more pixels than is allowed.");
    }
    {
        ScopedLimits limits([](DecodeLimits& l) { l.maximumBytes = 2559; });
        expectReason(bytes, CodecError::LimitExceeded, "The picture needs more memory than is allowed.");
    }
    ScopedLimits limits([](DecodeLimits& l) {
        l.maximumSide = 64;
        l.maximumPixels = 640;
        l.maximumBytes = 2560;
    });
    EXPECT_TRUE(decodePictBytes(bytes));
}

TEST(PictLimits, PixelsOfAResolutionCount) {
    PictBytes pict(2, {0, 0, 30000, 30000});
    pict.extendedHeader(1000 << 16, 1000 << 16, {}).map(redRows()).end();
    const auto header = pictHeader(pict.bytes());
    ASSERT_TRUE(header);
    EXPECT_EQ(header->width, 416667U);
    expectReason(pict.bytes(), CodecError::LimitExceeded,
                 "A side of the picture is longer than is allowed.");
}

TEST(PictLimits, DrawingOverAndOverEnds) {
    PictBytes pict(2, {0, 0, 1000, 1000});
    PictMapRecipe dot = bitMap(1, {{0x80, 0}});
    dot.target = PictRect{0, 0, 1000, 1000};
    for (int i = 0; i < 2000; ++i)
        pict.map(dot);
    const auto start = std::chrono::steady_clock::now();
    const auto picture = decodePictBytes(pict.end().bytes());
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture->damaged) << "2,000 megapixels were asked for";
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(PictLimits, OpcodesWithoutEndEnd) {
    PictBytes pict(1, {0, 0, 1, 16});
    pict.map(bitMap(16, {{0xFF, 0xFF}}));
    const std::vector<uint8_t> nothing(2 << 20, 0);
    const auto picture = decodePictBytes(pict.data(nothing).end().bytes());
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture->damaged);
}

}  // namespace fi::test
