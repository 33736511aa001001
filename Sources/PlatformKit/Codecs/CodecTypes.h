// SPDX-License-Identifier: Apache-2.0
// What every codec tells about a picture, and how it says that it could not.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "PlatformKit/Base/PixelBuffer.h"
#include "PlatformKit/Base/Result.h"

namespace fi {

enum class ColorModel : uint8_t { Gray, RGB, CMYK, Lab };

enum class CodecError : uint8_t {
    NotThisFormat,  ///< the bytes are of another kind
    Damaged,        ///< nothing usable could be read
    Unsupported,    ///< a kind of picture that is not read
    LimitExceeded,  ///< a limit of DecodeLimits; the text names it
    NoMemory,
    ReadFailed,  ///< the bytes could not be read: nothing is known about the picture
    WriteFailed,
};

struct CodecFailure {
    CodecError code = CodecError::Damaged;
    std::string text;  ///< one plain sentence for a person
};

template <typename T>
using CodecResult = Result<T, CodecFailure>;

/// For densities that a file states per centimetre.
inline constexpr double kCentimetresPerInch = 2.54;

/// Dots per inch.
struct Density {
    double x = 0;
    double y = 0;
};

/// Facts of one picture of a file, read without decoding pixels.
struct ImageHeader {
    uint32_t width = 0;  ///< stored pixels, before any orientation
    uint32_t height = 0;
    uint32_t bitsPerComponent = 0;
    uint32_t components = 0;
    ColorModel model = ColorModel::RGB;
    uint32_t pages = 1;               ///< pictures in the file
    uint32_t tiffCompression = 0;     ///< TIFF compression code; 0 for other formats
    std::optional<Density> density;   ///< absent when the file has none
    std::vector<uint8_t> exifBlock;   ///< JPEG: the TIFF structure behind "Exif\0\0"; empty when none
    std::vector<uint8_t> iccProfile;  ///< embedded profile; empty when none
};

/// The smallest size that will do; zero in either asks for the full size.
struct SizeFloor {
    uint32_t width = 0;
    uint32_t height = 0;
};

struct DecodedPicture {
    PixelBuffer pixels;    ///< at least the wanted size, at most the stored one
    bool damaged = false;  ///< some rows could not be read; they are what the decoder made of them
    bool partial = false;  ///< parts that are no pixels (lines, texts) were left out
};

}  // namespace fi
