// SPDX-License-Identifier: Apache-2.0
// Encoding through libtiff, a strip at a time.
#include "PlatformKit/Codecs/TiffWriter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include <tiffio.h>

#include "PlatformKit/Codecs/TiffMemory.h"

namespace fi {

namespace {

constexpr size_t kStripBytes = size_t{64} * 1024;
constexpr double kDefaultDensity = 72;
// Room for the directory, the strip tables and LZW's growth of noise within the format's 4 GiB.
constexpr uint64_t kMaximumSampleBytes = uint64_t{5} << 29;

Failure<CodecFailure> fail(CodecError code, std::string text) {
    return Failure{CodecFailure{code, std::move(text)}};
}

uint32_t samplesOf(const PixelBuffer& picture) {
    return picture.layout() == PixelLayout::Gray8 ? 1 : 3;
}

float usableDensity(double density) {
    return static_cast<float>(std::isfinite(density) && density > 0 ? density : kDefaultDensity);
}

bool describe(TIFF* tiff, const PixelBuffer& picture, const TiffOptions& options, uint32_t rowsPerStrip) {
    const Density density = options.density.value_or(Density{kDefaultDensity, kDefaultDensity});
    const uint32_t samples = samplesOf(picture);
    bool ok = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width()) != 0;
    ok = TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height()) != 0 && ok;
    ok = TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8) != 0 && ok;
    ok = TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples) != 0 && ok;
    ok = TIFFSetField(tiff, TIFFTAG_COMPRESSION, options.lzw ? COMPRESSION_LZW : COMPRESSION_NONE) != 0 &&
         ok;
    ok = TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, samples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB) !=
             0 &&
         ok;
    ok = TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != 0 && ok;
    ok = TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip) != 0 && ok;
    ok = TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) != 0 && ok;
    ok = TIFFSetField(tiff, TIFFTAG_XRESOLUTION, double{usableDensity(density.x)}) != 0 && ok;
    return TIFFSetField(tiff, TIFFTAG_YRESOLUTION, double{usableDensity(density.y)}) != 0 && ok;
}

void packRow(const PixelBuffer& picture, uint32_t y, uint8_t* out) {
    const uint8_t* in = picture.row(y);
    if (picture.layout() == PixelLayout::Gray8) {
        std::memcpy(out, in, picture.width());
        return;
    }
    for (uint32_t x = 0; x < picture.width(); ++x, in += 4, out += 3) {
        out[0] = in[0];
        out[1] = in[1];
        out[2] = in[2];
    }
}

bool writeStrips(TIFF* tiff, const PixelBuffer& picture, uint32_t rowsPerStrip) {
    const size_t rowBytes = size_t{picture.width()} * samplesOf(picture);
    std::vector<uint8_t> strip(rowBytes * rowsPerStrip);
    uint32_t number = 0;
    for (uint32_t y = 0; y < picture.height(); ++number) {
        const uint32_t rows = std::min(rowsPerStrip, picture.height() - y);
        for (uint32_t i = 0; i < rows; ++i) {
            packRow(picture, y + i, strip.data() + rowBytes * i);
        }
        const auto bytes = static_cast<tmsize_t>(rowBytes * rows);
        if (TIFFWriteEncodedStrip(tiff, number, strip.data(), bytes) != bytes) return false;
        y += rows;
    }
    return true;
}

CodecResult<std::vector<uint8_t>> encode(const PixelBuffer& picture, const TiffOptions& options) {
    if (picture.width() == 0 || picture.height() == 0) {
        return fail(CodecError::Unsupported, "An empty picture cannot be written as TIFF.");
    }
    const uint64_t rowBytes = uint64_t{picture.width()} * samplesOf(picture);
    // A row has less than 2^34 bytes and there are less than 2^32 rows, but only a picture that lies in
    // memory comes here: the product is below 2^63.
    if (rowBytes * picture.height() > kMaximumSampleBytes) {
        return fail(CodecError::LimitExceeded, "The picture is too large for a TIFF file.");
    }
    const uint64_t fitting = std::max<uint64_t>(kStripBytes / rowBytes, 1);
    const uint32_t rowsPerStrip = std::min(static_cast<uint32_t>(fitting), picture.height());
    TiffMemory memory;
    if (memory.get() == nullptr || !describe(memory.get(), picture, options, rowsPerStrip) ||
        !writeStrips(memory.get(), picture, rowsPerStrip)) {
        return fail(CodecError::WriteFailed, "The TIFF file could not be written: " + memory.lastError());
    }
    std::vector<uint8_t> bytes = memory.finish();
    if (bytes.empty()) {
        return fail(CodecError::WriteFailed, "The TIFF file could not be finished: " + memory.lastError());
    }
    return bytes;
}

}  // namespace

CodecResult<std::vector<uint8_t>> encodeTiff(const PixelBuffer& picture, const TiffOptions& options) {
    try {
        return encode(picture, options);
    } catch (const std::bad_alloc&) {
        return fail(CodecError::NoMemory, "Out of memory.");
    }
}

}  // namespace fi
