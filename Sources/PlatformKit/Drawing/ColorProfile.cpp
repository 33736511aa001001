// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/ColorProfile.h"

#include <string_view>

namespace fi {

namespace {

constexpr size_t kClassOffset = 12;
constexpr size_t kSpaceOffset = 16;
constexpr size_t kTagTableOffset = 128;
constexpr size_t kTagBytes = 12;
constexpr uint32_t kMostTags = 100;  // what the engine reads

constexpr std::string_view spaceOf(ColorSamples samples) {
    switch (samples) {
        case ColorSamples::Gray:
            return "GRAY";
        case ColorSamples::RGB:
            return "RGB ";
        case ColorSamples::CMYK:
        case ColorSamples::InvertedCMYK:
            return "CMYK";
        case ColorSamples::CIELab:
        case ColorSamples::ICCLab:
            break;
    }
    return "Lab ";
}

bool isOfDevice(ByteView profile) {
    return profile.startsWith("scnr", kClassOffset) || profile.startsWith("mntr", kClassOffset) ||
           profile.startsWith("prtr", kClassOffset) || profile.startsWith("spac", kClassOffset);
}

bool namesFloatingPipeline(ByteView profile, size_t at) {
    return profile.startsWith("D2B", at) || profile.startsWith("B2D", at);
}

}  // namespace

std::optional<std::vector<uint8_t>> acceptedProfile(ByteView profile, ColorSamples samples) {
    const ByteView ordered = profile.withOrder(ByteOrder::Big);
    const auto tags = ordered.u32(kTagTableOffset);
    if (!tags || *tags > kMostTags || profile.size() > kMaximumProfileBytes) return std::nullopt;
    if (!isOfDevice(profile) || !profile.startsWith(spaceOf(samples), kSpaceOffset)) return std::nullopt;
    std::vector<uint8_t> copy(profile.data(), profile.data() + profile.size());
    for (uint32_t tag = 0; tag < *tags; ++tag) {
        const size_t at = kTagTableOffset + 4 + tag * kTagBytes;
        if (namesFloatingPipeline(profile, at)) copy[at] = '-';
    }
    return copy;
}

}  // namespace fi
