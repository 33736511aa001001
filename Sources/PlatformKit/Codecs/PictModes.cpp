// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictModes.h"

#include <algorithm>

namespace fi {

namespace {

constexpr uint16_t kInverted = 4;
constexpr uint16_t kDither = 64;

template <typename Component>
PictColor eachComponent(PictColor source, PictColor target, PictColor operand, Component component) {
    PictColor result = 0xFF000000;
    for (uint32_t shift = 0; shift < 24; shift += 8) {
        const int value =
            component(static_cast<int>(source >> shift & 0xFF), static_cast<int>(target >> shift & 0xFF),
                      static_cast<int>(operand >> shift & 0xFF));
        result |= static_cast<PictColor>(value & 0xFF) << shift;
    }
    return result;
}

PictColor mixBoolean(uint16_t mode, PictColor source, PictColor target) {
    if ((mode & kInverted) != 0) source = ~source;
    switch (mode & 3) {
        case kPictOr:
            target &= source;
            break;
        case kPictXor:
            target ^= ~source;
            break;
        case kPictBic:
            target |= ~source;
            break;
        default:
            target = source;
    }
    return target | 0xFF000000;
}

}  // namespace

uint16_t plainPictMode(uint16_t stored) {
    const uint16_t mode = static_cast<uint16_t>(stored & ~kDither);
    const bool defined = mode < 8 || (mode >= kPictBlend && mode <= kPictAddMinimum);
    return defined ? mode : uint16_t{kPictCopy};
}

bool PictMixing::keepsBlackAndWhite() const {
    return mode < 8 || mode == kPictTransparent || mode == kPictAddMaximum || mode == kPictAddMinimum;
}

PictColor PictMixing::mix(PictColor source, PictColor target) const {
    const auto with = [&](auto component) { return eachComponent(source, target, operand, component); };
    switch (mode) {
        case kPictBlend:
            return with([](int s, int t, int o) { return (s * o + t * (255 - o) + 127) / 255; });
        case kPictAddPin:
            return with([](int s, int t, int o) { return std::min(s + t, o); });
        case kPictAddOver:
            return with([](int s, int t, int) { return s + t; });
        case kPictSubtractPin:
            return with([](int s, int t, int o) { return std::max(t - s, o); });
        case kPictTransparent:
            return source == background ? target : source;
        case kPictAddMaximum:
            return with([](int s, int t, int) { return std::max(s, t); });
        case kPictSubtractOver:
            return with([](int s, int t, int) { return t - s; });
        case kPictAddMinimum:
            return with([](int s, int t, int) { return std::min(s, t); });
        default:
            return mixBoolean(mode, source, target);
    }
}

}  // namespace fi
