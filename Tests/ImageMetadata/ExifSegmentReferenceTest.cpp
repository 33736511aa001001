// SPDX-License-Identifier: Apache-2.0
// Random TIFF files: every value of IFD0 and of the Exif directory is the same in their segments.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <span>
#include <vector>

#include "ImageMetadata/ExifSegment.h"

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint16_t kExifPointer = 0x8769;

/// The simplest reader of TIFF structures there can be; out-of-range reads throw.
class PlainTiff {
public:
    explicit PlainTiff(Bytes bytes) : m_bytes(std::move(bytes)), m_big(m_bytes.at(0) == 'M') {}

    struct Value {
        uint16_t type = 0;
        uint32_t count = 0;
        Bytes bytes;
        friend bool operator==(const Value&, const Value&) = default;
    };
    struct Directory {
        std::map<uint16_t, Value> values;
        uint32_t next = 0;
    };

    [[nodiscard]] uint32_t number(size_t at, size_t bytes) const {
        uint32_t value = 0;
        for (size_t i = 0; i < bytes; ++i)
            value |= uint32_t{m_bytes.at(at + i)} << (8 * (m_big ? bytes - 1 - i : i));
        return value;
    }

    [[nodiscard]] Directory directory(size_t at) const {
        Directory result;
        const uint32_t count = number(at, 2);
        for (uint32_t i = 0; i < count; ++i) {
            const size_t entry = at + 2 + size_t{12} * i;
            Value value{static_cast<uint16_t>(number(entry + 2, 2)), number(entry + 4, 4), {}};
            const size_t size = unitOf(value.type) * value.count;
            const size_t start = size > 4 ? number(entry + 8, 4) : entry + 8;
            for (size_t k = 0; k < size; ++k)
                value.bytes.push_back(m_bytes.at(start + k));
            result.values[static_cast<uint16_t>(number(entry, 2))] = value;
        }
        result.next = number(at + 2 + size_t{12} * count, 4);
        return result;
    }

    [[nodiscard]] Directory main() const { return directory(number(4, 4)); }
    [[nodiscard]] std::optional<Directory> exif() const {
        const auto entries = main().values;
        const auto found = entries.find(kExifPointer);
        if (found == entries.end()) return std::nullopt;
        return directory(PlainTiff(withOrder(found->second.bytes)).number(4, 4));
    }

    static size_t unitOf(uint16_t type) {
        switch (type) {
            case 3:
            case 8:
                return 2;
            case 4:
            case 9:
            case 11:
                return 4;
            case 5:
            case 10:
            case 12:
                return 8;
            default:
                return 1;
        }
    }

private:
    /// Four bytes of a value behind the mark of this order.
    [[nodiscard]] Bytes withOrder(const Bytes& value) const {
        Bytes bytes(8, m_big ? 'M' : 'I');
        std::copy(value.begin(), value.end(), bytes.begin() + 4);
        return bytes;
    }

    Bytes m_bytes;
    bool m_big;
};

/// A TIFF file with IFD0 and, mostly, an Exif directory: each anywhere, their values in any order behind
/// them, gaps between all of it.
class RandomTiff {
public:
    RandomTiff(uint32_t seed, bool big) : m_random(seed), m_big(big) {
        m_bytes.assign(8, static_cast<uint8_t>(big ? 'M' : 'I'));
        put(2, 42, 2);
        Directory main = newDirectory(256);
        Directory exif = newDirectory(0x9000);
        const bool hasExif = upTo(4) > 0;
        if (hasExif) main.push_back({kExifPointer, 4, 1, {}, 0});
        const bool exifFirst = upTo(1) == 0;
        const bool interleaved = upTo(1) == 0;
        std::vector<Directory*> order = {&main};
        if (hasExif) order.insert(exifFirst ? order.begin() : order.end(), &exif);
        std::vector<Entry*> values;
        std::map<Directory*, size_t> starts;
        for (Directory* directory : order) {
            starts[directory] = reserve(2 + 12 * directory->size() + 4);
            for (Entry& entry : *directory)
                if (entry.bytes.size() > 4) values.push_back(&entry);
            if (!interleaved) place(values);
        }
        place(values);
        for (Directory* directory : order)
            write(*directory, starts[directory], hasExif ? starts[&exif] : 0);
        put(4, static_cast<uint32_t>(starts[&main]), 4);
    }

    [[nodiscard]] const Bytes& bytes() const { return m_bytes; }

private:
    struct Entry {
        uint16_t tag;
        uint16_t type;
        uint32_t count;
        Bytes bytes;
        size_t start;
    };
    using Directory = std::vector<Entry>;

    uint32_t upTo(uint32_t most) { return std::uniform_int_distribution<uint32_t>(0, most)(m_random); }

