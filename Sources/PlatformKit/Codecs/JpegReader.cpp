// SPDX-License-Identifier: Apache-2.0
// Scaled decoding through libjpeg; every call of it stands in a step that the trap runs.
#include "PlatformKit/Codecs/JpegReader.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include <jpeglib.h>

#include "PlatformKit/Base/CheckedMath.h"
#include "PlatformKit/Codecs/JpegHeaderReader.h"
#include "PlatformKit/Codecs/JpegInput.h"
#include "PlatformKit/Codecs/JpegTrap.h"
#include "PlatformKit/Codecs/PixelMixing.h"
#include "PlatformKit/Codecs/UnreadRows.h"
#include "PlatformKit/Limits.h"

namespace fi {

namespace {

constexpr uint32_t kRowsAtOnce = 16;                         // one row of blocks of the usual 4:2:0 picture
constexpr uint64_t kMaximumBlockVisits = uint64_t{1} << 29;  // about a second's worth
constexpr uint64_t kAlwaysScans = 64;                        // several times what encoders write

/// What the steps work on. Trivial, because libjpeg may jump out of any of them.
struct Work {
    jpeg_decompress_struct info;
    jpeg_progress_mgr progress;
    uint8_t* firstRow;
    size_t rowBytes;
    uint64_t maximumBytes;
    int maximumScans;
};

void watchScans(j_common_ptr common) {
    const auto* info = reinterpret_cast<j_decompress_ptr>(common);
    const auto* work = static_cast<const Work*>(common->client_data);
    if (info->input_scan_number > work->maximumScans) {
        JpegTrap::giveUp(common, CodecError::LimitExceeded, "The picture has more scans than is allowed.");
    }
}

void openStep(Work& work) {
    jpeg_source_mgr* const source = work.info.src;
    jpeg_create_decompress(&work.info);
    work.info.src = source;
    work.info.client_data = &work;
    work.info.progress = &work.progress;
    work.progress.progress_monitor = watchScans;
    work.info.mem->max_memory_to_use = static_cast<long>(work.maximumBytes);
    jpeg_read_header(&work.info, TRUE);
}

void startStep(Work& work) {
    jpeg_start_decompress(&work.info);
}

void rowsStep(Work& work) {
    jpeg_decompress_struct& info = work.info;
    JSAMPROW rows[kRowsAtOnce];
    while (info.output_scanline < info.output_height) {
        const uint32_t count = std::min(kRowsAtOnce, info.output_height - info.output_scanline);
        for (uint32_t i = 0; i < count; ++i) {
            rows[i] = work.firstRow + work.rowBytes * (info.output_scanline + i);
        }
        jpeg_read_scanlines(&info, rows, count);
    }
}

Failure<CodecFailure> fail(CodecError code, const char* text) {
    return Failure{CodecFailure{code, text}};
}

/// Whether n eighths of both sides reach the floor, rounded as libjpeg rounds.
bool reaches(uint32_t side, uint32_t eighths, uint32_t floor) {
    return (uint64_t{side} * eighths + 7) / 8 >= floor;
}

/// Of the scales n/8 that reach the floor, the one that gives the final size soonest. libjpeg has vector
/// code for 1, 2, 4 and 8 eighths. On 4 to 10 megapixel photos, 6 and 7 eighths took 1.0 to 1.9 times
/// as long as the whole size and are passed over. 3 and 5 eighths took 0.9 to 1.3 times as long as the
/// next vector scale, but the pixels that they save are worth more to the resampling that follows.
uint32_t scaleFor(uint32_t width, uint32_t height, SizeFloor floor) {
    if (floor.width == 0 || floor.height == 0) return 8;
    for (const uint32_t eighths : {1U, 2U, 3U, 4U, 5U}) {
        if (reaches(width, eighths, floor.width) && reaches(height, eighths, floor.height)) return eighths;
    }
    return 8;
}

class JpegDecoder {
public:
    explicit JpegDecoder(ByteSource& source) : m_source(source), m_input(source) {
        m_work.info.err = m_trap.manager();
        m_work.info.src = m_input.manager();
        m_work.maximumBytes = decodeLimits().maximumBytes;
    }
    ~JpegDecoder() { jpeg_destroy_decompress(&m_work.info); }
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;

