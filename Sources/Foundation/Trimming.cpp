// SPDX-License-Identifier: Apache-2.0
#include "Foundation/Trimming.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "FileImporter/Trimming.h"
#include "Foundation/FileServices.h"
#include "Foundation/ImageFacts.h"
#include "PlatformKit/Base/CheckedMath.h"

namespace fi {

namespace {

/// Truncated toward zero, then modulo 2^16: the remainder is exact however large the value is, and none (0)
/// of what is not finite.
int16_t truncated(double value) {
    constexpr double kModulus = 65536;
    return truncateToInt16(std::fmod(value, kModulus));
}

// The operands are 16 bits and the sums are of `int`: only the way back takes them modulo 2^16.
int16_t sum(int16_t a, int16_t b) {
    return static_cast<int16_t>(a + b);
}

int16_t difference(int16_t a, int16_t b) {
    return static_cast<int16_t>(a - b);
}

Rect mirrored(const Rect& rect, int16_t height, int16_t width, const Turning& turning) {
    Rect result = rect;
    if (turning.mirrorsHorizontally) {
        result.left = difference(width, rect.right);
        result.right = difference(width, rect.left);
    }
    if (turning.mirrorsVertically) {
        result.top = difference(height, rect.bottom);
        result.bottom = difference(height, rect.top);
    }
    return result;
}

Rect turned(const Rect& rect, int16_t height, int16_t width, int32_t rotation) {
    const auto [top, left, bottom, right] = rect;
    switch (rotation) {
        case 1:
            return {left, difference(height, bottom), right, difference(height, top)};
        case 2:
            return {difference(height, bottom), difference(width, right), difference(height, top),
                    difference(width, left)};
        case 3:
            return {difference(width, right), top, difference(width, left), bottom};
        default:
            return rect;
    }
}

}  // namespace

bool EmptyRect(Rect rect) {
    return isInvertedBothWays(rect);
}

bool isInvertedBothWays(const Rect& rect) {
    return rect.bottom < rect.top && rect.right < rect.left;
}

void offsetRect(Rect& rect, int16_t dx, int16_t dy) {
    rect = {sum(rect.top, dy), sum(rect.left, dx), sum(rect.bottom, dy), sum(rect.right, dx)};
}

Rect makeTrimmingRect(const Rect& bounds, const TrimRatio& ratio) {
    const double width = double{1} * bounds.right - bounds.left;
    const double height = double{1} * bounds.bottom - bounds.top;
    const auto& [origin, size] = ratio;
    // What is added and subtracted first decides in which pixel a side comes to lie.
    const int16_t left = sum(truncated(origin.x * width), bounds.left);
    const int16_t right = sum(truncated((origin.x + size.width) * width), bounds.left);
    const int16_t top = sum(truncated((1 - (origin.y + size.height)) * height), bounds.top);
    const int16_t bottom = sum(truncated((1 - origin.y) * height), bounds.top);
    return {std::max<int16_t>(top, 0), std::max<int16_t>(left, 0), std::min(bottom, bounds.bottom),
            std::min(right, bounds.right)};
}

Rect convertTrimmingRect(Rect& bounds, const Rect& trimming, const Turning& turning) {
    const int16_t height = bounds.bottom;
    const int16_t width = bounds.right;
    if (turning.rotation == 1 || turning.rotation == 3) std::swap(bounds.bottom, bounds.right);
    return turned(mirrored(trimming, height, width, turning), height, width, turning.rotation);
}

OSErr trimmingRectAt(CFURLRef url, const TrimRatio& ratio, Rect* trimming) {
    if (!existsAt(url)) return kNotFoundErr;
    const Rect bounds = imageBoundsAt(url);
    if (trimming != nullptr && !isInvertedBothWays(bounds)) *trimming = makeTrimmingRect(bounds, ratio);
    return kNoErr;
}

}  // namespace fi