    Directory newDirectory(uint16_t firstTag) {
        Directory directory;
        const uint32_t count = 1 + upTo(12);
        for (uint32_t i = 0; i < count; ++i) {
            Entry entry{static_cast<uint16_t>(firstTag + i),
                        static_cast<uint16_t>(upTo(14)),
                        upTo(3) == 0 ? upTo(300) : upTo(6),
                        {},
                        0};
            entry.bytes.resize(PlainTiff::unitOf(entry.type) * entry.count);
            for (uint8_t& byte : entry.bytes)
                byte = static_cast<uint8_t>(upTo(255));
            directory.push_back(std::move(entry));
        }
        return directory;
    }

    size_t reserve(size_t size) {
        const size_t gap = upTo(2) == 0 ? upTo(40) : 0;
        for (size_t i = 0; i < gap; ++i)
            m_bytes.push_back(static_cast<uint8_t>(upTo(255)));
        m_bytes.resize(m_bytes.size() + size);
        return m_bytes.size() - size;
    }

    void place(std::vector<Entry*>& values) {
        std::shuffle(values.begin(), values.end(), m_random);
        for (Entry* entry : values) {
            entry->start = reserve(entry->bytes.size());
            std::copy(entry->bytes.begin(), entry->bytes.end(),
                      m_bytes.begin() + static_cast<ptrdiff_t>(entry->start));
        }
        values.clear();
    }

    void write(const Directory& directory, size_t at, size_t exif) {
        put(at, static_cast<uint32_t>(directory.size()), 2);
        for (const Entry& entry : directory) {
            put(at + 2, entry.tag, 2);
            put(at + 4, entry.type, 2);
            put(at + 6, entry.count, 4);
            if (entry.tag == kExifPointer) {
                put(at + 10, static_cast<uint32_t>(exif), 4);
            } else if (entry.bytes.size() > 4) {
                put(at + 10, static_cast<uint32_t>(entry.start), 4);
            } else {
                std::copy(entry.bytes.begin(), entry.bytes.end(),
                          m_bytes.begin() + static_cast<ptrdiff_t>(at + 10));
            }
            at += 12;
        }
        put(at + 2, upTo(0xFFFFFFFF), 4);
    }

    void put(size_t at, uint32_t value, size_t bytes) {
        for (size_t i = 0; i < bytes; ++i)
            m_bytes[at + i] = static_cast<uint8_t>(value >> (8 * (m_big ? bytes - 1 - i : i)));
    }

    std::mt19937 m_random;
    bool m_big;
    Bytes m_bytes;
};

Bytes tiffIn(const Bytes& segment) {
    return {segment.begin() + 10, segment.end()};
}

}  // namespace

TEST(ExifSegmentReferenceTest, SegmentsHoldEveryValueOfTheirFiles) {
    int withExif = 0;
    for (uint32_t seed = 0; seed < 600; ++seed) {
        const RandomTiff file(seed / 2, seed % 2 == 1);
        const Bytes segment = exifSegmentOfTiff(ByteView(file.bytes()));
        ASSERT_GT(segment.size(), 18U) << seed;
        const PlainTiff before(file.bytes());
        const PlainTiff after(tiffIn(segment));
        auto was = before.main();
        auto is = after.main();
        EXPECT_EQ(after.number(4, 4), 8U) << seed;
        EXPECT_EQ(is.next, 0U) << seed;
        EXPECT_EQ(was.values.erase(kExifPointer), is.values.erase(kExifPointer)) << seed;
        EXPECT_EQ(was.values, is.values) << seed;
        ASSERT_EQ(before.exif().has_value(), after.exif().has_value()) << seed;
        if (!before.exif()) continue;
        ++withExif;
        EXPECT_EQ(before.exif()->values, after.exif()->values) << seed;
    }
    EXPECT_GT(withExif, 300);
}

TEST(ExifSegmentReferenceTest, TheSegmentOfASegmentIsTheSame) {
    for (uint32_t seed = 0; seed < 600; ++seed) {
        const Bytes segment =
            exifSegmentOfTiff(ByteView(RandomTiff(1000 + seed / 2, seed % 2 == 1).bytes()));
        ASSERT_GT(segment.size(), 18U) << seed;
        EXPECT_EQ(exifSegmentOfTiff(ByteView(tiffIn(segment))), segment) << seed;
    }
}

TEST(ExifSegmentReferenceTest, ASegmentStandsInAJpegAsItIs) {
    for (uint32_t seed = 0; seed < 100; ++seed) {
        const Bytes segment =
            exifSegmentOfTiff(ByteView(RandomTiff(2000 + seed / 2, seed % 2 == 1).bytes()));
        Bytes jpeg = {0xFF, 0xD8};
        jpeg.insert(jpeg.end(), segment.begin(), segment.end());
        jpeg.insert(jpeg.end(), {0xFF, 0xD9, 0, 0});
        EXPECT_EQ(exifSegmentOfJpeg(ByteView(jpeg)), segment) << seed;
    }
}

}  // namespace fi::test
