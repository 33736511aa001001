// SPDX-License-Identifier: Apache-2.0
// Pictures of 24 megapixels from embedded profiles to sRGB, in place: against Little CMS alone in one
// thread, told not to remember the last pixel, which is its faster way with photos.
#include <lcms2.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "PlatformKit/Drawing/ColorConversion.h"
#include "PlatformKit/Drawing/MakeProfiles.h"
#include "Support/Comparison.h"

namespace {

using namespace fi;
using namespace fi::bench;
using fi::test::ProfileBytes;

constexpr double kBound = 1.2;
constexpr double kBoundOfTwoThreads = 0.65;
constexpr int kFarthest = 40;  // between two roundings of a coarse grid

/// Slow ramps with noise, as in photos.
std::optional<PixelBuffer> makePicture(bool tiny) {
    auto picture = PixelBuffer::create(tiny ? 60 : 6000, tiny ? 40 : 4000, PixelLayout::RGBX32);
    if (!picture) return std::nullopt;
    uint32_t state = 1;
    for (uint32_t y = 0; y < picture->height(); ++y) {
        for (uint32_t x = 0; x < picture->width(); ++x) {
            for (uint32_t c = 0; c < 3; ++c) {
                state = state * 1664525U + 1013904223U;
                const uint32_t level = (x * (c + 1) + y * (4 - c)) / 64 + (state >> 28);
                picture->row(y)[size_t{x} * 4 + c] = static_cast<uint8_t>(level);
            }
            picture->row(y)[size_t{x} * 4 + 3] = 255;
        }
    }
    return picture;
}

void copyPixels(const PixelBuffer& from, PixelBuffer& to) {
    std::memcpy(to.row(0), from.row(0), from.rowBytes() * from.height());
}

/// The library by itself, its transform made beforehand.
class Peer {
public:
    Peer(const ProfileBytes& profile, cmsUInt32Number format) {
        void* const from =
            cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
        void* const to = cmsCreate_sRGBProfile();
        m_transform =
            cmsCreateTransform(from, format, to, TYPE_RGBA_8, INTENT_PERCEPTUAL, cmsFLAGS_NOCACHE);
        cmsCloseProfile(from);
        cmsCloseProfile(to);
    }
    ~Peer() { cmsDeleteTransform(m_transform); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    void convert(PixelBuffer& picture) const {
        const auto stride = static_cast<cmsUInt32Number>(picture.rowBytes());
        cmsDoTransformLineStride(m_transform, picture.row(0), picture.row(0), picture.width(),
                                 picture.height(), stride, stride, 0, 0);
    }

private:
    void* m_transform = nullptr;
};

bool areNear(const PixelBuffer& a, const PixelBuffer& b) {
    for (uint32_t y = 0; y < a.height(); ++y) {
        for (uint32_t x = 0; x < a.width(); ++x) {
            for (size_t c = 0; c < 3; ++c) {
                const size_t at = size_t{x} * 4 + c;
                if (std::abs(a.row(y)[at] - b.row(y)[at]) > kFarthest) return false;
            }
        }
    }
    return true;
}

struct Row {
    const char* name;
    const char* nameOfTwoThreads;
    ColorSamples samples;
    cmsUInt32Number format;
    ProfileBytes profile;
};

bool printRows(const Row& row, bool tiny) {
    const auto source = makePicture(tiny);
    auto ours = makePicture(tiny);
    auto reference = makePicture(tiny);
    if (!source || !ours || !reference) return false;
    const Peer peer(row.profile, row.format);
    ColorOutcome outcome = ColorOutcome::NoMemory;
    const auto compare = [&](const char* name, double bound, uint32_t threads) {
        Comparison comparison{name, bound, tiny ? 1 : 7, {}, {}};
        comparison.ours = [&, threads] {
            const ByteView profile(row.profile.data(), row.profile.size());
            outcome = convertToSRGB(*ours, {row.samples, profile}, threads);
        };
        comparison.reference = [&] { peer.convert(*reference); };
        comparison.beforeOurs = [&] { copyPixels(*source, *ours); };
        comparison.beforeReference = [&] { copyPixels(*source, *reference); };
        comparison.elapsed = threads > 1;
        return printRow(comparison) || tiny;
    };
    const bool kept = compare(row.name, kBound, 1);
    const bool keptByTwo = compare(row.nameOfTwoThreads, kBoundOfTwoThreads, 2);
    if (outcome != ColorOutcome::Converted || !areNear(*ours, *reference)) {
        std::fprintf(stderr, "%s: the pictures differ\n", row.name);
        return false;
    }
    return kept && keptByTwo;
}

}  // namespace

int main(int argc, char** argv) {
    const bool tiny = sizeFromArguments(argc, argv) == Size::Tiny;
    bool kept = printRows({"curves and matrix / lcms2", "the same, two threads", ColorSamples::RGB,
                           TYPE_RGBA_8, test::makeWideProfile()},
                          tiny);
    kept &= printRows(
        {"grid / lcms2", "the same, two threads", ColorSamples::RGB, TYPE_RGBA_8, test::makeGridProfile()},
        tiny);
    kept &= printRows(
        {"inks / lcms2", "the same, two threads", ColorSamples::CMYK, TYPE_CMYK_8, test::makeInkProfile()},
        tiny);
    return kept ? 0 : 1;
}
