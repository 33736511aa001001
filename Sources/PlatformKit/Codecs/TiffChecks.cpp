// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/TiffChecks.h"

#include <algorithm>

#include <tiffio.h>

#include "PlatformKit/Base/CheckedMath.h"
#include "PlatformKit/Codecs/BandedPicture.h"
#include "PlatformKit/Limits.h"

namespace fi {

namespace {

/// How many bytes of samples one byte of the file can stand for, with room to spare for a file that is
/// cut; 0 where there is no such bound.
uint64_t mostBytesPerByte(uint16_t compression) {
    switch (compression) {
        case COMPRESSION_NONE:
            return 16;
        case COMPRESSION_PACKBITS:
            return 64 * 16;
        case COMPRESSION_LZW:
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE:
            return 1024 * 16;
        default:
            return 0;
    }
}

/// True when the strips or tiles are so many and the file is so short that nearly none can be there.
bool isHollow(TIFF* tiff, uint64_t unitBytes, uint64_t fileBytes) {
    uint16_t compression = COMPRESSION_NONE;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &compression);
    const uint64_t most = mostBytesPerByte(compression);
    const uint64_t units = TIFFIsTiled(tiff) != 0 ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    const uint64_t sampleBytes = checkedMultiply(units, unitBytes).value_or(UINT64_MAX);
    return most != 0 && sampleBytes / most > fileBytes;
}

/// Bytes of strips or tiles that are held at a time: of separate planes, one of each color and an alpha.
std::optional<uint64_t> heldUnitBytes(TIFF* tiff, uint64_t unitBytes) {
    uint16_t planes = PLANARCONFIG_CONTIG;
    uint16_t samples = 1;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &planes);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
    const uint64_t count = planes == PLANARCONFIG_SEPARATE ? std::min<uint64_t>(samples, 4) : 1;
    return checkedMultiply(unitBytes, count);
}

/// All memory of a decode to the floor; nullopt when it is beyond counting.
std::optional<uint64_t> memoryFor(const TiffHandle& handle, uint32_t width, uint32_t height,
                                  uint64_t unitBytes, SizeFloor floor) {
    const bool gray = isGray(handle);
    const uint32_t rows = tiffBandRows(handle);
    auto memory = BandedPicture::bytesNeeded(
        {width, height, gray ? PixelLayout::Gray8 : PixelLayout::RGBX32, rows}, floor);
    const auto units = heldUnitBytes(handle.get(), unitBytes);
    if (!memory || !units) return std::nullopt;
    memory = checkedAdd(*memory, *units);
    // Gray passes through four-byte words. The pixels of a band are those of the picture at most.
    if (memory && gray) memory = checkedAdd(*memory, uint64_t{width} * rows * 4);
    return memory;
}

CodecFailure tooMuch(const char* text) {
    return CodecFailure{CodecError::LimitExceeded, text};
}

}  // namespace

std::optional<CodecFailure> checkTiffLimits(const TiffHandle& handle, SizeFloor floor) {
    const DecodeLimits& limits = decodeLimits();
    TIFF* const tiff = handle.get();
    uint32_t width = 0;
    uint32_t height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    if (width == 0 || height == 0) {
        return CodecFailure{CodecError::Damaged, "The file declares an empty picture."};
    }
    if (width > limits.maximumSide || height > limits.maximumSide) {
        return tooMuch("A side of the picture is longer than is allowed.");
    }
    const uint64_t pixels = uint64_t{width} * height;
    if (pixels > limits.maximumPixels) return tooMuch("The picture has more pixels than is allowed.");
    const tmsize_t unit = TIFFIsTiled(tiff) != 0 ? TIFFTileSize(tiff) : TIFFStripSize(tiff);
    if (unit <= 0) return CodecFailure{CodecError::Damaged, "The file's strips have no size."};
    const auto memory = memoryFor(handle, width, height, static_cast<uint64_t>(unit), floor);
    if (!memory || *memory > limits.maximumBytes) {
        return tooMuch("The picture needs more memory than is allowed.");
    }
    if (isHollow(tiff, static_cast<uint64_t>(unit), handle.fileBytes())) {
        return CodecFailure{CodecError::Damaged, "The file is far too short for its picture."};
    }
    return std::nullopt;
}

uint32_t tiffBandRows(const TiffHandle& handle) {
    TIFF* const tiff = handle.get();
    uint32_t height = 0;
    uint32_t rows = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    if (TIFFIsTiled(tiff) != 0) {
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &rows);
    } else {
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows);
    }
    return rows == 0 ? height : std::min(rows, height);
}

bool saysAlpha(const TiffHandle& handle) {
    uint16_t count = 0;
    uint16_t* kinds = nullptr;
    if (TIFFGetFieldDefaulted(handle.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) == 0) return false;
    return count > 0 && (kinds[0] == EXTRASAMPLE_ASSOCALPHA || kinds[0] == EXTRASAMPLE_UNASSALPHA);
}

bool isGray(const TiffHandle& handle) {
    uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    TIFFGetField(handle.get(), TIFFTAG_PHOTOMETRIC, &photometric);
    return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
}

}  // namespace fi
