// SPDX-License-Identifier: Apache-2.0
// Strip by strip or tile by tile: libtiff undoes the compression, the samples are taken one channel at a
// time into the pixels' bytes, and each row is then made plain.
#include "PlatformKit/Codecs/TiffSampleDecoder.h"

#include <algorithm>

#include <tiffio.h>

#include "PlatformKit/Codecs/PixelMixing.h"
#include "PlatformKit/Codecs/TiffChecks.h"
#include "PlatformKit/Codecs/UnreadRows.h"

namespace fi {

namespace {

uint16_t shortField(TIFF* tiff, uint32_t tag) {
    uint16_t value = 0;
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

}  // namespace

TiffSampleDecoder::TiffSampleDecoder(TiffHandle& handle) : m_handle(handle) {
    describe();
}

void TiffSampleDecoder::describe() {
    TIFF* const tiff = m_handle.get();
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &m_width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &m_height);
    m_samples = shortField(tiff, TIFFTAG_SAMPLESPERPIXEL);
    m_photometric = shortField(tiff, TIFFTAG_PHOTOMETRIC);
    m_format.bits = shortField(tiff, TIFFTAG_BITSPERSAMPLE);
    m_format.floating = shortField(tiff, TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_IEEEFP;
    m_separate = shortField(tiff, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
    m_tiled = TIFFIsTiled(tiff) != 0;
    m_unitWidth = m_width;
    if (m_tiled) TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &m_unitWidth);
    m_bandRows = tiffBandRows(m_handle);
    m_alpha = m_photometric == PHOTOMETRIC_RGB && m_samples > 3 && saysAlpha(m_handle);
    uint16_t count = 0;
    uint16_t* kinds = nullptr;
    if (m_alpha && TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) != 0) {
        m_multiplied = kinds[0] == EXTRASAMPLE_ASSOCALPHA;
    }
}

bool TiffSampleDecoder::accepts() const {
    if (!m_format.isKnown() || m_unitWidth == 0 || m_samples < colors()) return false;
    const uint32_t bits = m_format.bits;
    if (m_format.floating) return colors() > 1 || isGray(m_handle);
    switch (m_photometric) {
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MINISWHITE:
            // Of 16 bits the RGBA reader skews the tiles at the right edge.
            return bits != 1 && bits != 2 && bits != 4 && bits != 8;
        case PHOTOMETRIC_RGB:
            return bits != 8 && bits != 16;
        case PHOTOMETRIC_SEPARATED:
            return bits != 8;
        default:
            return false;
    }
}

uint32_t TiffSampleDecoder::colors() const {
    if (m_photometric == PHOTOMETRIC_RGB) return 3;
    return m_photometric == PHOTOMETRIC_SEPARATED ? 4 : 1;
}

CodecResult<DecodedPicture> TiffSampleDecoder::decode(SizeFloor floor) {
    auto picture =
        BandedPicture::create({m_width, m_height, colors() == 1 ? PixelLayout::Gray8 : PixelLayout::RGBX32,
                               tiffBandRows(m_handle)},
                              floor);
    if (!picture) {
        return Failure{CodecFailure{CodecError::NoMemory, "There is not enough memory for the picture."}};
    }
    TIFF* const tiff = m_handle.get();
    m_rowBytes = static_cast<size_t>(m_tiled ? TIFFTileRowSize(tiff) : TIFFScanlineSize(tiff));
    m_buffer.resize(static_cast<size_t>(m_tiled ? TIFFTileSize(tiff) : TIFFStripSize(tiff)));
    const uint32_t errorsBefore = m_handle.errors();
    m_handle.fillUpCutData();
    if (!readBands(*picture) && isOneColor(picture->result())) {
        return Failure{CodecFailure{CodecError::Damaged,
                                    "No part of the picture can be read: " + m_handle.lastError()}};
    }
    return DecodedPicture{picture->takeResult(), m_handle.errors() > errorsBefore};
}

bool TiffSampleDecoder::readBands(BandedPicture& picture) {
    const uint32_t planes = m_separate ? colors() + (m_alpha ? 1 : 0) : 1;
    bool anyWhole = false;
    for (uint32_t top = 0; !picture.isComplete();) {
        const BandedPicture::Band band = picture.begin();
        for (uint32_t plane = 0; plane < planes; ++plane)
            anyWhole = readPlane(band, top, plane) || anyWhole;
        for (uint32_t i = 0; i < band.rows; ++i)
            finishRow(band.row(i));
        picture.finish(band);
        top += band.rows;
    }
    return anyWhole;
}

/// Reads every strip or tile of a band in one plane; false when none was whole.
bool TiffSampleDecoder::readPlane(const BandedPicture::Band& band, uint32_t top, uint32_t plane) {
    bool anyWhole = false;
    for (uint64_t left = 0; left < m_width; left += m_unitWidth) {
        Unit unit{static_cast<uint32_t>(left), top, 0, band.rows, plane};
        unit.width = std::min(m_unitWidth, m_width - unit.left);
        anyWhole = readUnit(unit) || anyWhole;
        takeUnit(band, unit);
    }
    return anyWhole;
}

bool TiffSampleDecoder::readUnit(const Unit& unit) {
    TIFF* const tiff = m_handle.get();
    const auto plane = static_cast<uint16_t>(unit.plane);
    const uint32_t errorsBefore = m_handle.errors();
    std::fill(m_buffer.begin(), m_buffer.end(), uint8_t{0});
    const auto size = static_cast<tmsize_t>(m_buffer.size());
    if (m_tiled) {
        TIFFReadEncodedTile(tiff, TIFFComputeTile(tiff, unit.left, unit.top, 0, plane), m_buffer.data(),
                            size);
    } else {
        TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, unit.top, plane), m_buffer.data(), size);
    }
    return m_handle.errors() == errorsBefore;
}

