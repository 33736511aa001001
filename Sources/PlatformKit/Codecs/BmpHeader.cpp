// SPDX-License-Identifier: Apache-2.0
// Sizes and offsets that many writers get wrong (of the file, of the pixels, of the palette) are believed
// only as far as they make sense.
#include "PlatformKit/Codecs/BmpHeader.h"

#include <algorithm>

namespace fi {

namespace {

constexpr uint32_t kFileHeaderBytes = 14;
constexpr uint32_t kCoreHeaderBytes = 12;
constexpr uint32_t kShortestOs2Header = 16;
constexpr uint32_t kInfoHeaderBytes = 40;
constexpr uint32_t kColorMasksHeaderBytes = 52;
constexpr uint32_t kAlphaMaskHeaderBytes = 56;
constexpr uint32_t kLongestOs2Header = 64;
constexpr uint32_t kProfileHeaderBytes = 124;
constexpr uint32_t kEmbeddedProfile = 0x4D424544;  // "MBED"

bool isGrayColor(BmpColor color) {
    return color.red == color.green && color.green == color.blue;
}

class HeaderParser {
public:
    explicit HeaderParser(SourceWindow& window)
        : m_fileBytes(window.size()), m_file(window.view(0, SourceWindow::kMaximumView)) {}

    CodecResult<BmpHeader> parse() {
        if (!findFileHeader()) {
            return Failure{CodecFailure{CodecError::NotThisFormat, "The file is not a BMP file."}};
        }
        if (const auto refusal = findInfoHeader()) return Failure{*refusal};
        if (const auto refusal = readShape()) return Failure{*refusal};
        if (const auto refusal = readPacking()) return Failure{*refusal};
        if (const auto refusal = readMasks()) return Failure{*refusal};
        readPalette();
        readDensity();
        readProfile();
        return std::move(m_header);
    }

private:
    using Refusal = std::optional<CodecFailure>;

    [[nodiscard]] bool isCore() const { return m_size == kCoreHeaderBytes; }
    [[nodiscard]] bool isOs2() const {
        return m_size <= kLongestOs2Header && m_size != kInfoHeaderBytes &&
               m_size != kColorMasksHeaderBytes && m_size != kAlphaMaskHeaderBytes;
    }
    /// Short headers leave fields out: those are zero.
    [[nodiscard]] uint32_t field(uint32_t offset) const { return m_info.u32(offset).value_or(0); }
    [[nodiscard]] uint32_t entryBytes() const { return isCore() ? 3 : 4; }

    bool findFileHeader() {
        uint64_t fileHeader = 0;
        if (m_file.startsWith("BA")) fileHeader = kFileHeaderBytes;
        if (!m_file.startsWith("BM", fileHeader)) return false;
        m_offset = m_file.u32(fileHeader + 10).value_or(0);
        m_start = fileHeader + kFileHeaderBytes;
        return true;
    }

    Refusal findInfoHeader() {
        m_size = m_file.u32(m_start).value_or(0);
        if (m_size != kCoreHeaderBytes && (m_size < kShortestOs2Header || m_size > kProfileHeaderBytes)) {
            return CodecFailure{CodecError::Unsupported, "The kind of the file's header is not known."};
        }
        if (!m_file.contains(m_start, m_size)) {
            return CodecFailure{CodecError::Damaged, "The file ends inside of its header."};
        }
        m_info = m_file.cut(m_start, m_size);
        return std::nullopt;
    }

    Refusal readShape() {
        int64_t width = 0;
        int64_t height = 0;
        if (isCore()) {
            width = m_info.u16(4).value_or(0);
            height = m_info.u16(6).value_or(0);
        } else {
            width = static_cast<int32_t>(field(4));
            height = static_cast<int32_t>(field(8));
        }
        if (width <= 0 || height == 0) {
            return CodecFailure{CodecError::Damaged, "The file declares an empty picture."};
        }
        m_header.topDown = height < 0;
        m_header.width = static_cast<uint32_t>(width);
        m_header.height = static_cast<uint32_t>(height < 0 ? -height : height);
        if (m_info.u16(isCore() ? 8 : 12) != 1) {
            return CodecFailure{CodecError::Damaged, "The file declares other than one plane."};
        }
        m_header.bits = m_info.u16(isCore() ? 10 : 14).value_or(0);
        return std::nullopt;
    }

    Refusal readPacking() {
        const uint32_t compression = field(16);
        const std::optional<BmpPacking> packing = packingFor(compression);
        if (!packing) {
            return CodecFailure{CodecError::Unsupported, "The file's kind of compression is not known."};
        }
        m_header.packing = *packing;
        m_alphaField = compression == 6;
        if (!bitsSuitPacking()) {
            return CodecFailure{CodecError::Unsupported, "The file's number of bits a pixel is not known."};
        }
        return std::nullopt;
    }

    [[nodiscard]] std::optional<BmpPacking> packingFor(uint32_t compression) const {
        switch (compression) {
            case 0:
                return BmpPacking::Plain;
            case 1:
                return BmpPacking::Runs8;
            case 2:
                return BmpPacking::Runs4;
            case 3:
                return isOs2() ? BmpPacking::Huffman : BmpPacking::Fields;
            case 4:
                return isOs2() ? BmpPacking::Runs24 : BmpPacking::Jpeg;
            case 5:
                return isOs2() ? std::nullopt : std::optional(BmpPacking::Png);
            case 6:
                return isOs2() ? std::nullopt : std::optional(BmpPacking::Fields);
            default:
                return std::nullopt;
        }
    }

