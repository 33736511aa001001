// SPDX-License-Identifier: Apache-2.0
// Packs samples by hand and lets libtiff compress and lay them out.
#include "PlatformKit/Codecs/MakeTiff.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

uint16_t samplesOf(TiffKind kind) {
    switch (kind) {
        case TiffKind::Rgb:
            return 3;
        case TiffKind::Cmyk:
        case TiffKind::RgbAlpha:
        case TiffKind::RgbMask:
            return 4;
        default:
            return 1;
    }
}

bool isOneBit(TiffKind kind) {
    return kind == TiffKind::OneBit || kind == TiffKind::InvertedOneBit;
}

uint16_t photometricOf(TiffKind kind) {
    switch (kind) {
        case TiffKind::Gray:
        case TiffKind::OneBit:
            return PHOTOMETRIC_MINISBLACK;
        case TiffKind::InvertedGray:
        case TiffKind::InvertedOneBit:
            return PHOTOMETRIC_MINISWHITE;
        case TiffKind::Palette:
            return PHOTOMETRIC_PALETTE;
        case TiffKind::Cmyk:
            return PHOTOMETRIC_SEPARATED;
        default:
            return PHOTOMETRIC_RGB;
    }
}

uint8_t sampleAt(const PixelBuffer& picture, TiffKind kind, uint32_t x, uint32_t y, uint16_t sample) {
    const uint8_t* row = picture.row(y);
    const size_t at = size_t{x} * 4;
    switch (kind) {
        case TiffKind::Gray:
            return row[x];
        case TiffKind::InvertedGray:
            return static_cast<uint8_t>(255 - row[x]);
        case TiffKind::Palette:
            return row[at];  // the palette holds its own number in every color
        case TiffKind::Cmyk:
            return sample == 3 ? uint8_t{0} : static_cast<uint8_t>(255 - row[at + sample]);
        case TiffKind::RgbAlpha:
            if (sample == 3) return tiffAlphaAt(x, y);
            return static_cast<uint8_t>(row[at + sample] * tiffAlphaAt(x, y) / 255);
        default:
            return sample == 3 ? uint8_t{0} : row[at + sample];
    }
}

/// A rectangle's samples, all of them or one plane, with zeros outside of the picture.
std::vector<uint8_t> pack(const PixelBuffer& picture, const TiffRecipe& recipe, uint32_t left, uint32_t top,
                          uint32_t width, uint32_t height, int plane) {
    std::vector<uint8_t> out;
    for (uint32_t y = top; y < top + height; ++y) {
        if (isOneBit(recipe.kind)) {
            const size_t start = out.size();
            out.resize(start + (width + 7) / 8);
            for (uint32_t x = 0; x < width; ++x) {
                const bool inside = left + x < picture.width() && y < picture.height();
                const bool light = inside && picture.row(y)[left + x] >= 128;
                const bool set = light != (recipe.kind == TiffKind::InvertedOneBit);
                if (inside && set)
                    out[start + x / 8] = static_cast<uint8_t>(out[start + x / 8] | (0x80 >> (x % 8)));
            }
            continue;
        }
        for (uint32_t x = left; x < left + width; ++x) {
            for (uint16_t s = 0; s < samplesOf(recipe.kind); ++s) {
                if (plane >= 0 && s != plane) continue;
                const bool inside = x < picture.width() && y < picture.height();
                const uint8_t sample = inside ? sampleAt(picture, recipe.kind, x, y, s) : uint8_t{0};
                out.insert(out.end(), static_cast<size_t>(recipe.bits / 8), sample);
            }
        }
    }
    return out;
}

void setPalette(TIFF* tiff) {
    uint16_t levels[256];
    for (int i = 0; i < 256; ++i)
        levels[i] = static_cast<uint16_t>(i * 257);
    TIFFSetField(tiff, TIFFTAG_COLORMAP, levels, levels, levels);
}

void describe(TIFF* tiff, const PixelBuffer& picture, const TiffRecipe& recipe) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height());
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, isOneBit(recipe.kind) ? 1 : recipe.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samplesOf(recipe.kind));
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometricOf(recipe.kind));
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, recipe.compression);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, recipe.planar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (recipe.orientation > 0) TIFFSetField(tiff, TIFFTAG_ORIENTATION, recipe.orientation);
    if (recipe.kind == TiffKind::Palette) setPalette(tiff);
    if (recipe.kind == TiffKind::RgbAlpha || recipe.kind == TiffKind::RgbMask) {
        const uint16_t meaning[] = {static_cast<uint16_t>(
            recipe.kind == TiffKind::RgbAlpha ? EXTRASAMPLE_ASSOCALPHA : EXTRASAMPLE_UNSPECIFIED)};
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, meaning);
    }
    if (recipe.tile > 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, recipe.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, recipe.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, recipe.rowsPerStrip);
    }
}

void writePlane(TIFF* tiff, const PixelBuffer& picture, const TiffRecipe& recipe, int plane,
                uint32_t& number) {
    if (recipe.tile > 0) {
        for (uint32_t y = 0; y < picture.height(); y += recipe.tile) {
            for (uint32_t x = 0; x < picture.width(); x += recipe.tile) {
                auto data = pack(picture, recipe, x, y, recipe.tile, recipe.tile, plane);
                EXPECT_GT(
                    TIFFWriteEncodedTile(tiff, number++, data.data(), static_cast<tmsize_t>(data.size())),
                    0);
            }
        }
        return;
    }
    for (uint32_t y = 0; y < picture.height(); y += recipe.rowsPerStrip) {
        const uint32_t rows = std::min(recipe.rowsPerStrip, picture.height() - y);
        auto data = pack(picture, recipe, 0, y, picture.width(), rows, plane);
        EXPECT_GT(TIFFWriteEncodedStrip(tiff, number++, data.data(), static_cast<tmsize_t>(data.size())),
                  0);
    }
}

}  // namespace

uint8_t tiffAlphaAt(uint32_t x, uint32_t y) {
    return static_cast<uint8_t>((x * 16 + y * 5) % 256);
}

std::vector<uint8_t> makeTiff(const PixelBuffer& picture, const TiffRecipe& recipe) {
    const TemporaryFolder folder;
    const std::string path = folder.at("picture.tif");
    const std::string mode = std::string("w") + (recipe.bigEndian ? "b" : "l") + (recipe.big ? "8" : "4");
    TIFF* tiff = TIFFOpen(path.c_str(), mode.c_str());
    if (tiff == nullptr) std::abort();
    for (uint32_t page = 0; page < recipe.pages; ++page) {
        describe(tiff, picture, recipe);
        uint32_t number = 0;
        const int planes = recipe.planar ? samplesOf(recipe.kind) : 0;
        if (planes == 0) writePlane(tiff, picture, recipe, -1, number);
        for (int plane = 0; plane < planes; ++plane) {
            writePlane(tiff, picture, recipe, plane, number);
        }
        EXPECT_EQ(TIFFWriteDirectory(tiff), 1);
    }
    TIFFClose(tiff);
    const std::string bytes = readFile(path);
    return std::vector<uint8_t>(bytes.begin(), bytes.end());
}

}  // namespace fi::test
