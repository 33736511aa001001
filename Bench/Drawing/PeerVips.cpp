// SPDX-License-Identifier: Apache-2.0
#include <vips/vips.h>

#include <cstring>

#include "Drawing/PeerScaling.h"

namespace fi::bench {

std::function<void()> vipsScaling(const std::vector<uint8_t>& rows, uint32_t fromWidth, uint32_t fromHeight,
                                  uint32_t width, uint32_t height, std::vector<uint8_t>& result) {
    vips_init("BenchScaling");
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    result.assign(size_t{width} * height * 3, 0);
    return [=, &rows, &result] {
        VipsImage* source =
            vips_image_new_from_memory(rows.data(), rows.size(), static_cast<int>(fromWidth),
                                       static_cast<int>(fromHeight), 3, VIPS_FORMAT_UCHAR);
        VipsImage* scaled = nullptr;
        if (vips_resize(source, &scaled, static_cast<double>(width) / fromWidth, "vscale",
                        static_cast<double>(height) / fromHeight, "kernel", VIPS_KERNEL_LANCZOS3,
                        nullptr) == 0) {
            size_t size = 0;
            void* bytes = vips_image_write_to_memory(scaled, &size);
            if (bytes != nullptr && size == result.size()) std::memcpy(result.data(), bytes, size);
            g_free(bytes);
            g_object_unref(scaled);
        }
        g_object_unref(source);
    };
}

}  // namespace fi::bench
