// SPDX-License-Identifier: Apache-2.0
#include "SampleExif.h"

#include <fmt/format.h>

#include <string_view>

namespace fi {

namespace {

enum : uint16_t {
    kWidth = 0x100,
    kHeight = 0x101,
    kBitsPerSample = 0x102,
    kCompression = 0x103,
    kPhotometric = 0x106,
    kMake = 0x10F,
    kModel = 0x110,
    kStripOffsets = 0x111,
    kOrientation = 0x112,
    kSamplesPerPixel = 0x115,
    kRowsPerStrip = 0x116,
    kStripByteCounts = 0x117,
    kXResolution = 0x11A,
    kYResolution = 0x11B,
    kResolutionUnit = 0x128,
    kYCbCrPositioning = 0x213,
    kExifDirectory = 0x8769,
    kExifVersion = 0x9000,
    kDateTimeOriginal = 0x9003,
    kDateTimeDigitized = 0x9004,
    kComponents = 0x9101,
    kFlashpixVersion = 0xA000,
    kColorSpace = 0xA001,
    kPixelXDimension = 0xA002,
    kPixelYDimension = 0xA003,
};

constexpr uint32_t kHeaderSize = 8;

std::string little16(uint32_t value) {
    return {static_cast<char>(value & 0xFFU), static_cast<char>(value >> 8U & 0xFFU)};
}

std::string little32(uint32_t value) {
    return little16(value & 0xFFFFU) + little16(value >> 16U);
}

/// A directory of tags, which have to be added in ascending order. Little-endian.
class TagDirectory {
public:
    void addShort(uint16_t tag, uint32_t value) { add(tag, 3, 1, little16(value)); }
    void addShorts(uint16_t tag, uint32_t count, uint32_t value) {
        std::string bytes;
        for (uint32_t i = 0; i < count; ++i)
            bytes += little16(value);
        add(tag, 3, count, std::move(bytes));
    }
    void addLong(uint16_t tag, uint32_t value) { add(tag, 4, 1, little32(value)); }
    void addRatio(uint16_t tag, uint32_t value) { add(tag, 5, 1, little32(value) + little32(1)); }
    void addText(uint16_t tag, const std::string& text) {
        add(tag, 2, static_cast<uint32_t>(text.size() + 1), text + '\0');
    }
    void addBytes(uint16_t tag, const std::string& bytes) {
        add(tag, 7, static_cast<uint32_t>(bytes.size()), bytes);
    }

    [[nodiscard]] uint32_t size() const {
        uint32_t size = entriesSize();
        for (const Entry& entry : m_entries)
            size += outsideSize(entry);
        return size;
    }

    /// The bytes of the directory when it stands at `offset`: the entries, then what does not fit in them.
    [[nodiscard]] std::string bytesAt(uint32_t offset) const {
        std::string entries = little16(static_cast<uint32_t>(m_entries.size()));
        std::string outside;
        for (const Entry& entry : m_entries) {
            entries += little16(entry.tag) + little16(entry.type) + little32(entry.count);
            if (outsideSize(entry) == 0) {
                entries += entry.value + std::string(4 - entry.value.size(), '\0');
            } else {
                entries += little32(offset + entriesSize() + static_cast<uint32_t>(outside.size()));
                outside += entry.value + std::string(outsideSize(entry) - entry.value.size(), '\0');
            }
        }
        return entries + little32(0) + outside;
    }

private:
    struct Entry {
        uint16_t tag;
        uint16_t type;
        uint32_t count;
        std::string value;
    };

    void add(uint16_t tag, uint16_t type, uint32_t count, std::string value) {
        m_entries.push_back({tag, type, count, std::move(value)});
    }
    [[nodiscard]] uint32_t entriesSize() const {
        return 2 + 12 * static_cast<uint32_t>(m_entries.size()) + 4;
    }
    /// Values of up to four bytes stand in the entry; others begin at even offsets.
    static uint32_t outsideSize(const Entry& entry) {
        const auto size = static_cast<uint32_t>(entry.value.size());
        return size <= 4 ? 0 : size + size % 2;
    }

