// SPDX-License-Identifier: Apache-2.0
#include "Drawing/PeerPixman.h"

#include <pixman.h>

#include <memory>

namespace fi::bench {

namespace {

using Image = std::shared_ptr<pixman_image_t>;

Image imageOver(PixelBuffer& pixels, PixmanOrder order) {
    const auto format = order == PixmanOrder::AsStored ? PIXMAN_x8b8g8r8 : PIXMAN_x8r8g8b8;
    void* rows = pixels.row(0);
    return Image(pixman_image_create_bits(format, static_cast<int>(pixels.width()),
                                          static_cast<int>(pixels.height()), static_cast<uint32_t*>(rows),
                                          static_cast<int>(pixels.rowBytes())),
                 pixman_image_unref);
}

/// From a place in the target to the one in the picture that goes there.
void setTurn(const Image& image, uint32_t height) {
    pixman_transform_t transform;
    pixman_transform_init_identity(&transform);
    pixman_transform_rotate(&transform, nullptr, 0, -pixman_fixed_1);
    pixman_transform_translate(&transform, nullptr, 0, pixman_int_to_fixed(static_cast<int>(height)));
    pixman_image_set_transform(image.get(), &transform);
    pixman_image_set_filter(image.get(), PIXMAN_FILTER_NEAREST, nullptr, 0);
}

}  // namespace

std::function<void()> pixmanQuarterTurn(PixelBuffer& picture, PixelBuffer& target, PixmanOrder order) {
    const Image from = imageOver(picture, order);
    const Image to = imageOver(target, order);
    setTurn(from, picture.height());
    const int width = static_cast<int>(target.width());
    const int height = static_cast<int>(target.height());
    return [=] {
        pixman_image_composite32(PIXMAN_OP_SRC, from.get(), nullptr, to.get(), 0, 0, 0, 0, 0, 0, width,
                                 height);
    };
}

}  // namespace fi::bench
