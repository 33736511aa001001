// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/ExifSegment.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "Foundation/FileTypes.h"
#include "Foundation/HeadRead.h"
#include "ImageMetadata/TagTypes.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Base/Faults.h"

namespace fi {

namespace {

constexpr uint32_t kEntryBytes = 12;
constexpr uint32_t kCountBytes = 2;
constexpr uint32_t kNextBytes = 4;
constexpr uint64_t kInlineBytes = 4;

constexpr uint16_t kStartOfImage = 0xFFD8;
constexpr uint16_t kApp0 = 0xFFE0;
constexpr uint16_t kApp1 = 0xFFE1;
constexpr size_t kSmallestJpeg = 9;

constexpr uint8_t kExifName[] = {'E', 'x', 'i', 'f', 0, 0};
constexpr uint32_t kTiffHeaderBytes = 8;
constexpr uint32_t kMostDirectoryBytes = 65517;

/// One entry of a directory.
struct Entry {
    uint16_t tag;
    uint64_t valueBytes;
    uint32_t value;
    uint32_t valuePosition;  ///< in its directory

    [[nodiscard]] bool isOutOfLine() const { return valueBytes > kInlineBytes; }
};

/// The entries of a directory; nothing when one of them is cut.
std::optional<uint32_t> entryCount(ByteView directory) {
    const auto count = directory.u16(0);
    if (!count || !directory.contains(kCountBytes, uint64_t{*count} * kEntryBytes)) return std::nullopt;
    return *count;
}

Entry entryAt(ByteView directory, uint32_t index) {
    const uint32_t position = kCountBytes + index * kEntryBytes;
    const uint16_t type = directory.u16(position + 2).value_or(0);
    // A type that is none counts as bytes.
    const uint64_t unit = std::max(1U, unitSizeOfType(type));
    return {directory.u16(position).value_or(0), unit * directory.u32(position + 4).value_or(0),
            directory.u32(position + 8).value_or(0), position + 8};
}

void store32(uint8_t* at, uint32_t value, ByteOrder order) {
    for (uint32_t i = 0; i < sizeof value; ++i) {
        at[i] = static_cast<uint8_t>(value >> (8 * (order == ByteOrder::Little ? i : 3 - i)));
    }
}

/// A directory of a file with all its values.
struct Part {
    ByteView bytes;  ///< empty when there is none that could be moved
    std::optional<ExifPointer> exif;
};

Part directoryAt(ByteView file, uint32_t offset) {
    const DirectoryExtent extent = measureDirectory(file.cut(offset), offset);
    if (extent.span == 0 || !file.contains(offset, extent.span)) return {};
    return {file.cut(offset, extent.span), extent.exif};
}

std::vector<uint8_t> segmentHead(ByteView file, uint32_t directoryBytes) {
    const uint32_t length = directoryBytes + 16;
    std::vector<uint8_t> segment = {0xFF, 0xE1, static_cast<uint8_t>(length >> 8),
                                    static_cast<uint8_t>(length & 0xFF)};
    segment.reserve(length + 2);
    segment.insert(segment.end(), std::begin(kExifName), std::end(kExifName));
    segment.insert(segment.end(), file.data(), file.data() + 4);
    segment.resize(segment.size() + 4);
    store32(segment.data() + segment.size() - 4, kTiffHeaderBytes, file.order());
    return segment;
}

/// Appends a directory, whose values move with it from `from` to `to` of their files. Returns where it
/// stands.
uint8_t* append(std::vector<uint8_t>& segment, ByteView directory, int64_t from, int64_t to) {
    const size_t start = segment.size();
    segment.insert(segment.end(), directory.data(), directory.data() + directory.size());
    const std::span<uint8_t> copy = std::span(segment).subspan(start);
    if (from != to) moveDirectory(copy, directory.order(), from - to);
    return copy.data();
}

/// A block with these bytes; null without memory.
std::unique_ptr<char, FreeBlock> blockOf(const std::vector<uint8_t>& bytes) {
    const bool fails = faultHappens(Fault::Allocation, "readExifSegment");
    std::unique_ptr<char, FreeBlock> block(fails ? nullptr : static_cast<char*>(std::malloc(bytes.size())));
    if (block) std::memcpy(block.get(), bytes.data(), bytes.size());
    return block;
}

/// Fills the segment; what cannot be done leaves it, with its code, as it is.
void readSegment(ExifSegment& segment, CFURLRef url, CFStringRef type) {
    const HeadRead read = readHead(url->path(), ReadLimit::None);
    if (read.code != kNoErr || read.data->length() == 0) return;
    const ByteView file(read.data->bytes());
    const auto bytes = type == kUTTypeJPEG ? exifSegmentOfJpeg(file) : exifSegmentOfTiff(file);
    if (!bytes.empty()) {
        segment.block = blockOf(bytes);
        if (!segment.block) return;
        segment.size = static_cast<uint32_t>(bytes.size());
    }
    segment.code = kExifSegmentRead;
}

}  // namespace

DirectoryExtent measureDirectory(ByteView directory, int64_t offset) {
    DirectoryExtent extent;
    const auto count = entryCount(directory);
    if (!count) return extent;
    extent.size = kCountBytes + *count * kEntryBytes;
    uint64_t span = extent.size + kNextBytes;
    for (uint32_t i = 0; i < *count; ++i) {
        const Entry entry = entryAt(directory, i);
        if (entry.tag == kExifPointer) extent.exif = ExifPointer{entry.value, entry.valuePosition};
        if (!entry.isOutOfLine()) continue;
        const int64_t relative = int64_t{entry.value} - offset;
        if (relative < extent.size) return {extent.size, 0, extent.exif};
        span = std::max(span, static_cast<uint64_t>(relative) + entry.valueBytes);
    }
    extent.span = static_cast<uint32_t>(std::min<uint64_t>(span, std::numeric_limits<uint32_t>::max()));
    return extent;
}

uint32_t moveDirectory(std::span<uint8_t> directory, ByteOrder order, int64_t distance) {
    const ByteView view(directory, order);
    const uint32_t count = entryCount(view).value_or(0);
    for (uint32_t i = 0; i < count; ++i) {
        const Entry entry = entryAt(view, i);
        if (!entry.isOutOfLine()) continue;
        store32(directory.data() + entry.valuePosition, static_cast<uint32_t>(entry.value - distance),
                order);
    }
    return count == 0 ? 0 : kCountBytes + count * kEntryBytes + kNextBytes;
}

std::vector<uint8_t> exifSegmentOfJpeg(ByteView file) {
    const ByteView jpeg = file.withOrder(ByteOrder::Big);
    if (jpeg.size() < kSmallestJpeg || jpeg.u16(0) != kStartOfImage) return {};
    uint32_t start = 2;
    if (jpeg.u16(start) == kApp0) {
        const uint16_t length = jpeg.u16(start + 2).value_or(0);
        if (length < 2) return {};
        start += 2 + length;
    }
    if (jpeg.u16(start) != kApp1) return {};
    const uint16_t length = jpeg.u16(start + 2).value_or(0);
    if (length < 2 || !jpeg.contains(start, uint64_t{length} + 6)) return {};
    const std::span<const uint8_t> segment = jpeg.cut(start, uint64_t{length} + 2).bytes();
    return {segment.begin(), segment.end()};
}

std::vector<uint8_t> exifSegmentOfTiff(ByteView file) {
    const uint8_t mark = file.u8(0).value_or(0);
    if (mark != 'I' && mark != 'M') return {};
    const ByteOrder order = mark == 'I' ? ByteOrder::Little : ByteOrder::Big;
    file = file.withOrder(order);
    const auto offset = file.u32(4);
    if (!offset) return {};
    const Part main = directoryAt(file, *offset);
    if (main.bytes.empty()) return {};
    const Part exif = main.exif ? directoryAt(file, main.exif->offset) : Part{};
    if (main.exif && exif.bytes.empty()) return {};
    const uint64_t total = uint64_t{main.bytes.size()} + exif.bytes.size();
    if (total > kMostDirectoryBytes) return {};

    // Positions in the segment count, as in a file, from the TIFF header on.
    const auto exifPosition = static_cast<uint32_t>(kTiffHeaderBytes + main.bytes.size());
    std::vector<uint8_t> segment = segmentHead(file, static_cast<uint32_t>(total));
    uint8_t* const copy = append(segment, main.bytes, *offset, kTiffHeaderBytes);
    const uint32_t next = kCountBytes + entryCount(main.bytes).value_or(0) * kEntryBytes;
    store32(copy + next, 0, order);
    if (!main.exif) return segment;
    store32(copy + main.exif->fieldPosition, exifPosition, order);
    append(segment, exif.bytes, main.exif->offset, exifPosition);
    return segment;
}

ExifSegment readExifSegment(CFURLRef url) {
    ExifSegment segment;
    segment.code = kExifSegmentFailed;
    guarded([&] {
        const CFStringRef type = fileTypeOfURL(url);
        if (type == kUTTypeJPEG) {
            segment.code = kExifSegmentRead;
        } else if (type != kUTTypeTIFF) {
            segment.code = kExifSegmentNoPhoto;
            return;
        }
        readSegment(segment, url, type);
    });
    return segment;
}

}  // namespace fi