    CodecResult<DecodedPicture> decode(SizeFloor floor) {
        if (!m_trap.run<&openStep>(m_work)) return Failure{m_trap.failure()};
        if (const auto refusal = checkKind()) return Failure{*refusal};
        setUp(floor);
        if (const auto refusal = checkLimits()) return Failure{*refusal};
        limitScans();
        m_input.expectPixels();
        if (!m_trap.run<&startStep>(m_work)) return Failure{m_trap.failure()};
        return readRows();
    }

    /// True when the frame that decode() met says 0 for the height.
    [[nodiscard]] bool foundNoHeight() const {
        return m_work.info.image_width > 0 && m_work.info.image_height == 0;
    }

private:
    [[nodiscard]] PixelLayout layout() const {
        return m_work.info.out_color_space == JCS_GRAYSCALE ? PixelLayout::Gray8 : PixelLayout::RGBX32;
    }

    [[nodiscard]] std::optional<CodecFailure> checkKind() const {
        const jpeg_decompress_struct& info = m_work.info;
        if (info.data_precision != 8) {
            return CodecFailure{CodecError::Unsupported, "JPEG pictures of more than 8 bits are not read."};
        }
        if (info.jpeg_color_space == JCS_UNKNOWN) {
            return CodecFailure{CodecError::Unsupported, "The picture's color model is not known."};
        }
        return std::nullopt;
    }

    void setUp(SizeFloor floor) {
        jpeg_decompress_struct& info = m_work.info;
        info.scale_num = scaleFor(info.image_width, info.image_height, floor);
        info.scale_denom = 8;
        // RGBA is RGBX with a fourth byte that is promised to be 255.
        info.out_color_space = JCS_EXT_RGBA;
        if (info.num_components == 1) info.out_color_space = JCS_GRAYSCALE;
        if (info.num_components == 4) info.out_color_space = JCS_CMYK;
        const bool fullSize = info.scale_num == 8;
        // A reduced picture is resampled once more, so smooth chroma edges would not be seen.
        info.do_fancy_upsampling = fullSize ? TRUE : FALSE;
        info.do_block_smoothing = fullSize ? TRUE : FALSE;
        info.dct_method = JDCT_ISLOW;
        info.output_width = (info.image_width * info.scale_num + 7) / 8;
        info.output_height = (info.image_height * info.scale_num + 7) / 8;
    }

    [[nodiscard]] uint64_t blocks() const {
        uint64_t count = 0;
        for (int i = 0; i < m_work.info.num_components; ++i) {
            // At most 8192 by 8192 blocks in each of four components: far from 2^64.
            const jpeg_component_info& component = m_work.info.comp_info[i];
            count += uint64_t{component.width_in_blocks} * component.height_in_blocks;
        }
        return count;
    }

    /// Bytes that libjpeg keeps for a picture of several scans.
    [[nodiscard]] uint64_t coefficientBytes() {
        return jpeg_has_multiple_scans(&m_work.info) ? blocks() * sizeof(JBLOCK) : 0;
    }

    /// Every scan visits every block, even when it has no data for them.
    void limitScans() {
        const uint64_t affordable =
            std::max(kMaximumBlockVisits / std::max<uint64_t>(blocks(), 1), kAlwaysScans);
        m_work.maximumScans = static_cast<int>(std::min<uint64_t>(decodeLimits().maximumScans, affordable));
    }

    /// A Huffman-coded block takes a bit at the very least. A file with room for less than a sixteenth of
    /// them is no cut photo but a head that promises a huge picture.
    [[nodiscard]] bool isHollow() const {
        return !m_work.info.arith_code && m_source.size() < blocks() / (8 * 16);
    }

