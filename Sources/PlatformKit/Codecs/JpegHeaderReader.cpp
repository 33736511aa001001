// SPDX-License-Identifier: Apache-2.0
// Needs no decoder: a segment says its kind and its length, and only four kinds matter.
#include "PlatformKit/Codecs/JpegHeaderReader.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <string_view>

#include "PlatformKit/Codecs/JpegReader.h"
#include "PlatformKit/Codecs/TiffDirectories.h"

namespace fi {

namespace {

using namespace std::string_view_literals;

enum Marker : uint8_t {
    kDefineHuffman = 0xC4,
    kExtension = 0xC8,
    kDefineArithmetic = 0xCC,
    kRestart0 = 0xD0,
    kStartOfImage = 0xD8,
    kEndOfImage = 0xD9,
    kStartOfScan = 0xDA,
    kDefineLines = 0xDC,
    kApplication0 = 0xE0,
    kApplication1 = 0xE1,
    kApplication2 = 0xE2,
};

// Beyond these a file is not a photo with much metadata but something made to keep a reader busy.
constexpr uint32_t kMaximumSegments = 65536;
constexpr uint64_t kMaximumStrays = uint64_t{1} << 20;
constexpr uint64_t kMaximumScanBytes = uint64_t{64} << 20;

constexpr std::string_view kJfif = "JFIF\0"sv;
constexpr std::string_view kExif = "Exif\0"sv;
constexpr std::string_view kProfile = "ICC_PROFILE\0"sv;

bool isFrame(uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != kDefineHuffman && marker != kExtension &&
           marker != kDefineArithmetic;
}

/// Markers that stand alone, without a length.
bool isBare(uint8_t marker) {
    return marker == 0x01 || (marker >= kRestart0 && marker < kStartOfImage);
}

constexpr size_t kView = SourceWindow::kMaximumView;

/// Where, in the data of a scan, something begins that is neither data nor a restart.
std::optional<size_t> markerInScan(ByteView view) {
    for (size_t i = 0; i + 1 < view.size(); ++i) {
        if (view.u8(i) != 0xFF) continue;
        const uint8_t next = view.u8(i + 1).value_or(0);
        if (next != 0x00 && next != 0xFF && !isBare(next)) return i;
    }
    return std::nullopt;
}

ColorModel modelFor(uint32_t components) {
    if (components == 1) return ColorModel::Gray;
    return components == 4 ? ColorModel::CMYK : ColorModel::RGB;
}

Failure<CodecFailure> fail(CodecError code, const char* text) {
    return Failure{CodecFailure{code, text}};
}

}  // namespace

CodecResult<ImageHeader> readJpegHeader(ByteSource& source) {
    try {
        return JpegHeaderReader(source).read();
    } catch (const std::bad_alloc&) {
        return fail(CodecError::NoMemory, "Out of memory.");
    }
}

CodecResult<ImageHeader> JpegHeaderReader::read() {
    if (!looksLikeJpeg(m_window.view(0, 3))) {
        return fail(CodecError::NotThisFormat, "The file is not a JPEG file.");
    }
    for (uint32_t i = 0; i < kMaximumSegments; ++i) {
        const auto segment = nextSegment();
        if (segment && segment->marker == kStartOfScan) findLateHeight(segment->start);
        if (!segment || segment->marker == kStartOfScan || segment->marker == kEndOfImage) break;
        take(*segment);
    }
    if (!m_hasFrame) return fail(CodecError::Damaged, "The file does not say how large its picture is.");
    if (m_header.bitsPerComponent < 2 || m_header.bitsPerComponent > 16) {
        return fail(CodecError::Damaged, "The file declares a depth that JPEG does not have.");
    }
    if (m_header.width == 0 || m_header.height == 0 || m_header.components == 0) {
        return fail(CodecError::Damaged, "The file declares an empty picture.");
    }
    joinProfile();
    finishDensity();
    return std::move(m_header);
}

std::optional<uint8_t> JpegHeaderReader::nextMarker() {
    bool afterFill = false;
    while (m_strays <= kMaximumStrays) {
        const auto byte = m_window.view(m_at, 1).u8(0);
        if (!byte) return std::nullopt;
        ++m_at;
        if (afterFill && *byte != 0x00 && *byte != 0xFF) return byte;
        afterFill = *byte == 0xFF;
        ++m_strays;
    }
    return std::nullopt;
}

std::optional<JpegHeaderReader::Segment> JpegHeaderReader::nextSegment() {
    const auto marker = nextMarker();
    if (!marker) return std::nullopt;
    if (isBare(*marker) || *marker == kStartOfScan || *marker == kEndOfImage)
        return Segment{*marker, m_at, 0};
    const auto length = m_window.view(m_at, 2).withOrder(ByteOrder::Big).u16(0);
    if (!length) return std::nullopt;
    // A length counts itself. One below two is wrong, but decoders step over it, and so must this.
    const Segment segment{*marker, m_at + 2, std::max<uint64_t>(*length, 2) - 2};
    m_at = segment.start + segment.length;
    return segment;
}

void JpegHeaderReader::take(const Segment& segment) {
    if (isFrame(segment.marker)) return takeFrame(segment);
    switch (segment.marker) {
        case kApplication0:
            return takeJfif(segment);
        case kApplication1:
            return takeExif(segment);
        case kApplication2:
            return takeProfilePart(segment);
        default:
            return;
    }
}

void JpegHeaderReader::takeFrame(const Segment& segment) {
    const ByteView view = m_window.view(segment.start, 6).cut(0, segment.length).withOrder(ByteOrder::Big);
    if (m_hasFrame || view.size() < 6) return;
    m_hasFrame = true;
    m_header.bitsPerComponent = view.u8(0).value_or(0);
    m_header.height = view.u16(1).value_or(0);
    m_frameHeightAt = segment.start + 1;
    m_header.width = view.u16(3).value_or(0);
    m_header.components = view.u8(5).value_or(0);
    m_header.model = modelFor(m_header.components);
}

/// The height must be what directly follows the data of the first scan.
void JpegHeaderReader::findLateHeight(uint64_t scan) {
    if (!m_hasFrame || m_header.height != 0) return;
    uint64_t at = scan + m_window.view(scan, 2).withOrder(ByteOrder::Big).u16(0).value_or(2);
    const uint64_t end = at + kMaximumScanBytes;
    // Of a pair of bytes that lies across two views, the first is seen again.
    for (ByteView view = m_window.view(at, kView); view.size() > 1 && at < end;
         view = m_window.view(at, kView)) {
        const auto marker = markerInScan(view);
        at += marker.value_or(view.size() - 1);
        if (!marker) continue;
        const ByteView segment = m_window.view(at, 6).withOrder(ByteOrder::Big);
        const uint16_t height = segment.u16(4).value_or(0);
        if (segment.u8(1) != kDefineLines || segment.u16(2) != 4 || height == 0) return;
        m_header.height = height;
        m_lateHeight = JpegLateHeight{m_frameHeightAt, height};
        return;
    }
}

void JpegHeaderReader::takeJfif(const Segment& segment) {
    const ByteView view = m_window.view(segment.start, 12).cut(0, segment.length).withOrder(ByteOrder::Big);
    if (!view.startsWith(kJfif)) return;
    const uint8_t unit = view.u8(7).value_or(0);
    const double x = view.u16(8).value_or(0);
    const double y = view.u16(10).value_or(0);
    if ((unit != 1 && unit != 2) || x == 0 || y == 0) return;
    const double scale = unit == 2 ? kCentimetresPerInch : 1.0;
    m_header.density = Density{x * scale, y * scale};
}

void JpegHeaderReader::takeExif(const Segment& segment) {
    constexpr uint64_t kPrefix = kExif.size() + 1;  // the second NUL is another byte in some cameras' files
    if (!m_header.exifBlock.empty() || segment.length <= kPrefix) return;
    if (!m_window.view(segment.start, kExif.size()).startsWith(kExif)) return;
    m_header.exifBlock = m_window.copy(segment.start + kPrefix, segment.length - kPrefix);
}

void JpegHeaderReader::takeProfilePart(const Segment& segment) {
    constexpr uint64_t kPrefix = kProfile.size() + 2;
    if (segment.length <= kPrefix) return;
    const ByteView view = m_window.view(segment.start, kPrefix);
    if (!view.startsWith(kProfile) || m_profile.size() >= UINT8_MAX) return;
    ProfilePart part;
    part.number = view.u8(kProfile.size()).value_or(0);
    part.count = view.u8(kProfile.size() + 1).value_or(0);
    part.bytes = m_window.copy(segment.start + kPrefix, segment.length - kPrefix);
    m_profile.push_back(std::move(part));
}

/// Parts may come in any order, but all of them must come once: part of a profile is worse than none.
void JpegHeaderReader::joinProfile() {
    std::stable_sort(m_profile.begin(), m_profile.end(),
                     [](const ProfilePart& a, const ProfilePart& b) { return a.number < b.number; });
    for (size_t i = 0; i < m_profile.size(); ++i) {
        if (m_profile[i].number != i + 1 || m_profile[i].count != m_profile.size()) return;
    }
    for (const ProfilePart& part : m_profile) {
        m_header.iccProfile.insert(m_header.iccProfile.end(), part.bytes.begin(), part.bytes.end());
    }
}

void JpegHeaderReader::finishDensity() {
    if (m_header.density || m_header.exifBlock.empty()) return;
    MemorySource exif(m_header.exifBlock);
    if (const auto set = readTiffDirectories(exif)) m_header.density = fi::density(*set);
}

}  // namespace fi
