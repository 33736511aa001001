// SPDX-License-Identifier: Apache-2.0
// libtiff's RGBA reader knows every photometric kind; it is asked for one band of rows at a time, so
// that a bad strip costs its own rows only.
#include "PlatformKit/Codecs/TiffDecoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include <tiffio.h>

#include "PlatformKit/Codecs/PixelMixing.h"
#include "PlatformKit/Codecs/TiffChecks.h"
#include "PlatformKit/Codecs/UnreadRows.h"

namespace fi {

struct TiffDecoder::Raster {
    TIFFRGBAImage image{};
    bool begun = false;
    bool gray = false;
    bool transparent = false;
};

namespace {

CodecFailure failure(CodecError code, std::string text) {
    return CodecFailure{code, std::move(text)};
}

/// A word of libtiff's raster as the bytes R, G, B, A.
uint32_t inByteOrder(uint32_t word) {
    if constexpr (std::endian::native == std::endian::big) return __builtin_bswap32(word);
    return word;
}

}  // namespace

TiffDecoder::TiffDecoder(TiffHandle& handle) : m_handle(handle), m_raster(new Raster) {}

TiffDecoder::~TiffDecoder() {
    if (m_raster->begun) TIFFRGBAImageEnd(&m_raster->image);
}

CodecResult<DecodedPicture> TiffDecoder::decode(SizeFloor floor) {
    if (auto refusal = begin()) return Failure{std::move(*refusal)};
    const TIFFRGBAImage& image = m_raster->image;
    const uint32_t bandRows = tiffBandRows(m_handle);
    auto picture = BandedPicture::create(
        {image.width, image.height, m_raster->gray ? PixelLayout::Gray8 : PixelLayout::RGBX32, bandRows},
        floor);
    if (!picture) {
        return Failure{failure(CodecError::NoMemory, "There is not enough memory for the picture.")};
    }
    if (m_raster->gray) m_band.resize(size_t{image.width} * bandRows);
    const uint32_t errorsAtFirst = m_handle.errors();
    m_handle.fillUpCutData();
    if (!readBands(*picture) && isOneColor(picture->result())) {
        return Failure{
            failure(CodecError::Damaged, "No part of the picture can be read: " + m_handle.lastError())};
    }
    return DecodedPicture{picture->takeResult(), m_handle.errors() > errorsAtFirst};
}

bool TiffDecoder::readBands(BandedPicture& picture) {
    bool anyWhole = false;
    for (uint32_t top = 0; !picture.isComplete();) {
        const BandedPicture::Band band = picture.begin();
        const uint32_t errorsBefore = m_handle.errors();
        if (!readBand(band, top)) {
            markUnread(band.pixels, band.first, band.rows);
        } else if (m_handle.errors() == errorsBefore) {
            anyWhole = true;
        }
        picture.finish(band);
        top += band.rows;
    }
    return anyWhole;
}

std::optional<CodecFailure> TiffDecoder::begin() {
    char text[1024] = "";
    TIFF* const tiff = m_handle.get();
    TIFFRGBAImage& image = m_raster->image;
    if (TIFFRGBAImageOK(tiff, text) == 0 || TIFFRGBAImageBegin(&image, tiff, 0, text) == 0) {
        return failure(CodecError::Unsupported,
                       std::string("This kind of TIFF picture is not read: ") + text);
    }
    m_raster->begun = true;
    // Asking for the orientation that the file has leaves its rows as they are.
    image.req_orientation = image.orientation;
    m_raster->gray =
        image.photometric == PHOTOMETRIC_MINISBLACK || image.photometric == PHOTOMETRIC_MINISWHITE;
    m_raster->transparent = image.alpha != 0 && saysAlpha(m_handle);
    giveExactTileBuffer();
    return std::nullopt;
}

/// libtiff's own buffer is rounded up to whole kilobytes, and its RGBA reader then refuses tiles that are
/// not compressed for being shorter than the buffer.
void TiffDecoder::giveExactTileBuffer() {
    TIFF* const tiff = m_handle.get();
    uint16_t compression = 0;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &compression);
    if (TIFFIsTiled(tiff) == 0 || compression != COMPRESSION_NONE) return;
    m_tile.resize(static_cast<size_t>(TIFFTileSize(tiff)));
    TIFFReadBufferSetup(tiff, m_tile.data(), static_cast<tmsize_t>(m_tile.size()));
}

bool TiffDecoder::readBand(const BandedPicture::Band& band, uint32_t top) {
    TIFFRGBAImage& image = m_raster->image;
    image.row_offset = static_cast<int>(top);
    image.col_offset = 0;
    // libtiff packs its rows. They are read to where the band begins and moved apart afterwards.
    uint32_t* const raster =
        m_raster->gray ? m_band.data() : static_cast<uint32_t*>(static_cast<void*>(band.row(0)));
    if (TIFFRGBAImageGet(&image, raster, image.width, band.rows) == 0) return false;
    if (m_raster->gray) {
        takeGray(band);
    } else {
        spreadRows(band);
    }
    return true;
}

void TiffDecoder::spreadRows(const BandedPicture::Band& band) const {
    const uint32_t width = m_raster->image.width;
    const size_t bytes = size_t{width} * 4;
    for (uint32_t i = band.rows; i-- > 0;) {
        uint8_t* row = band.row(i);
        std::memmove(row, band.row(0) + bytes * i, bytes);
        for (size_t at = 0; at < bytes; at += 4) {
            uint32_t word = 0;
            std::memcpy(&word, row + at, 4);
            word = inByteOrder(word);
            std::memcpy(row + at, &word, 4);
            if (!m_raster->transparent) row[at + 3] = 255;
        }
        if (m_raster->transparent) layOnWhite(row, width);
    }
}

void TiffDecoder::takeGray(const BandedPicture::Band& band) const {
    const uint32_t* word = m_band.data();
    for (uint32_t i = 0; i < band.rows; ++i) {
        uint8_t* row = band.row(i);
        for (uint32_t x = 0; x < m_raster->image.width; ++x, ++word) {
            const uint32_t level = TIFFGetR(*word);
            const uint32_t white = m_raster->transparent ? 255 - TIFFGetA(*word) : 0;
            row[x] = static_cast<uint8_t>(std::min(level + white, 255U));
        }
    }
}

}  // namespace fi