    [[nodiscard]] std::optional<CodecFailure> checkLimits() {
        const DecodeLimits& limits = decodeLimits();
        const jpeg_decompress_struct& info = m_work.info;
        if (info.image_width > limits.maximumSide || info.image_height > limits.maximumSide) {
            return CodecFailure{CodecError::LimitExceeded,
                                "A side of the picture is longer than is allowed."};
        }
        if (uint64_t{info.image_width} * info.image_height > limits.maximumPixels) {
            return CodecFailure{CodecError::LimitExceeded, "The picture has more pixels than is allowed."};
        }
        const uint64_t pixels = uint64_t{info.output_width} * info.output_height;
        if (pixels * bytesPerPixel(layout()) + coefficientBytes() > limits.maximumBytes) {
            return CodecFailure{CodecError::LimitExceeded,
                                "The picture needs more memory than is allowed."};
        }
        if (m_input.atEnd())
            return CodecFailure{CodecError::Damaged, "The file ends before the picture begins."};
        if (isHollow())
            return CodecFailure{CodecError::Damaged, "The file is far too short for its picture."};
        return std::nullopt;
    }

    CodecResult<DecodedPicture> readRows() {
        const jpeg_decompress_struct& info = m_work.info;
        auto pixels = PixelBuffer::create(info.output_width, info.output_height, layout());
        if (!pixels) return fail(CodecError::NoMemory, "There is not enough memory for the picture.");
        m_work.firstRow = pixels->row(0);
        m_work.rowBytes = pixels->rowBytes();
        const bool complete = m_trap.run<&rowsStep>(m_work);
        if (!complete && info.output_scanline == 0) return Failure{m_trap.failure()};
        finishRows(*pixels);
        const bool damaged = !complete || m_trap.guessed() || m_input.ranDry();
        return DecodedPicture{std::move(*pixels), damaged};
    }

    void finishRows(PixelBuffer& pixels) const {
        const jpeg_decompress_struct& info = m_work.info;
        // Adobe's files hold the inks inverted.
        const bool inverted = info.saw_Adobe_marker != FALSE;
        for (uint32_t y = 0; y < info.output_scanline; ++y) {
            if (info.out_color_space == JCS_CMYK) convertInks(pixels.row(y), pixels.width(), inverted);
        }
        markUnread(pixels, info.output_scanline, info.output_height - info.output_scanline);
    }

    ByteSource& m_source;
    JpegTrap m_trap;
    JpegInput m_input;
    Work m_work{};
};

/// The file as it would be had its height been known in front of the first scan, as libjpeg wants it.
class HeightenedSource final : public ByteSource {
public:
    HeightenedSource(ByteSource& source, const JpegLateHeight& late) : m_source(source), m_late(late) {}

    [[nodiscard]] uint64_t size() const override { return m_source.size(); }
    [[nodiscard]] bool failed() const override { return m_source.failed(); }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override {
        const size_t count = m_source.read(offset, out);
        const auto put = [&](uint64_t at, int value) {
            if (at >= offset && at - offset < count)
                out[static_cast<size_t>(at - offset)] = static_cast<uint8_t>(value);
        };
        put(m_late.frameOffset, m_late.height >> 8);
        put(m_late.frameOffset + 1, m_late.height & 0xFF);
        return count;
    }

private:
    ByteSource& m_source;
    JpegLateHeight m_late;
};

}  // namespace

bool looksLikeJpeg(ByteView head) {
    return head.startsWith("\xFF\xD8\xFF");
}

CodecResult<DecodedPicture> decodeJpeg(ByteSource& source, SizeFloor floor) {
    try {
        uint8_t start[3];
        const size_t count = source.read(0, start);
        if (!looksLikeJpeg(ByteView(start, count))) {
            return fail(CodecError::NotThisFormat, "The file is not a JPEG file.");
        }
        JpegDecoder decoder(source);
        auto picture = decoder.decode(floor);
        if (!decoder.foundNoHeight()) return picture;
        JpegHeaderReader header(source);
        if (!header.read() || !header.lateHeight()) return picture;
        HeightenedSource heightened(source, *header.lateHeight());
        return JpegDecoder(heightened).decode(floor);
    } catch (const std::bad_alloc&) {
        return fail(CodecError::NoMemory, "Out of memory.");
    }
}

}  // namespace fi