    [[nodiscard]] bool bitsSuitPacking() const {
        const uint32_t bits = m_header.bits;
        switch (m_header.packing) {
            case BmpPacking::Plain:
                return bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16 || bits == 24 ||
                       bits == 32;
            case BmpPacking::Fields:
                return bits == 16 || bits == 32;
            case BmpPacking::Runs8:
                return bits == 8;
            case BmpPacking::Runs4:
                return bits == 4;
            case BmpPacking::Runs24:
                return bits == 24;
            case BmpPacking::Huffman:
                return bits == 1;
            case BmpPacking::Jpeg:
            case BmpPacking::Png:
                return true;  // the number means nothing
        }
        return false;
    }

    Refusal readMasks() {
        if (m_header.packing == BmpPacking::Jpeg || m_header.packing == BmpPacking::Png) m_header.bits = 0;
        m_tables = m_start + m_size;
        if (m_header.packing == BmpPacking::Plain && m_header.bits == 16) {
            m_header.masks = {0x7C00, 0x03E0, 0x001F, 0};
        } else if (m_header.packing == BmpPacking::Plain) {
            m_header.masks = {0xFF0000, 0x00FF00, 0x0000FF, 0};
        }
        if (m_header.packing != BmpPacking::Fields) return std::nullopt;
        // Behind the shortest header they follow it; longer ones hold them in the same place.
        const uint64_t at = m_start + kInfoHeaderBytes;
        const bool behind = m_size == kInfoHeaderBytes;
        const bool hasAlpha = behind ? m_alphaField : m_size >= kAlphaMaskHeaderBytes;
        if (behind) m_tables += hasAlpha ? 16 : 12;
        const uint32_t used = m_header.bits == 16 ? 0xFFFF : 0xFFFFFFFF;
        const auto mask = [&](uint32_t index) { return m_file.u32(at + 4 * index).value_or(0) & used; };
        m_header.masks = {mask(0), mask(1), mask(2), hasAlpha ? mask(3) : 0};
        if ((m_header.masks.red | m_header.masks.green | m_header.masks.blue) == 0) {
            return CodecFailure{CodecError::Damaged, "The file's color masks are empty."};
        }
        return std::nullopt;
    }

    /// The palette lies before the pixels. An offset of the pixels that leaves it no room, or that lies
    /// behind the file, is nonsense: then they follow the palette.
    void readPalette() {
        const uint32_t full = m_header.hasPalette() ? 1U << m_header.bits : 0;
        const uint32_t declared = field(32);
        const uint64_t least = m_tables + (full > 0 ? entryBytes() : 0);
        const bool sensible = m_offset >= least && m_offset < m_fileBytes;
        m_header.pixelStart = m_offset;
        if (!sensible) {
            const uint64_t entries = declared > 0 ? declared : full;
            m_header.pixelStart = m_tables + entries * entryBytes();
        }
        const uint64_t room = (m_header.pixelStart - m_tables) / entryBytes();
        uint64_t count = declared > 0 ? std::min(declared, full) : full;
        count = std::min(count, room);
        for (uint64_t at = m_tables; count > 0 && m_file.contains(at, entryBytes()); --count) {
            const auto entry = m_file.cut(at, 3).bytes();
            m_header.palette.push_back({entry[2], entry[1], entry[0]});
            at += entryBytes();
        }
    }

    void readDensity() {
        const auto perInch = [this](uint32_t offset) {
            const double perMetre = std::max(static_cast<int32_t>(field(offset)), 0);
            return perMetre * kCentimetresPerInch / 100;
        };
        const double x = perInch(24);
        const double y = perInch(28);
        if (x > 0 || y > 0) m_header.density = Density{x > 0 ? x : y, y > 0 ? y : x};
    }

    void readProfile() {
        if (m_size < kProfileHeaderBytes || field(56) != kEmbeddedProfile) return;
        m_header.profileStart = m_start + field(112);
        m_header.profileBytes = field(116);
    }

    uint64_t m_fileBytes;
    ByteView m_file;        // as much of it as headers and palette can take
    ByteView m_info;        // the header behind the file header
    uint64_t m_start = 0;   // of that header
    uint64_t m_tables = 0;  // where the palette begins
    uint64_t m_offset = 0;  // of the pixels, as the file has it
    uint32_t m_size = 0;
    bool m_alphaField = false;
    BmpHeader m_header;
};

}  // namespace

bool BmpHeader::isGray() const {
    return hasPalette() && std::all_of(palette.begin(), palette.end(), isGrayColor);
}

bool BmpHeader::isBlackAndWhite() const {
    if (bits != 1 || palette.size() != 2 || !isGray()) return false;
    return (color(0).red == 0 && color(1).red == 255) || (color(0).red == 255 && color(1).red == 0);
}

PixelLayout BmpHeader::layout() const {
    if (bits == 1) return isBlackAndWhite() ? PixelLayout::Gray1 : PixelLayout::RGBX32;
    if (isGray()) return PixelLayout::Gray8;
    const bool hasAlpha = packing == BmpPacking::Fields && masks.alpha != 0;
    return hasAlpha ? PixelLayout::RGBA32 : PixelLayout::RGBX32;
}

CodecResult<BmpHeader> parseBmpHeader(SourceWindow& window) {
    return HeaderParser(window).parse();
}

}  // namespace fi
