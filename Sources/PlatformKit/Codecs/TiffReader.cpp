// SPDX-License-Identifier: Apache-2.0
// Facts of a TIFF page, and the way to its pixels.
#include "PlatformKit/Codecs/TiffReader.h"

#include <cmath>
#include <new>

#include <tiffio.h>

#include "PlatformKit/Codecs/TiffChecks.h"
#include "PlatformKit/Codecs/TiffDecoder.h"
#include "PlatformKit/Codecs/TiffHandle.h"
#include "PlatformKit/Codecs/TiffPages.h"
#include "PlatformKit/Codecs/TiffSampleDecoder.h"

namespace fi {

namespace {

constexpr uint32_t kMaximumProfileBytes = 16U << 20;

Failure<CodecFailure> fail(CodecError code, std::string text) {
    return Failure{CodecFailure{code, std::move(text)}};
}

/// Runs `use(handle, pageCount)` on the opened page.
template <typename T, typename Use>
CodecResult<T> onPage(ByteSource& source, uint32_t page, Use use) {
    try {
        uint8_t head[4];
        const size_t count = source.read(0, head);
        if (!looksLikeTiff(ByteView(head, count))) {
            return fail(CodecError::NotThisFormat, "The file is not a TIFF file.");
        }
        const std::vector<uint64_t> pages = findTiffPages(source);
        if (page >= pages.size()) return fail(CodecError::Damaged, "The file has no such page.");
        TiffHandle handle(source, pages[page]);
        if (handle.get() == nullptr) {
            return fail(CodecError::Damaged, "The page cannot be opened: " + handle.lastError());
        }
        return use(handle, static_cast<uint32_t>(pages.size()));
    } catch (const std::bad_alloc&) {
        return fail(CodecError::NoMemory, "Out of memory.");
    }
}

ColorModel modelFor(uint16_t photometric) {
    switch (photometric) {
        case PHOTOMETRIC_MINISWHITE:
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MASK:
        case PHOTOMETRIC_LOGL:
            return ColorModel::Gray;
        case PHOTOMETRIC_SEPARATED:
            return ColorModel::CMYK;
        case PHOTOMETRIC_CIELAB:
        case PHOTOMETRIC_ICCLAB:
        case PHOTOMETRIC_ITULAB:
            return ColorModel::Lab;
        default:
            return ColorModel::RGB;
    }
}

uint16_t shortField(TIFF* tiff, uint32_t tag, uint16_t otherwise) {
    uint16_t value = 0;
    return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : otherwise;
}

bool isUsable(float density) {
    return std::isfinite(density) && density > 0;
}

std::optional<Density> readDensity(TIFF* tiff) {
    const uint16_t unit = shortField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    if (unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER) return std::nullopt;
    float x = 0;
    float y = 0;
    TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x);
    TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y);
    if (!isUsable(x)) x = y;
    if (!isUsable(y)) y = x;
    if (!isUsable(x)) return std::nullopt;
    const double scale = unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 1.0;
    return Density{double{x} * scale, double{y} * scale};
}

std::vector<uint8_t> readProfile(TIFF* tiff) {
    uint32_t size = 0;
    const uint8_t* bytes = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &size, &bytes) == 0 || bytes == nullptr) return {};
    if (size > kMaximumProfileBytes) return {};
    return std::vector<uint8_t>(bytes, bytes + size);
}

CodecResult<ImageHeader> readFacts(TIFF* tiff, uint32_t pageCount) {
    ImageHeader header;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &header.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &header.height);
    if (header.width == 0 || header.height == 0) {
        return fail(CodecError::Damaged, "The file declares an empty picture.");
    }
    header.bitsPerComponent = shortField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    header.components = shortField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    const uint16_t guess = header.components >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    header.model = modelFor(shortField(tiff, TIFFTAG_PHOTOMETRIC, guess));
    header.pages = pageCount;
    header.tiffCompression = shortField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    header.density = readDensity(tiff);
    header.iccProfile = readProfile(tiff);
    return header;
}

CodecResult<DecodedPicture> decodePage(TiffHandle& handle, SizeFloor floor) {
    if (auto refusal = checkTiffLimits(handle, floor)) return Failure{std::move(*refusal)};
    TiffSampleDecoder samples(handle);
    return samples.accepts() ? samples.decode(floor) : TiffDecoder(handle).decode(floor);
}

}  // namespace

bool looksLikeTiff(ByteView head) {
    using namespace std::string_view_literals;
    return head.startsWith("II*\0"sv) || head.startsWith("MM\0*"sv) || head.startsWith("II+\0"sv) ||
           head.startsWith("MM\0+"sv);
}

CodecResult<ImageHeader> readTiffHeader(ByteSource& source, uint32_t page) {
    return onPage<ImageHeader>(source, page, [](const TiffHandle& handle, uint32_t pageCount) {
        return readFacts(handle.get(), pageCount);
    });
}

CodecResult<DecodedPicture> decodeTiff(ByteSource& source, uint32_t page, SizeFloor floor) {
    return onPage<DecodedPicture>(
        source, page, [floor](TiffHandle& handle, uint32_t) { return decodePage(handle, floor); });
}

}  // namespace fi
