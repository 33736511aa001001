// SPDX-License-Identifier: Apache-2.0
// Needs no decoder: a chunk says its length and its name, and only three kinds matter.
#include "PlatformKit/Codecs/PngHeaderReader.h"

#include <cstring>
#include <new>

#include "PlatformKit/Codecs/PngProfile.h"
#include "PlatformKit/Codecs/PngReader.h"
#include "PlatformKit/Codecs/PngShape.h"
#include "PlatformKit/Codecs/TiffDirectories.h"

namespace fi {

namespace {

using namespace std::string_view_literals;

// Beyond these a file is not a picture with much metadata but something made to keep a reader busy.
constexpr uint32_t kMaximumChunks = 65536;
constexpr uint64_t kMaximumFactBytes = uint64_t{16} << 20;

constexpr uint8_t kPerMetre = 1;
constexpr double kMetresPerInch = 0.0254;
/// What a JPEG segment begins with. Some writers leave it in front of the block.
constexpr std::string_view kExifPrefix = "Exif\0\0"sv;

ColorModel modelFor(const PngShape& shape) {
    return shape.isGray() ? ColorModel::Gray : ColorModel::RGB;
}

}  // namespace

CodecResult<ImageHeader> readPngHeader(ByteSource& source) {
    try {
        return PngHeaderReader(source).read();
    } catch (const std::bad_alloc&) {
        return Failure{CodecFailure{CodecError::NoMemory, "Out of memory."}};
    }
}

CodecResult<ImageHeader> PngHeaderReader::read() {
    const auto shape = readPngShape(m_window);
    if (!shape) return Failure{shape.reason()};
    m_header.width = shape->width;
    m_header.height = shape->height;
    m_header.bitsPerComponent = shape->bits;
    m_header.components = shape->samples();
    m_header.model = modelFor(*shape);
    m_at = kPngSignatureBytes;
    for (uint32_t i = 0; i < kMaximumChunks; ++i) {
        const auto chunk = nextChunk();
        if (!chunk || chunk->is("IDAT") || chunk->is("IEND")) break;
        take(*chunk);
    }
    finishDensity();
    return std::move(m_header);
}

std::optional<PngHeaderReader::Chunk> PngHeaderReader::nextChunk() {
    const ByteView head = m_window.view(m_at, kPngChunkHeadBytes).withOrder(ByteOrder::Big);
    const auto length = head.u32(0);
    if (head.size() < kPngChunkHeadBytes || !length || *length > kMaximumPngNumber) return std::nullopt;
    Chunk chunk;
    std::memcpy(chunk.name, head.data() + 4, sizeof chunk.name);
    chunk.start = m_at + kPngChunkHeadBytes;
    chunk.length = *length;
    // Cannot wrap: `m_at` lies in the source, and a length is below 2^31.
    m_at = chunk.start + chunk.length + kPngChecksumBytes;
    return chunk;
}

void PngHeaderReader::take(const Chunk& chunk) {
    if (chunk.is("pHYs")) return takeDensity(chunk);
    if (chunk.length > kMaximumFactBytes) return;
    if (chunk.is("eXIf")) return takeExif(chunk);
    if (chunk.is("iCCP")) return takeProfile(chunk);
}

void PngHeaderReader::takeDensity(const Chunk& chunk) {
    const ByteView view = m_window.view(chunk.start, 9).cut(0, chunk.length).withOrder(ByteOrder::Big);
    const uint32_t x = view.u32(0).value_or(0);
    const uint32_t y = view.u32(4).value_or(0);
    if (m_header.density || view.u8(8) != kPerMetre || x == 0 || y == 0) return;
    m_header.density = Density{x * kMetresPerInch, y * kMetresPerInch};
}

void PngHeaderReader::takeExif(const Chunk& chunk) {
    if (!m_header.exifBlock.empty()) return;
    const bool hasPrefix = chunk.length >= kExifPrefix.size() &&
                           m_window.view(chunk.start, kExifPrefix.size()).startsWith(kExifPrefix);
    const uint64_t skipped = hasPrefix ? kExifPrefix.size() : 0;
    m_header.exifBlock = m_window.copy(chunk.start + skipped, chunk.length - skipped);
}

void PngHeaderReader::takeProfile(const Chunk& chunk) {
    if (!m_header.iccProfile.empty()) return;
    const std::vector<uint8_t> bytes = m_window.copy(chunk.start, chunk.length);
    m_header.iccProfile = unpackPngProfile(ByteView(bytes));
}

void PngHeaderReader::finishDensity() {
    if (m_header.density || m_header.exifBlock.empty()) return;
    MemorySource exif(m_header.exifBlock);
    if (const auto set = readTiffDirectories(exif)) m_header.density = fi::density(*set);
}

}  // namespace fi
