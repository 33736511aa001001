// SPDX-License-Identifier: Apache-2.0
#include "Support/PeerJpeg.h"

#include <cstdio>  // jpeglib.h needs FILE

#include <jpeglib.h>

#include <algorithm>
#include <cstdlib>

namespace fi::bench {

std::vector<uint8_t> encodePeerJpeg(const std::vector<uint8_t>& rows, uint32_t width, uint32_t height,
                                    int quality) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* block = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &block, &size);
    info.image_width = width;
    info.image_height = height;
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < height) {
        auto* row = const_cast<JSAMPLE*>(rows.data() + size_t{info.next_scanline} * width * 3);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    std::vector<uint8_t> jpeg(block, block + size);
    std::free(block);
    jpeg_destroy_compress(&info);
    return jpeg;
}

uint32_t decodePeerJpeg(std::span<const uint8_t> jpeg, uint32_t shorterSide) {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, jpeg.data(), jpeg.size());
    jpeg_read_header(&info, TRUE);
    info.out_color_space = JCS_EXT_RGBX;
    info.scale_num = 1;
    for (info.scale_denom = 8; info.scale_denom > 1; info.scale_denom /= 2) {
        jpeg_calc_output_dimensions(&info);
        if (std::min(info.output_width, info.output_height) >= shorterSide) break;
    }
    jpeg_start_decompress(&info);
    std::vector<uint8_t> row(size_t{info.output_width} * 4);
    uint8_t* rows[] = {row.data()};
    uint32_t count = 0;
    while (info.output_scanline < info.output_height)
        count += jpeg_read_scanlines(&info, rows, 1);
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return count;
}

}  // namespace fi::bench
