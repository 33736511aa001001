// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/ScalingSamples.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace fi {

namespace {

/// Rounds without a call for every sample: what is cut off is never negative, or becomes 0. The limits are
/// kept as whole numbers, which compilers do several at a time; a filter overshoots by less than its input.
template <typename Sample>
uint32_t rounded(float value) {
    constexpr int32_t kMost = std::numeric_limits<Sample>::max();
    constexpr float kHalf = 0.5F;
    const auto whole = static_cast<int32_t>(value + kHalf);
    return static_cast<uint32_t>(std::min(std::max(whole, 0), kMost));
}

/// One component; the next of its kind is `step` samples on.
template <typename Sample>
void spread(const uint8_t* __restrict from, float* __restrict plane, Columns columns, size_t step) {
    for (uint32_t x = columns.left; x < columns.right; ++x) {
        Sample sample = 0;
        std::memcpy(&sample, from + x * step * sizeof(Sample), sizeof(sample));
        plane[x] = sample;
    }
}

template <typename Sample>
void gather(const float* __restrict plane, uint8_t* __restrict to, Columns columns, size_t step) {
    for (uint32_t x = columns.left; x < columns.right; ++x) {
        const auto sample = static_cast<Sample>(rounded<Sample>(plane[x]));
        std::memcpy(to + x * step * sizeof(Sample), &sample, sizeof(sample));
    }
}

// Four bytes are moved as one number, because compilers then do several pixels at once.

float component(uint32_t pixel, unsigned shift) {
    return static_cast<float>(static_cast<int32_t>(pixel >> shift & 0xFF));
}

void spreadThree(const uint8_t* __restrict from, float* __restrict first, float* __restrict second,
                 float* __restrict third, Columns columns) {
    for (uint32_t x = columns.left; x < columns.right; ++x) {
        uint32_t pixel = 0;
        std::memcpy(&pixel, from + size_t{x} * 4, sizeof(pixel));
        first[x] = component(pixel, 0);
        second[x] = component(pixel, 8);
        third[x] = component(pixel, 16);
    }
}

void gatherThree(const float* __restrict first, const float* __restrict second,
                 const float* __restrict third, uint8_t* __restrict to, Columns columns) {
    for (uint32_t x = columns.left; x < columns.right; ++x) {
        const uint32_t pixel = rounded<uint8_t>(first[x]) | rounded<uint8_t>(second[x]) << 8 |
                               rounded<uint8_t>(third[x]) << 16 | 0xFF000000U;
        std::memcpy(to + size_t{x} * 4, &pixel, sizeof(pixel));
    }
}

void makeOpaque(uint8_t* to, Columns columns) {
    constexpr uint16_t kOpaque = 65535;
    for (uint32_t x = columns.left; x < columns.right; ++x)
        std::memcpy(to + size_t{x} * 8 + 6, &kOpaque, sizeof(kOpaque));
}

template <typename Sample>
void spreadEach(const uint8_t* from, Columns columns, const PlaneRows& planes, uint32_t count,
                size_t step) {
    for (uint32_t i = 0; i < count; ++i)
        spread<Sample>(from + i * sizeof(Sample), planes[i], columns, step);
}

template <typename Sample>
void gatherEach(const PlaneRows& planes, uint8_t* to, Columns columns, uint32_t count, size_t step) {
    for (uint32_t i = 0; i < count; ++i)
        gather<Sample>(planes[i], to + i * sizeof(Sample), columns, step);
}

}  // namespace

uint32_t planesOf(PixelLayout layout) {
    constexpr uint32_t kPlanes[] = {0, 1, 1, 3, 4, 4, 3};
    return kPlanes[static_cast<uint8_t>(layout)];
}

void spreadRow(const PixelBuffer& picture, uint32_t y, Columns columns, const PlaneRows& planes) {
    const uint8_t* from = picture.row(y);
    switch (picture.layout()) {
        case PixelLayout::Gray1:
            return;
        case PixelLayout::Gray8:
            return spreadEach<uint8_t>(from, columns, planes, 1, 1);
        case PixelLayout::Gray16:
            return spreadEach<uint16_t>(from, columns, planes, 1, 1);
        case PixelLayout::RGBX32:
            return spreadThree(from, planes[0], planes[1], planes[2], columns);
        case PixelLayout::RGBA32:
        case PixelLayout::ARGB32:
            return spreadEach<uint8_t>(from, columns, planes, 4, 4);
        case PixelLayout::RGBX64:
            return spreadEach<uint16_t>(from, columns, planes, 3, 4);
    }
}

void gatherRow(const PlaneRows& planes, Columns columns, PixelBuffer& picture, uint32_t y) {
    uint8_t* to = picture.row(y);
    switch (picture.layout()) {
        case PixelLayout::Gray1:
            return;
        case PixelLayout::Gray8:
            return gatherEach<uint8_t>(planes, to, columns, 1, 1);
        case PixelLayout::Gray16:
            return gatherEach<uint16_t>(planes, to, columns, 1, 1);
        case PixelLayout::RGBX32:
            return gatherThree(planes[0], planes[1], planes[2], to, columns);
        case PixelLayout::RGBA32:
        case PixelLayout::ARGB32:
            return gatherEach<uint8_t>(planes, to, columns, 4, 4);
        case PixelLayout::RGBX64:
            gatherEach<uint16_t>(planes, to, columns, 3, 4);
            return makeOpaque(to, columns);
    }
}

}  // namespace fi
