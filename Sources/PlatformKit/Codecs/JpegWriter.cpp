// SPDX-License-Identifier: Apache-2.0
// Encoding through libjpeg; every call of it stands in a step that the trap runs.
#include "PlatformKit/Codecs/JpegWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>

#include <jpeglib.h>

#include "PlatformKit/Codecs/JpegOutput.h"
#include "PlatformKit/Codecs/JpegTrap.h"

namespace fi {

namespace {

constexpr double kFullColorQuality = 0.9;
constexpr uint32_t kRowsAtOnce = 16;

/// What the step works on. Trivial, because libjpeg may jump out of it.
struct Work {
    jpeg_compress_struct info;
    const uint8_t* firstRow;
    size_t rowBytes;
    uint32_t width;
    uint32_t height;
    bool gray;
    bool fullColor;
    int quality;
    UINT16 densityX;  // 0 when the file shall not say any
    UINT16 densityY;
};

void describe(Work& work) {
    jpeg_compress_struct& info = work.info;
    info.image_width = work.width;
    info.image_height = work.height;
    info.input_components = work.gray ? 1 : 4;
    info.in_color_space = work.gray ? JCS_GRAYSCALE : JCS_EXT_RGBX;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, work.quality, TRUE);
    info.dct_method = JDCT_ISLOW;
    if (work.fullColor) {
        for (int i = 0; i < info.num_components; ++i) {
            info.comp_info[i].h_samp_factor = 1;
            info.comp_info[i].v_samp_factor = 1;
        }
    }
    if (work.densityX > 0) {
        info.density_unit = 1;
        info.X_density = work.densityX;
        info.Y_density = work.densityY;
    }
}

void encodeStep(Work& work) {
    jpeg_destination_mgr* const destination = work.info.dest;
    jpeg_create_compress(&work.info);
    work.info.dest = destination;
    describe(work);
    jpeg_start_compress(&work.info, TRUE);
    JSAMPROW rows[kRowsAtOnce];
    while (work.info.next_scanline < work.height) {
        const uint32_t count = std::min(kRowsAtOnce, work.height - work.info.next_scanline);
        for (uint32_t i = 0; i < count; ++i) {
            // libjpeg takes rows to read through a pointer that could write.
            rows[i] = const_cast<JSAMPROW>(work.firstRow + work.rowBytes * (work.info.next_scanline + i));
        }
        jpeg_write_scanlines(&work.info, rows, count);
    }
    jpeg_finish_compress(&work.info);
}

/// Whole dots per inch, at least 1; 0 for a density that makes no sense.
UINT16 wholeDensity(double density) {
    if (!std::isfinite(density) || density <= 0) return 0;
    return static_cast<UINT16>(std::clamp(std::round(density), 1.0, 65535.0));
}

}  // namespace

std::optional<CodecFailure> encodeJpeg(const PixelBuffer& picture, const JpegOptions& options,
                                       const ByteSink& sink) {
    try {
        if (picture.width() == 0 || picture.height() == 0) {
            return CodecFailure{CodecError::Unsupported, "An empty picture cannot be written as JPEG."};
        }
        JpegTrap trap;
        JpegOutput output(sink);
        Work work{};
        work.info.err = trap.manager();
        work.info.dest = output.manager();
        work.firstRow = picture.row(0);
        work.rowBytes = picture.rowBytes();
        work.width = picture.width();
        work.height = picture.height();
        work.gray = picture.layout() == PixelLayout::Gray8;
        const double quality = std::isfinite(options.quality) ? std::clamp(options.quality, 0.0, 1.0) : 1.0;
        work.quality = static_cast<int>(std::lround(quality * 100));
        work.fullColor = quality >= kFullColorQuality;
        const Density density = options.density.value_or(Density{});
        work.densityX = wholeDensity(density.x > 0 ? density.x : density.y);
        work.densityY = wholeDensity(density.y > 0 ? density.y : density.x);
        const bool written = trap.run<&encodeStep>(work);
        jpeg_destroy_compress(&work.info);
        if (written) return std::nullopt;
        return trap.failure();
    } catch (const std::bad_alloc&) {
        return CodecFailure{CodecError::NoMemory, "Out of memory."};
    }
}

}  // namespace fi
