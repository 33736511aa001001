// SPDX-License-Identifier: Apache-2.0
// libjpeg used plainly: a failure here ends the test program, which is what a test should do.
#include "PlatformKit/Codecs/MakeJpeg.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <utility>

#include <jpeglib.h>

namespace fi::test {

namespace {

/// One row as inks: what the product must turn back into the colors.
void toInks(const uint8_t* rgbx, uint32_t width, bool inverted, uint8_t* out) {
    for (uint32_t x = 0; x < width; ++x, rgbx += 4, out += 4) {
        const int light = std::max({rgbx[0], rgbx[1], rgbx[2], uint8_t{1}});
        for (int i = 0; i < 3; ++i) {
            const int ink = 255 - rgbx[i] * 255 / light;
            out[i] = static_cast<uint8_t>(inverted ? 255 - ink : ink);
        }
        out[3] = static_cast<uint8_t>(inverted ? light : 255 - light);
    }
}

void setUp(jpeg_compress_struct& info, const PixelBuffer& picture, const JpegRecipe& recipe) {
    const bool gray = picture.layout() == PixelLayout::Gray8;
    info.image_width = picture.width();
    info.image_height = picture.height();
    info.input_components = gray ? 1 : 4;
    info.in_color_space = gray ? JCS_GRAYSCALE : (recipe.cmyk ? JCS_CMYK : JCS_EXT_RGBX);
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 97, TRUE);
    if (recipe.ycck) jpeg_set_colorspace(&info, JCS_YCCK);
    if (recipe.cmyk) info.write_Adobe_marker = recipe.adobe ? TRUE : FALSE;
    if (!gray && !recipe.cmyk) {
        info.comp_info[0].h_samp_factor = recipe.halfColor ? 2 : recipe.lumaWide;
        info.comp_info[0].v_samp_factor = recipe.halfColor ? 2 : recipe.lumaHigh;
    }
    info.restart_in_rows = recipe.restartRows;
    info.arith_code = recipe.arithmetic ? TRUE : FALSE;
    if (recipe.progressive) jpeg_simple_progression(&info);
}

void putWord(std::vector<uint8_t>& out, uint32_t value) {
    out.push_back(static_cast<uint8_t>(value >> 8));
    out.push_back(static_cast<uint8_t>(value & 0xFF));
}

void put(std::vector<uint8_t>& out, std::initializer_list<uint8_t> bytes) {
    for (const uint8_t byte : bytes) {
        out.push_back(byte);
    }
}

void fill(std::vector<uint8_t>& out, size_t count, uint8_t byte) {
    out.resize(out.size() + count, byte);
}

/// Start of image, a plain quantization table, a frame of one gray component, and Huffman tables whose
/// one code means "nothing".
std::vector<uint8_t> makeHead(uint8_t frameMarker, uint16_t width, uint16_t height, uint8_t bits) {
    std::vector<uint8_t> out;
    put(out, {0xFF, 0xD8, 0xFF, 0xDB, 0, 67, 0});
    fill(out, 64, 1);
    put(out, {0xFF, frameMarker, 0, 11, bits});
    putWord(out, height);
    putWord(out, width);
    put(out, {1, 1, 0x11, 0});
    for (const uint8_t table : {uint8_t{0x00}, uint8_t{0x10}}) {
        put(out, {0xFF, 0xC4, 0, 20, table, 1});
        fill(out, 16, 0);
    }
    return out;
}

void putScan(std::vector<uint8_t>& out, uint8_t first, uint8_t last, size_t dataBytes) {
    put(out, {0xFF, 0xDA, 0, 8, 1, 1, 0, first, last, 0});
    fill(out, dataBytes, 0);
}

}  // namespace

std::vector<uint8_t> makeJpeg(const PixelBuffer& picture, const JpegRecipe& recipe) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &bytes, &size);
    setUp(info, picture, recipe);
    jpeg_start_compress(&info, TRUE);
    std::vector<uint8_t> line(size_t{picture.width()} * 4);
    for (uint32_t y = 0; y < picture.height(); ++y) {
        const size_t used = size_t{picture.width()} * bytesPerPixel(picture.layout());
        std::copy_n(picture.row(y), used, line.data());
        if (recipe.cmyk) toInks(picture.row(y), picture.width(), recipe.adobe, line.data());
        JSAMPROW row = line.data();
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    std::vector<uint8_t> result(bytes, bytes + size);
    jpeg_destroy_compress(&info);
    std::free(bytes);
    return result;
}

std::vector<uint8_t> withLateHeight(const std::vector<uint8_t>& jpeg) {
    std::vector<uint8_t> out = jpeg;
    size_t at = 2;
    uint8_t height[2] = {};
    for (; out.at(at + 1) != 0xDA; at += 2 + size_t{out.at(at + 2)} * 256 + out.at(at + 3)) {
        if (out.at(at + 1) < 0xC0 || out.at(at + 1) > 0xC2) continue;
        for (size_t i = 0; i < 2; ++i)
            height[i] = std::exchange(out.at(at + 5 + i), uint8_t{0});
    }
    at += 2 + size_t{out.at(at + 2)} * 256 + out.at(at + 3);
    const auto isData = [&] { return out[at] != 0xFF || out[at + 1] == 0 || (out[at + 1] & 0xF8) == 0xD0; };
    while (isData())
        ++at;
    const uint8_t segment[] = {0xFF, 0xDC, 0, 4, height[0], height[1]};
    out.insert(out.begin() + static_cast<long>(at), std::begin(segment), std::end(segment));
    return out;
}

std::vector<uint8_t> makeScanBomb(uint16_t width, uint16_t height, uint32_t scans) {
    std::vector<uint8_t> out = makeHead(0xC2, width, height, 8);
    putScan(out, 0, 0, 8);
    for (uint32_t i = 1; i < scans; ++i) {
        putScan(out, 1, 63, 1);
    }
    put(out, {0xFF, 0xD9});
    return out;
}

std::vector<uint8_t> makeHollowJpeg(uint16_t width, uint16_t height, uint8_t bits, size_t dataBytes) {
    std::vector<uint8_t> out = makeHead(0xC0, width, height, bits);
    putScan(out, 0, 63, dataBytes);
    put(out, {0xFF, 0xD9});
    return out;
}

}  // namespace fi::test
