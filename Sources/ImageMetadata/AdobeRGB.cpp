// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/AdobeRGB.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "ImageMetadata/ExifValues.h"
#include "ImageMetadata/HeldTag.h"

namespace fi {

namespace {

constexpr uint16_t kWhitePointTag = 318;
constexpr uint16_t kPrimariesTag = 319;
constexpr uint16_t kGammaTag = 42240;
constexpr uint16_t kMainSlot = 0;
constexpr uint16_t kExifSlot = 1;

// Numerators and denominators in turn.
constexpr uint64_t kWhitePoint[] = {313, 1000, 329, 1000};
constexpr uint64_t kPrimaries[] = {64, 100, 33, 100, 21, 100, 71, 100, 15, 100, 6, 100};
constexpr uint64_t kGamma[] = {22, 10};

/// Compares 64 bits with each expected number, though a fraction's two words stand in one of these: files
/// count as Adobe RGB, or not, in all the applications that way.
bool hasValues(CIMAGETAG& tags, uint16_t slot, uint16_t tag, std::span<const uint64_t> expected) {
    const HeldTag held(tags, slot, tag);
    if (!held) return false;
    std::array<uint64_t, std::size(kPrimaries)> found{};
    IMAGETAG_INFO bounded = *held;
    const uint8_t unit = valueFromType(nullptr, bounded);
    if (unit == 0) return false;
    bounded.count = std::min(bounded.count, static_cast<int32_t>(expected.size_bytes() / unit));
    valueFromType(found.data(), bounded);
    return std::equal(expected.begin(), expected.end(), found.begin());
}

}  // namespace

bool isAdobeRGB(CIMAGETAG& tags) {
    return hasValues(tags, kMainSlot, kWhitePointTag, kWhitePoint) &&
           hasValues(tags, kMainSlot, kPrimariesTag, kPrimaries) &&
           hasValues(tags, kExifSlot, kGammaTag, kGamma);
}

}  // namespace fi
