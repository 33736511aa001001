// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagBytes.h"

#include <algorithm>

namespace fi::test {

namespace {

Bytes startOfFile(uint32_t header) {
    using namespace std::string_literals;
    // The length of the Exif segment is not what it should be; nobody reads it.
    const Bytes exif = jpegSegment(0xE1, "Exif\0\0"s);
    if (header == kExifHeader) return jpegFile({exif});
    if (header == kJfifExifHeader) return jpegFile({jpegSegment(0xE0, jfifContents()), exif});
    return Bytes(header);
}

}  // namespace

void appendNumber(Bytes& bytes, uint64_t value, uint32_t unit, ByteOrder order) {
    for (uint32_t i = 0; i < unit; ++i) {
        const uint32_t shift = 8 * (order == ByteOrder::Little ? i : unit - 1 - i);
        bytes.push_back(static_cast<uint8_t>(value >> shift));
    }
}

TagEntry entryAt(uint16_t tag, uint16_t type, uint32_t count, uint32_t field) {
    return {tag, type, count, 4, {field}};
}

TagEntry shortEntry(uint16_t tag, uint16_t value) {
    return {tag, 3, 1, 2, {value}};
}

TagEntry longEntry(uint16_t tag, uint32_t value) {
    return {tag, 4, 1, 4, {value}};
}

TagEntry bytesEntry(uint16_t tag, uint16_t type, std::string_view value) {
    TagEntry entry{tag, type, static_cast<uint32_t>(value.size()), 1, {}};
    for (const char byte : value)
        entry.field.push_back(static_cast<uint8_t>(byte));
    return entry;
}

TagBytes::TagBytes(ByteOrder order, uint32_t header)
    : m_order(order), m_header(header), m_bytes(startOfFile(header)) {
    text(0, order == ByteOrder::Little ? "II" : "MM").numbers(2, 2, {42}).first(8);
}

TagBytes& TagBytes::first(uint32_t offset) {
    return numbers(4, 4, {offset});
}

TagBytes& TagBytes::directory(uint32_t offset, const std::vector<TagEntry>& entries, uint32_t next) {
    return directoryOf(offset, static_cast<uint16_t>(entries.size()), entries, next);
}

TagBytes& TagBytes::directoryOf(uint32_t offset, uint16_t count, const std::vector<TagEntry>& entries,
                                uint32_t next) {
    Bytes bytes;
    appendNumber(bytes, count, 2, m_order);
    for (const TagEntry& entry : entries) {
        const size_t start = bytes.size();
        appendNumber(bytes, entry.tag, 2, m_order);
        appendNumber(bytes, entry.type, 2, m_order);
        appendNumber(bytes, entry.count, 4, m_order);
        for (const uint64_t number : entry.field)
            appendNumber(bytes, number, entry.unit, m_order);
        bytes.resize(start + 12);
    }
    appendNumber(bytes, next, 4, m_order);
    put(position(offset), bytes);
    return *this;
}

TagBytes& TagBytes::numbers(uint32_t offset, uint32_t unit, const std::vector<uint64_t>& values) {
    Bytes bytes;
    for (const uint64_t value : values)
        appendNumber(bytes, value, unit, m_order);
    put(position(offset), bytes);
    return *this;
}

TagBytes& TagBytes::text(uint32_t offset, std::string_view characters) {
    put(position(offset), Bytes(characters.begin(), characters.end()));
    return *this;
}

TagBytes& TagBytes::length(uint32_t length) {
    m_bytes.resize(position(length));
    return *this;
}

void TagBytes::put(uint64_t position, const Bytes& bytes) {
    if (m_bytes.size() < position + bytes.size()) m_bytes.resize(position + bytes.size());
    std::copy(bytes.begin(), bytes.end(), m_bytes.begin() + static_cast<ptrdiff_t>(position));
}

Bytes jpegSegment(uint8_t marker, std::string_view contents) {
    Bytes segment = {0xFF, marker};
    appendNumber(segment, contents.size() + 2, 2, ByteOrder::Big);
    segment.insert(segment.end(), contents.begin(), contents.end());
    return segment;
}

Bytes jpegFile(std::initializer_list<Bytes> segments) {
    Bytes file = {0xFF, 0xD8};
    for (const Bytes& segment : segments)
        file.insert(file.end(), segment.begin(), segment.end());
    return file;
}

std::string jfifContents() {
    using namespace std::string_literals;
    return "JFIF\0\1\2\0\0\1\0\1\0\0"s;
}

std::string frameContents(uint16_t height, uint16_t width) {
    Bytes contents = {8};
    appendNumber(contents, height, 2, ByteOrder::Big);
    appendNumber(contents, width, 2, ByteOrder::Big);
    contents.insert(contents.end(), {3, 1, 0x22, 0, 2, 0x11, 1, 3, 0x11, 1});
    return std::string(contents.begin(), contents.end());
}

}  // namespace fi::test
