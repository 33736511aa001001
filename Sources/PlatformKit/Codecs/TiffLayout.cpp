// SPDX-License-Identifier: Apache-2.0
// Recognises the four kinds of head: either byte order, classic or big.
#include "PlatformKit/Codecs/TiffLayout.h"

namespace fi {

namespace {
constexpr uint16_t kClassicMagic = 42;
constexpr uint16_t kBigMagic = 43;
}  // namespace

std::optional<uint64_t> TiffLayout::readCount(ByteView view) const {
    if (big) return view.withOrder(order).u64(0);
    return view.withOrder(order).u16(0);
}

std::optional<uint64_t> TiffLayout::readOffset(ByteView view, uint64_t at) const {
    if (big) return view.withOrder(order).u64(at);
    return view.withOrder(order).u32(at);
}

std::optional<TiffLayout> TiffLayout::parse(ByteView head) {
    TiffLayout layout;
    if (head.startsWith("MM")) {
        layout.order = ByteOrder::Big;
    } else if (!head.startsWith("II")) {
        return std::nullopt;
    }
    const ByteView ordered = head.withOrder(layout.order);
    const auto magic = ordered.u16(2);
    layout.big = magic == kBigMagic;
    if (!layout.big && magic != kClassicMagic) return std::nullopt;
    // A big file says first how wide its offsets are: always eight bytes, then two of zero.
    if (layout.big && ordered.u32(4) != (layout.order == ByteOrder::Little ? 0x00000008U : 0x00080000U)) {
        return std::nullopt;
    }
    const auto first = layout.readOffset(head, layout.big ? 8 : 4);
    if (!first) return std::nullopt;
    layout.firstDirectory = *first;
    return layout;
}

}  // namespace fi
