// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/TiffChecks.h"

#include <tiffio.h>

#include "PlatformKit/Base/CheckedMath.h"
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

CodecFailure tooMuch(const char* text) {
    return CodecFailure{CodecError::LimitExceeded, text};
}

}  // namespace

std::optional<CodecFailure> checkTiffLimits(const TiffHandle& handle) {
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
    // Gray passes through four-byte words of at most the whole picture.
    const uint64_t bytesPerPixel = isGray(handle) ? 5 : 4;
    const auto memory = checkedAdd(pixels * bytesPerPixel, static_cast<uint64_t>(unit));
    if (!memory || *memory > limits.maximumBytes) {
        return tooMuch("The picture needs more memory than is allowed.");
    }
    if (isHollow(tiff, static_cast<uint64_t>(unit), handle.fileBytes())) {
        return CodecFailure{CodecError::Damaged, "The file is far too short for its picture."};
    }
    return std::nullopt;
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