void TiffSampleDecoder::takeUnit(const BandedPicture::Band& band, const Unit& unit) const {
    if (m_separate) return takePlane(band, unit, unit.plane, 0);
    const uint32_t channels = colors() + (m_alpha ? 1 : 0);
    for (uint32_t channel = 0; channel < channels; ++channel) {
        takePlane(band, unit, channel, channel);
    }
}

void TiffSampleDecoder::takePlane(const BandedPicture::Band& band, const Unit& unit, uint32_t channel,
                                  uint32_t sample) const {
    const uint32_t pixelBytes = bytesPerPixel(band.pixels.layout());
    const std::span<const uint8_t> bytes(m_buffer);
    for (uint32_t y = 0; y < unit.height; ++y) {
        const size_t start = std::min(m_rowBytes * y, bytes.size());
        const auto row = bytes.subspan(start, std::min(m_rowBytes, bytes.size() - start));
        uint8_t* out = band.row(y) + size_t{unit.left} * pixelBytes + channel;
        takeSamples(row, m_format, sample, m_separate ? 1 : m_samples, unit.width, out, pixelBytes);
    }
}

void TiffSampleDecoder::finishRow(uint8_t* row) const {
    switch (m_photometric) {
        case PHOTOMETRIC_MINISWHITE:
            for (uint32_t x = 0; x < m_width; ++x)
                row[x] = static_cast<uint8_t>(255 - row[x]);
            return;
        case PHOTOMETRIC_SEPARATED:
            return convertInks(row, m_width, false);
        case PHOTOMETRIC_RGB:
            break;
        default:
            return;
    }
    for (uint32_t x = 0; x < m_width; ++x) {
        uint8_t* pixel = row + size_t{x} * 4;
        if (!m_alpha) pixel[3] = 255;
        if (m_multiplied || !m_alpha) continue;
        for (int i = 0; i < 3; ++i)
            pixel[i] = static_cast<uint8_t>((pixel[i] * pixel[3] + 127) / 255);
    }
    layOnWhite(row, m_width);
}

}  // namespace fi
