// SPDX-License-Identifier: Apache-2.0
// Writes TIFF structures at the very places that a test names, and the JPEG segments around them.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "PlatformKit/Base/ByteView.h"

namespace fi::test {

using Bytes = std::vector<uint8_t>;

/// Where offsets count from in the three kinds of file.
inline constexpr uint32_t kTiffHeader = 0;
inline constexpr uint32_t kExifHeader = 12;
inline constexpr uint32_t kJfifExifHeader = 30;

/// Appends the `unit` low bytes of a number.
void appendNumber(Bytes& bytes, uint64_t value, uint32_t unit, ByteOrder order);

/// One entry of a directory. Its field holds numbers of `unit` bytes one after another, the rest zero.
struct TagEntry {
    uint16_t tag = 0;
    uint16_t type = 0;
    uint32_t count = 0;
    uint32_t unit = 4;
    std::vector<uint64_t> field;
};

/// An entry whose field is an offset, or one long number.
[[nodiscard]] TagEntry entryAt(uint16_t tag, uint16_t type, uint32_t count, uint32_t field);
/// Entries whose value stands in the field.
[[nodiscard]] TagEntry shortEntry(uint16_t tag, uint16_t value);
[[nodiscard]] TagEntry longEntry(uint16_t tag, uint32_t value);
[[nodiscard]] TagEntry bytesEntry(uint16_t tag, uint16_t type, std::string_view value);

/// Bytes a directory of that many entries takes, with its count and the offset of the next.
[[nodiscard]] constexpr uint32_t directorySize(size_t entries) {
    return static_cast<uint32_t>(2 + 12 * entries + 4);
}

/// A file whose header names a directory at offset 8. All offsets count from the header; what lies between
/// the parts that are written is zero.
class TagBytes {
public:
    explicit TagBytes(ByteOrder order, uint32_t header = kTiffHeader);

    /// Makes the header name another first directory.
    TagBytes& first(uint32_t offset);
    TagBytes& directory(uint32_t offset, const std::vector<TagEntry>& entries, uint32_t next = 0);
    /// A directory that says to have `count` entries.
    TagBytes& directoryOf(uint32_t offset, uint16_t count, const std::vector<TagEntry>& entries,
                          uint32_t next = 0);
    TagBytes& numbers(uint32_t offset, uint32_t unit, const std::vector<uint64_t>& values);
    TagBytes& text(uint32_t offset, std::string_view characters);
    /// Cuts or lengthens the structure, so that it has `length` bytes from the header on.
    TagBytes& length(uint32_t length);

    [[nodiscard]] const Bytes& bytes() const { return m_bytes; }
    [[nodiscard]] ByteOrder order() const { return m_order; }
    /// The position in the file of an offset.
    [[nodiscard]] uint32_t position(uint32_t offset) const { return m_header + offset; }

private:
    void put(uint64_t position, const Bytes& bytes);

    ByteOrder m_order;
    uint32_t m_header;
    Bytes m_bytes;
};

/// A segment of a JPEG file: marker, length, contents.
[[nodiscard]] Bytes jpegSegment(uint8_t marker, std::string_view contents);
/// The start of a JPEG file followed by these segments.
[[nodiscard]] Bytes jpegFile(std::initializer_list<Bytes> segments);
/// The contents of the standard first segment of a JFIF file.
[[nodiscard]] std::string jfifContents();
/// A frame segment's contents: sizes, three components.
[[nodiscard]] std::string frameContents(uint16_t height, uint16_t width);

}  // namespace fi::test
