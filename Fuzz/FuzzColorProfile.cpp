// SPDX-License-Identifier: Apache-2.0
// Any bytes as a profile: the pixels are converted or, when it is refused, treated as without one.
#include <algorithm>
#include <cstring>

#include "Contract.h"
#include "PlatformKit/Drawing/ColorConversion.h"

using namespace fi;
using fi::fuzz::require;

namespace {

PixelBuffer ramp(PixelLayout layout) {
    auto picture = PixelBuffer::create(70, 2, layout);
    require(picture.has_value(), "a small picture has memory");
    for (uint32_t y = 0; y < 2; ++y) {
        for (uint64_t i = 0; i < bytesOfRow(70, layout); ++i)
            picture->row(y)[i] = static_cast<uint8_t>(i * 29 + y);
    }
    return std::move(*picture);
}

bool same(const PixelBuffer& a, const PixelBuffer& b) {
    if (a.layout() != b.layout()) return false;
    for (uint32_t y = 0; y < a.height(); ++y) {
        if (std::memcmp(a.row(y), b.row(y), bytesOfRow(a.width(), a.layout())) != 0) return false;
    }
    return true;
}

using Conversion = ColorOutcome (*)(PixelBuffer&, const ColorSource&, uint32_t);

void check(Conversion convert, PixelLayout layout, const ColorSource& source) {
    PixelBuffer picture = ramp(layout);
    const ColorOutcome outcome = convert(picture, source, 1);
    require(outcome != ColorOutcome::Unsuitable, "the layout suits its samples");
    require(picture.width() == 70 && picture.height() == 2, "the size is kept");
    if (outcome == ColorOutcome::Unchanged || outcome == ColorOutcome::NoMemory)
        require(same(picture, ramp(layout)), "untouched pixels are the same");
    if (outcome != ColorOutcome::ProfileRefused) return;
    PixelBuffer plain = ramp(layout);
    (void)convert(plain, {source.samples, ByteView()}, 1);
    require(same(picture, plain), "a refused profile is as good as none");
}

}  // namespace

/// The first byte chooses what is converted, the rest is the profile.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const ByteView profile(data + 1, size - 1);
    constexpr ColorSamples kSamples[] = {ColorSamples::RGB,    ColorSamples::Gray,
                                         ColorSamples::CMYK,   ColorSamples::CIELab,
                                         ColorSamples::ICCLab, ColorSamples::InvertedCMYK};
    const ColorSource source{kSamples[data[0] % 6], profile};
    const bool gray = source.samples == ColorSamples::Gray;
    const bool words = (data[0] & 0x40) != 0;
    PixelLayout layout = words ? PixelLayout::RGBX64 : PixelLayout::RGBX32;
    if (gray) layout = words ? PixelLayout::Gray16 : PixelLayout::Gray8;
    check((data[0] & 0x80) != 0 ? &convertToGray : &convertToSRGB, layout, source);
    return 0;
}
