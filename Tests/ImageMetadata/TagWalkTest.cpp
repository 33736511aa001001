// SPDX-License-Identifier: Apache-2.0
// The walk for one who keeps what he wants. Its rules are tested through CIMAGETAG.
#include "ImageMetadata/TagWalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Support/TiffBlock.h"

namespace fi {
namespace {

using test::TiffDirectory;

/// Keeps the first bytes of every value that the filter lets through.
class KeepingSink final : public TagSink {
public:
    KeepingSink() = default;
    explicit KeepingSink(const TagFilter& filter) : TagSink(filter) {}

    uint32_t take(uint16_t slot, const FoundTag& tag) override {
        if (tag.tag() == refused) return kTagNoMemory;
        std::string bytes(std::min(tag.size(), limit), '\0');
        if (!tag.copyTo(bytes.data(), limit)) return kTagBadData;
        taken.emplace_back(slot, tag.tag(), bytes);
        return kTagNoError;
    }
    void release(int32_t from) override { released.push_back(from); }

    uint32_t limit = UINT32_MAX;
    uint16_t refused = 0;
    std::vector<std::tuple<uint16_t, uint16_t, std::string>> taken;
    std::vector<int32_t> released;
};

class CountedSource final : public ByteSource {
public:
    explicit CountedSource(std::vector<uint8_t> bytes) : m_bytes(std::move(bytes)) {}
    uint64_t size() const override { return m_bytes.size(); }
    size_t read(uint64_t offset, std::span<uint8_t> out) override {
        bytesRead += out.size();
        return MemorySource(m_bytes).read(offset, out);
    }
    size_t bytesRead = 0;

private:
    std::vector<uint8_t> m_bytes;
};

std::vector<uint8_t> photo(ByteOrder order) {
    TiffDirectory exif;
    exif.bytes(0x9000, 7, {'0', '2', '2', '0'});
    exif.text(0x9003, "2024:05:06 07:08:09");
    exif.block(0x927C, std::vector<uint8_t>(20000, 'm'));
    exif.longs(0xA002, {4000});
    exif.fractions(0x829A, {{1, 250}, {3, 4}});
    TiffDirectory main;
    main.shorts(0x0112, {6});
    main.directory(0x8769, exif);
    return test::tiffBlock({main}, order);
}

class TagWalkOrder : public testing::TestWithParam<ByteOrder> {};
INSTANTIATE_TEST_SUITE_P(BothOrders, TagWalkOrder, testing::Values(ByteOrder::Little, ByteOrder::Big));

TEST_P(TagWalkOrder, FindsTheSameInStepsAsInTheWhole) {
    const auto bytes = photo(GetParam());
    TagData whole(bytes.data(), bytes.size());
    KeepingSink ofWhole;
    IMAGETAG_POSITION position{};
    EXPECT_EQ(walkHead(position, whole, ofWhole), kTagNoError);
    EXPECT_EQ(position.hasExifIFD, 1);
    EXPECT_EQ(ofWhole.taken.size(), 6u);

    CountedSource source(bytes);
    std::array<uint8_t, 16> first;
    TagData steps(source, bytes.size(), first);
    KeepingSink inSteps;
    EXPECT_EQ(walkHead(position, steps, inSteps), kTagNoError);
    EXPECT_EQ(inSteps.taken, ofWhole.taken);
}

TEST_P(TagWalkOrder, CopiesTheFirstBytesInHostOrder) {
    const auto bytes = photo(GetParam());
    TagData data(bytes.data(), bytes.size());
    KeepingSink sink;
    sink.limit = 8;
    IMAGETAG_POSITION position{};
    EXPECT_EQ(walkHead(position, data, sink), kTagNoError);
    const std::string fraction("\x01\0\0\0\xFA\0\0\0", 8);
    EXPECT_NE(std::find(sink.taken.begin(), sink.taken.end(),
                        std::tuple(uint16_t{1}, uint16_t{0x829A}, fraction)),
              sink.taken.end());
}

TEST_P(TagWalkOrder, EndsWithTheCodeOfTheSink) {
    const auto bytes = photo(GetParam());
    TagData data(bytes.data(), bytes.size());
    KeepingSink sink;
    sink.refused = 0x9003;
    IMAGETAG_POSITION position{};
    EXPECT_EQ(walkHead(position, data, sink), kTagNoMemory);
    EXPECT_FALSE(sink.taken.empty());
    EXPECT_TRUE(sink.released.empty());
}

TEST(TagFilter, LetsThroughWhatIsWantedAndNothingOfOtherSlots) {
    constexpr TagFilter kTwo = {{0, 0x0112}, {1, 0x9003}};
    EXPECT_TRUE(kTwo.lets(0, 0x0112));
    EXPECT_TRUE(kTwo.lets(1, 0x9003));
    EXPECT_FALSE(kTwo.lets(0, 0x9003));
    EXPECT_FALSE(kTwo.lets(1, 0x0112));
    EXPECT_FALSE(kTwo.lets(4, 0x0112));
    for (uint32_t slot = 0; slot < 8; ++slot)
        EXPECT_TRUE(kEveryTag.lets(slot, 0xFFFF) && kEveryTag.lets(slot, 0));
}

TEST_P(TagWalkOrder, OffersASinkOnlyWhatItsFilterLetsThrough) {
    const auto bytes = photo(GetParam());
    static constexpr TagFilter kTwo = {{0, 0x0112}, {1, 0x9003}};
    TagData data(bytes.data(), bytes.size());
    KeepingSink sink(kTwo);
    IMAGETAG_POSITION position{};
    EXPECT_EQ(walkHead(position, data, sink), kTagNoError);
    ASSERT_EQ(sink.taken.size(), 2u);
    EXPECT_EQ(std::get<1>(sink.taken[0]), 0x0112);
    EXPECT_EQ(std::get<1>(sink.taken[1]), 0x9003);
}

TEST(TagWalk, EndsAtABadTagThatTheFilterKeepsBackToo) {
    static constexpr TagFilter kOrientation = {{0, 0x0112}};
    const auto codeWith = [](const TiffDirectory& main) {
        const auto bytes = test::tiffBlock({main}, ByteOrder::Little);
        TagData data(bytes.data(), bytes.size());
        KeepingSink sink(kOrientation);
        IMAGETAG_POSITION position{};
        const uint32_t code = walkHead(position, data, sink);
        return std::pair(code, sink.taken.size());
    };
    const auto good = TiffDirectory().shorts(0x0112, {6});
    EXPECT_EQ(codeWith(good), std::pair(kTagNoError, size_t{1}));
    EXPECT_EQ(codeWith(TiffDirectory(good).bytes(0x0100, 13, {1})), std::pair(kTagBadData, size_t{0}));
    EXPECT_EQ(codeWith(TiffDirectory(good).bytes(0x0113, 13, {1})), std::pair(kTagBadData, size_t{1}));
    EXPECT_EQ(codeWith(TiffDirectory(good).bytes(0x0113, 7, std::vector<uint8_t>(40000))),
              std::pair(kTagNoMemory, size_t{1}));
}

TEST(TagWalk, LoadsNoValueThatNobodyCopies) {
    std::vector<uint8_t> bytes = {'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0};
    const uint8_t makerNote[] = {0x7C, 0x92, 7, 0, 0x30, 0x75, 0, 0, 26, 0, 0, 0, 0, 0, 0, 0};
    bytes.insert(bytes.end(), std::begin(makerNote), std::end(makerNote));
    bytes.resize(26 + 30000, 'm');
    for (const auto& [limit, expected] :
         {std::pair(0u, 64u), std::pair(40u, 64u + 1024u), std::pair(30000u, 30026u)}) {
        CountedSource source(bytes);
        std::array<uint8_t, 64> first;
        TagData data(source, bytes.size(), first);
        KeepingSink sink;
        sink.limit = limit;
        IMAGETAG_POSITION position{};
        EXPECT_EQ(walkHead(position, data, sink), kTagNoError);
        EXPECT_EQ(sink.taken.size(), 1u);
        EXPECT_EQ(source.bytesRead, expected);
    }
}

TEST(TagWalk, FindsNothingInAJpegWithoutExif) {
    const uint8_t bytes[] = {0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0, 1};
    TagData data(bytes, sizeof(bytes));
    KeepingSink sink;
    IMAGETAG_POSITION position{};
    EXPECT_EQ(walkHead(position, data, sink), kTagMoreNeeded);
    EXPECT_TRUE(sink.taken.empty());
}

TEST(TagWalk, StartsAnewWhateverThePositionWas) {
    const auto bytes = photo(ByteOrder::Little);
    TagData data(bytes.data(), bytes.size());
    KeepingSink sink;
    IMAGETAG_POSITION position{700, 30, 1, 2, 1, 9000, 1};
    EXPECT_EQ(walkHead(position, data, sink), kTagNoError);
    EXPECT_EQ(position.bufferStart, 0u);
    EXPECT_EQ(position.bigEndian, 0);
    EXPECT_EQ(sink.taken.size(), 6u);
}

}  // namespace
}  // namespace fi
