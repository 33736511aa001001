// SPDX-License-Identifier: Apache-2.0
#include <zimg.h>

#include <cstdlib>
#include <memory>

#include "Drawing/PeerScaling.h"

namespace fi::bench {

namespace {

constexpr uint32_t kPlanes = 3;

struct Memory {
    explicit Memory(size_t size)
        : bytes(static_cast<uint8_t*>(std::aligned_alloc(64, (size + 64) / 64 * 64))) {
        for (size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<uint8_t>(i * 7 % 64);
    }
    ~Memory() { std::free(bytes); }
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;
    uint8_t* bytes;
};

size_t strideOf(uint32_t width, ZimgSamples samples) {
    return (size_t{width} * (samples == ZimgSamples::Floats ? sizeof(float) : 1) + 63) / 64 * 64;
}

zimg_image_format formatOf(uint32_t width, uint32_t height, ZimgSamples samples) {
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = width;
    format.height = height;
    format.pixel_type = samples == ZimgSamples::Floats ? ZIMG_PIXEL_FLOAT : ZIMG_PIXEL_BYTE;
    format.pixel_range = ZIMG_RANGE_FULL;
    format.color_family = ZIMG_COLOR_RGB;
    format.matrix_coefficients = ZIMG_MATRIX_RGB;
    return format;
}

template <typename Buffer>
Buffer planesIn(const Memory& memory, size_t stride, uint32_t height) {
    Buffer buffer = {};
    buffer.version = ZIMG_API_VERSION;
    for (uint32_t plane = 0; plane < kPlanes; ++plane) {
        buffer.plane[plane].data = memory.bytes + stride * height * plane;
        buffer.plane[plane].stride = static_cast<ptrdiff_t>(stride);
        buffer.plane[plane].mask = ZIMG_BUFFER_MAX;
    }
    return buffer;
}

std::shared_ptr<zimg_filter_graph> buildFilter(const zimg_image_format& from, const zimg_image_format& to) {
    zimg_graph_builder_params params;
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    params.resample_filter = ZIMG_RESIZE_LANCZOS;
    params.filter_param_a = 3;
    params.cpu_type = ZIMG_CPU_AUTO;
    return {zimg_filter_graph_build(&from, &to, &params), zimg_filter_graph_free};
}

}  // namespace

std::function<void()> zimgScaling(const PixelBuffer& picture, uint32_t width, uint32_t height,
                                  ZimgSamples samples) {
    const auto filter =
        buildFilter(formatOf(picture.width(), picture.height(), samples), formatOf(width, height, samples));
    size_t workBytes = 0;
    zimg_filter_graph_get_tmp_size(filter.get(), &workBytes);
    const size_t fromStride = strideOf(picture.width(), samples);
    const size_t toStride = strideOf(width, samples);
    // Bytes below 64 in every place make floats that are neither large nor denormal.
    const auto from = std::make_shared<Memory>(fromStride * picture.height() * kPlanes);
    const auto to = std::make_shared<Memory>(toStride * height * kPlanes);
    const auto work = std::make_shared<Memory>(workBytes);
    const uint32_t fromHeight = picture.height();
    return [=] {
        const auto source = planesIn<zimg_image_buffer_const>(*from, fromStride, fromHeight);
        const auto target = planesIn<zimg_image_buffer>(*to, toStride, height);
        zimg_filter_graph_process(filter.get(), &source, &target, work->bytes, nullptr, nullptr, nullptr,
                                  nullptr);
    };
}

}  // namespace fi::bench
