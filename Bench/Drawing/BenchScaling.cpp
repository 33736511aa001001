// SPDX-License-Identifier: Apache-2.0
// Pictures of 24 megapixels made smaller: against zimg on planes that are already there, and against
// libvips, whose result must not be nearer to the exact filter's.
#include "PlatformKit/Drawing/Scaling.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

#include "Drawing/PeerScaling.h"
#include "Support/Comparison.h"
#include "Support/NoisePhotos.h"

namespace {

using namespace fi;
using namespace fi::bench;

constexpr double kBoundOfZimg = 1.15;
constexpr double kBoundOfVips = 0.5;

struct Scene {
    PixelBuffer picture;
    std::vector<uint8_t> rows;  ///< the same, R, G, B
    int rounds;
};

std::optional<Scene> makeScene(bool tiny) {
    const uint32_t width = tiny ? 120 : 6000;
    const uint32_t height = tiny ? 80 : 4000;
    auto picture = PixelBuffer::create(width, height, PixelLayout::RGBX32);
    if (!picture) return std::nullopt;
    std::vector<uint8_t> rows = noiseScene(width, height, 12, 7);
    for (size_t i = 0; i < size_t{width} * height; ++i) {
        uint8_t* pixel = picture->row(static_cast<uint32_t>(i / width)) + i % width * 4;
        std::copy_n(&rows[i * 3], 3, pixel);
        pixel[3] = 255;
    }
    return Scene{std::move(*picture), std::move(rows), tiny ? 1 : 9};
}

double lanczos(double x) {
    if (x == 0) return 1;
    if (std::fabs(x) >= 3) return 0;
    const double angle = M_PI * x;
    return 3 * std::sin(angle) * std::sin(angle / 3) / (angle * angle);
}

/// One component by the definition of the filter; far enough from the picture's ends.
double exactValue(const PixelBuffer& picture, double x, double y, double ratio, uint32_t component) {
    double sum = 0;
    double weights = 0;
    for (double row = std::ceil(y - 3 * ratio); row <= y + 3 * ratio; ++row) {
        for (double column = std::ceil(x - 3 * ratio); column <= x + 3 * ratio; ++column) {
            const double weight = lanczos((row - y) / ratio) * lanczos((column - x) / ratio);
            weights += weight;
            sum += weight *
                   picture.row(static_cast<uint32_t>(row))[static_cast<size_t>(column) * 4 + component];
        }
    }
    return std::clamp(sum / weights, 0.0, 255.0);
}

/// The root of the mean square of the distances of some pixels, `bytes` apart, from the exact values.
template <typename PixelAt>
double errorOf(const Scene& scene, uint32_t width, uint32_t height, PixelAt pixelAt) {
    const double ratio = static_cast<double>(scene.picture.width()) / width;
    double sum = 0;
    int count = 0;
    for (uint32_t y = 4; y + 4 < height; y += std::max(1U, height / 23)) {
        for (uint32_t x = 4; x + 4 < width; x += std::max(1U, width / 29)) {
            const double exact =
                exactValue(scene.picture, (x + 0.5) * ratio - 0.5, (y + 0.5) * ratio - 0.5, ratio, 1);
            const double distance = exact - pixelAt(x, y)[1];
            sum += distance * distance;
            ++count;
        }
    }
    return std::sqrt(sum / count);
}

struct Names {
    const char* zimg;
    const char* zimgBytes;
    const char* vips;
};

bool printSize(const Scene& scene, uint32_t width, uint32_t height, const Names& names) {
    std::optional<PixelBuffer> result;
    const auto ours = [&] { result = scaled(scene.picture, width, height); };
    bool kept = printRow({names.zimg, kBoundOfZimg, scene.rounds, ours,
                          zimgScaling(scene.picture, width, height, ZimgSamples::Floats)});
    // Cheaper arithmetic, measured to know what exactness costs.
    (void)printRow({names.zimgBytes, kBoundOfZimg, scene.rounds, ours,
                    zimgScaling(scene.picture, width, height, ZimgSamples::Bytes)});
    if (!result) return false;
    const double error = errorOf(scene, width, height,
                                 [&](uint32_t x, uint32_t y) { return result->row(y) + size_t{x} * 4; });
#ifdef FI_BENCH_VIPS
    std::vector<uint8_t> peer;
    kept &= printRow(
        {names.vips, kBoundOfVips, scene.rounds, ours,
         vipsScaling(scene.rows, scene.picture.width(), scene.picture.height(), width, height, peer)});
    const double peerError = errorOf(
        scene, width, height, [&](uint32_t x, uint32_t y) { return &peer[(size_t{y} * width + x) * 3]; });
    std::printf("  error against the exact filter: %.3f levels, libvips' %.3f\n", error, peerError);
    return kept && error <= peerError;
#else
    std::printf("  error against the exact filter: %.3f levels; rows of libvips left out: not installed\n",
                error);
    return kept;
#endif
}

}  // namespace

int main(int argc, char** argv) {
    const bool tiny = sizeFromArguments(argc, argv) == Size::Tiny;
    const auto scene = makeScene(tiny);
    if (!scene) return 1;
    const uint32_t width = scene->picture.width();
    const uint32_t height = scene->picture.height();
    bool kept = printSize(*scene, width / 2, height / 2,
                          {"24 to 6 megapixels / zimg", "the same / zimg, bytes", "the same / libvips"});
    kept &= printSize(*scene, width / (tiny ? 4 : 25), height / (tiny ? 4 : 25),
                      {"24 to thumbnail / zimg", "the same / zimg, bytes", "the same / libvips"});
    return kept || tiny ? 0 : 1;
}
