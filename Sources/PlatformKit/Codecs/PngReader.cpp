// SPDX-License-Identifier: Apache-2.0
// Decoding through libpng; every call of it that can fail stands in a step that the trap runs.
#include "PlatformKit/Codecs/PngReader.h"

#include <bit>
#include <new>

#include <png.h>

#include "PlatformKit/Base/CheckedMath.h"
#include "PlatformKit/Codecs/BandedPicture.h"
#include "PlatformKit/Codecs/PixelMixing.h"
#include "PlatformKit/Codecs/PngInput.h"
#include "PlatformKit/Codecs/PngShape.h"
#include "PlatformKit/Codecs/PngTrap.h"
#include "PlatformKit/Codecs/UnreadRows.h"
#include "PlatformKit/Limits.h"

namespace fi {

namespace {

constexpr uint32_t kRowsAtOnce = 16;
constexpr size_t kInputBytes = 4096;
constexpr uint32_t kMostChunkBytes = 32U * 1024;  // of what may stand in front of the picture and is read
/// What libpng keeps beside its rows: its structures, zlib's window and state, the input.
constexpr uint64_t kOwnBytes = uint64_t{192} * 1024;
constexpr uint64_t kMostBytesPerByte = 1032;  // of deflate
constexpr uint64_t kCutFactor = 16;  // what has less than a sixteenth of its data is no cut picture

/// What the steps work on. Trivial, because libpng may jump out of any of them.
struct Work {
    png_structp reader;
    png_infop info;
    PngInput* input;
    PngShape shape;
    PixelLayout layout;
    int passes;
    int pass;
    uint8_t* firstRow;  // of the band
    size_t rowBytes;
    uint32_t rows;    // of the band
    uint32_t row;     // of the band: the one that is being read
    bool rowDecoded;  // its data came, though what follows it may be missing
};

/// libpng calls this with every row that it has unpacked.
void takeDecodedRow(png_structp reader, png_row_infop row, png_bytep bytes) {
    Work& work = *static_cast<Work*>(png_get_user_transform_ptr(reader));
    work.rowDecoded = true;
    if (work.layout == PixelLayout::RGBA32) multiplyWithAlpha(bytes, row->width);
}

void openStep(Work& work) {
    png_structp reader = work.reader;
    work.input->feed(reader);
    png_set_user_limits(reader, work.shape.width, work.shape.height);
    png_set_chunk_malloc_max(reader, kMostChunkBytes);
    png_set_chunk_cache_max(reader, 1);
    // Only transparency matters of what may stand in front of the picture.
    png_set_keep_unknown_chunks(reader, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    // The data behind a wrong checksum is used. The chunks' checksums are enough to tell it.
    png_set_crc_action(reader, PNG_CRC_WARN_USE, PNG_CRC_QUIET_USE);
    png_set_benign_errors(reader, 1);
    png_set_option(reader, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
    png_set_option(reader, PNG_MAXIMUM_INFLATE_WINDOW, PNG_OPTION_ON);
    png_set_compression_buffer_size(reader, kInputBytes);
    png_read_info(reader, work.info);
}

void setColorTransforms(const Work& work) {
    png_structp reader = work.reader;
    png_set_expand(reader);  // palettes, gray of 2 and 4 bits, transparent colors
    if (work.layout == PixelLayout::RGBA32) {
        png_set_scale_16(reader);
        png_set_gray_to_rgb(reader);
        return;
    }
    if (!work.shape.isGray()) png_set_filler(reader, 0xFFFF, PNG_FILLER_AFTER);
    if (work.shape.bits == 16 && std::endian::native == std::endian::little) png_set_swap(reader);
}

void startStep(Work& work) {
    if (work.layout != PixelLayout::Gray1) setColorTransforms(work);
    png_set_read_user_transform_fn(work.reader, takeDecodedRow);
    png_set_user_transform_info(work.reader, &work, 0, 0);
    work.passes = png_set_interlace_handling(work.reader);
    png_read_update_info(work.reader, work.info);
}

/// libpng takes its input ahead and loses it where the file ends. Near the end it gets single bytes, so
/// that all data of a cut file are unpacked.
void readRow(Work& work, uint8_t* row) {
    const uint64_t careful = work.shape.storedRowBytes() + 2 * kInputBytes;
    if (work.input->remaining() < careful) png_set_compression_buffer_size(work.reader, 1);
    // As a "display" row, a pixel of an early pass fills the place of those that come later.
    png_read_row(work.reader, nullptr, row);
}

/// Reads the rows of a band, those of an interlaced picture once in every pass.
void rowsStep(Work& work) {
    for (work.pass = 0; work.pass < work.passes; ++work.pass) {
        for (work.row = 0; work.row < work.rows; ++work.row) {
            work.rowDecoded = false;
            readRow(work, work.firstRow + work.rowBytes * work.row);
        }
    }
}

Failure<CodecFailure> fail(CodecError code, const char* text) {
    return Failure{CodecFailure{code, text}};
}

PixelLayout layoutFor(const PngShape& shape, bool hasTransparentColor) {
    if (shape.hasAlphaSamples() || hasTransparentColor) return PixelLayout::RGBA32;
    if (!shape.isGray()) return shape.bits == 16 ? PixelLayout::RGBX64 : PixelLayout::RGBX32;
    if (shape.bits == 16) return PixelLayout::Gray16;
    return shape.bits == 1 ? PixelLayout::Gray1 : PixelLayout::Gray8;
}

class PngDecoder {
public:
    PngDecoder(ByteSource& source, const PngShape& shape) : m_input(source) {
        m_work.shape = shape;
        m_work.input = &m_input;
        m_work.reader = m_trap.reader();
        m_work.info = m_trap.info();
    }

    CodecResult<DecodedPicture> decode(SizeFloor floor) {
        if (m_work.reader == nullptr) return fail(CodecError::NoMemory, "Out of memory.");
        if (!m_trap.run<&openStep>(m_work)) return Failure{m_trap.failure()};
        if (!isOfShape()) return fail(CodecError::Damaged, "The file changed while it was read.");
        m_work.layout =
            layoutFor(m_work.shape, png_get_valid(m_work.reader, m_work.info, PNG_INFO_tRNS) != 0);
        // Each pass goes over all rows, so an interlaced picture is one band.
        const bool whole = m_work.shape.interlaced;
        const uint32_t bandRows = whole ? m_work.shape.height : kRowsAtOnce;
        const BandedPicture::Shape shape{m_work.shape.width, m_work.shape.height, m_work.layout, bandRows};
        const SizeFloor kept = whole ? SizeFloor{} : floor;
        if (!fitsMemory(shape, kept)) {
            return fail(CodecError::LimitExceeded, "The picture needs more memory than is allowed.");
        }
        m_input.expectPixels();
        if (!m_trap.run<&startStep>(m_work)) return Failure{m_trap.failure()};
        // libpng writes rows of its own reckoning: they must be the rows that there is room for.
        if (png_get_rowbytes(m_work.reader, m_work.info) != bytesOfRow(shape.width, shape.layout)) {
            return fail(CodecError::Unsupported, "This kind of PNG picture is not read.");
        }
        return readRows(shape, kept);
    }

private:
    [[nodiscard]] bool isOfShape() const {
        const PngShape& shape = m_work.shape;
        return png_get_image_width(m_work.reader, m_work.info) == shape.width &&
               png_get_image_height(m_work.reader, m_work.info) == shape.height &&
               png_get_bit_depth(m_work.reader, m_work.info) == shape.bits &&
               png_get_color_type(m_work.reader, m_work.info) == static_cast<int>(shape.kind) &&
               (png_get_interlace_type(m_work.reader, m_work.info) != PNG_INTERLACE_NONE) ==
                   shape.interlaced;
    }

    [[nodiscard]] static bool fitsMemory(const BandedPicture::Shape& shape, SizeFloor floor) {
        // libpng keeps two rows of at most eight bytes a pixel.
        const uint64_t own = kOwnBytes + uint64_t{shape.width} * 2 * 8;
        const auto bytes = BandedPicture::bytesNeeded(shape, floor);
        const auto sum = bytes ? checkedAdd(*bytes, own) : std::nullopt;
        return sum && *sum <= decodeLimits().maximumBytes;
    }

    CodecResult<DecodedPicture> readRows(const BandedPicture::Shape& shape, SizeFloor floor) {
        auto picture = BandedPicture::create(shape, floor);
        if (!picture) return fail(CodecError::NoMemory, "There is not enough memory for the picture.");
        bool complete = true;
        bool any = false;
        while (!picture->isComplete()) {
            const BandedPicture::Band band = picture->begin();
            const uint32_t count = complete ? readBand(band, complete) : 0;
            if (count > 0) any = true;
            if (!any) return Failure{m_trap.failure()};
            markUnread(band.pixels, band.first + count, band.rows - count);
            picture->finish(band);
        }
        return DecodedPicture{picture->takeResult(), !complete || m_trap.sawWrongChecksum()};
    }

    /// How many rows of the band have pixels, be they coarse. Clears `complete` when some are missing.
    [[nodiscard]] uint32_t readBand(const BandedPicture::Band& band, bool& complete) {
        m_work.firstRow = band.row(0);
        m_work.rowBytes = band.pixels.rowBytes();
        m_work.rows = band.rows;
        if (m_trap.run<&rowsStep>(m_work)) return band.rows;
        complete = false;
        if (m_work.pass > 0) return band.rows;
        return m_work.row + (m_work.rowDecoded ? 1 : 0);
    }

    PngTrap m_trap;
    PngInput m_input;
    Work m_work{};
};

std::optional<CodecFailure> checkLimits(const PngShape& shape, uint64_t fileBytes) {
    const DecodeLimits& limits = decodeLimits();
    if (shape.width > limits.maximumSide || shape.height > limits.maximumSide) {
        return CodecFailure{CodecError::LimitExceeded, "A side of the picture is longer than is allowed."};
    }
    if (uint64_t{shape.width} * shape.height > limits.maximumPixels) {
        return CodecFailure{CodecError::LimitExceeded, "The picture has more pixels than is allowed."};
    }
    const uint64_t stored =
        checkedMultiply<uint64_t>(shape.storedRowBytes() + 1, shape.height).value_or(UINT64_MAX);
    if (stored / (kMostBytesPerByte * kCutFactor) > fileBytes) {
        return CodecFailure{CodecError::Damaged, "The file is far too short for its picture."};
    }
    return std::nullopt;
}

}  // namespace

bool looksLikePng(ByteView head) {
    return head.startsWith("\x89PNG\r\n\x1A\n");
}

CodecResult<DecodedPicture> decodePng(ByteSource& source, SizeFloor floor) {
    try {
        SourceWindow window(source);
        const auto shape = readPngShape(window);
        if (!shape) return Failure{shape.reason()};
        if (const auto refusal = checkLimits(*shape, source.size())) return Failure{*refusal};
        return PngDecoder(source, *shape).decode(floor);
    } catch (const std::bad_alloc&) {
        return fail(CodecError::NoMemory, "Out of memory.");
    }
}

}  // namespace fi