    std::vector<Entry> m_entries;
};

std::string header() {
    return "II" + little16(42) + little32(kHeaderSize);
}

TagDirectory exifDirectory(const SampleShot& shot) {
    const DateTimeRec& date = shot.date;
    const std::string text = fmt::format("{:04}:{:02}:{:02} {:02}:{:02}:{:02}", date.year, date.month,
                                         date.day, date.hour, date.minute, date.second);
    TagDirectory exif;
    exif.addBytes(kExifVersion, "0220");
    exif.addText(kDateTimeOriginal, text);
    exif.addText(kDateTimeDigitized, text);
    exif.addBytes(kComponents, std::string("\1\2\3\0", 4));
    exif.addBytes(kFlashpixVersion, "0100");
    exif.addShort(kColorSpace, 1);
    exif.addLong(kPixelXDimension, shot.width);
    exif.addLong(kPixelYDimension, shot.height);
    return exif;
}

void addResolution(TagDirectory& main) {
    constexpr uint32_t kDotsPerInch = 72;
    constexpr uint32_t kInches = 2;
    main.addRatio(kXResolution, kDotsPerInch);
    main.addRatio(kYResolution, kDotsPerInch);
    main.addShort(kResolutionUnit, kInches);
}

TagDirectory jpegDirectory(const SampleShot& shot, uint32_t exifOffset) {
    TagDirectory main;
    main.addText(kMake, "Sample");
    main.addText(kModel, "Sample Camera");
    main.addShort(kOrientation, shot.orientation);
    addResolution(main);
    main.addShort(kYCbCrPositioning, 1);
    main.addLong(kExifDirectory, exifOffset);
    return main;
}

TagDirectory tiffDirectory(const SampleShot& shot, uint32_t pixelsOffset, uint32_t exifOffset) {
    TagDirectory main;
    main.addLong(kWidth, shot.width);
    main.addLong(kHeight, shot.height);
    main.addShorts(kBitsPerSample, 3, 8);
    main.addShort(kCompression, 1);
    main.addShort(kPhotometric, 2);
    main.addText(kMake, "Sample");
    main.addText(kModel, "Sample Camera");
    main.addLong(kStripOffsets, pixelsOffset);
    main.addShort(kOrientation, shot.orientation);
    main.addShort(kSamplesPerPixel, 3);
    main.addLong(kRowsPerStrip, shot.height);
    main.addLong(kStripByteCounts, shot.width * shot.height * 3);
    addResolution(main);
    main.addLong(kExifDirectory, exifOffset);
    return main;
}

std::string exifBlock(const SampleShot& shot) {
    const uint32_t exifOffset = kHeaderSize + jpegDirectory(shot, 0).size();
    return header() + jpegDirectory(shot, exifOffset).bytesAt(kHeaderSize) +
           exifDirectory(shot).bytesAt(exifOffset);
}

void appendColours(std::string& bytes, const CGImage& picture) {
    for (uint32_t y = 0; y < picture.height(); ++y) {
        const uint8_t* pixel = picture.data() + size_t{y} * picture.bytesPerRow();
        for (uint32_t x = 0; x < picture.width(); ++x, pixel += 4)
            bytes.append(
                {static_cast<char>(pixel[0]), static_cast<char>(pixel[1]), static_cast<char>(pixel[2])});
    }
}

}  // namespace

std::string withExif(const std::string& jpeg, const SampleShot& shot) {
    constexpr size_t kStartOfImage = 2;  // the marker that every file begins with
    const std::string content = std::string("Exif\0\0", 6) + exifBlock(shot);
    const auto length = static_cast<uint32_t>(content.size() + 2);
    std::string segment = "\xFF\xE1";
    segment += {static_cast<char>(length >> 8U), static_cast<char>(length & 0xFFU)};
    return jpeg.substr(0, kStartOfImage) + segment + content + jpeg.substr(kStartOfImage);
}

std::string tiffFile(const CGImage& picture, const SampleShot& shot) {
    const uint32_t exifOffset = kHeaderSize + tiffDirectory(shot, 0, 0).size();
    const TagDirectory exif = exifDirectory(shot);
    const uint32_t pixelsOffset = exifOffset + exif.size();
    std::string file = header() + tiffDirectory(shot, pixelsOffset, exifOffset).bytesAt(kHeaderSize) +
                       exif.bytesAt(exifOffset);
    file.reserve(file.size() + size_t{3} * picture.width() * picture.height());
    appendColours(file, picture);
    return file;
}

}  // namespace fi
