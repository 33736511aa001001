// SPDX-License-Identifier: Apache-2.0
#include "Support/NoisePhotos.h"

#include <algorithm>
#include <cmath>

#include "Support/PeerJpeg.h"

namespace fi::bench {

namespace {

constexpr int kQuality = 92;
constexpr double kWantedBitsPerPixel = 2.8;

/// Sums of uniform numbers: near enough to a sensor's noise, and the same on every machine.
class Noise {
public:
    explicit Noise(uint32_t seed) : m_state(seed * 2654435761U + 1) {}

    double next() {
        double sum = 0;
        for (int i = 0; i < 4; ++i) {
            m_state ^= m_state << 13U;
            m_state ^= m_state >> 17U;
            m_state ^= m_state << 5U;
            sum += static_cast<double>(m_state) / 4294967296.0;
        }
        return (sum - 2.0) * 1.732;  // variance 1
    }

private:
    uint32_t m_state;
};

uint8_t clamped(double value) {
    return static_cast<uint8_t>(std::clamp(value, 0.0, 255.0));
}

double bitsPerPixel(double noise, uint32_t seed) {
    constexpr uint32_t kSide = 512;
    const auto jpeg = encodePeerJpeg(noiseScene(kSide, kSide, noise, seed), kSide, kSide, kQuality);
    return static_cast<double>(jpeg.size()) * 8 / (kSide * kSide);
}

double noiseForWantedSize(uint32_t seed) {
    double low = 0;
    double high = 40;
    for (int step = 0; step < 10; ++step) {
        const double middle = (low + high) / 2;
        (bitsPerPixel(middle, seed) < kWantedBitsPerPixel ? low : high) = middle;
    }
    return high;
}

}  // namespace

std::vector<uint8_t> noiseScene(uint32_t width, uint32_t height, double noise, uint32_t seed) {
    Noise random(seed);
    std::vector<uint8_t> rows(size_t{width} * height * 3);
    uint8_t* at = rows.data();
    for (uint32_t y = 0; y < height; ++y) {
        const double v = static_cast<double>(y) / height;
        for (uint32_t x = 0; x < width; ++x) {
            const double u = static_cast<double>(x) / width;
            const double hill = 40 * std::sin(u * 9 + seed) + 30 * std::cos(v * 7 - u * 5);
            const double grain = noise * random.next();
            *at++ = clamped(120 + hill + 60 * v + grain + noise * 0.4 * random.next());
            *at++ = clamped(130 + hill * 0.8 + grain + noise * 0.4 * random.next());
            *at++ = clamped(150 - 70 * v + hill * 0.5 + grain + noise * 0.4 * random.next());
        }
    }
    return rows;
}

std::vector<uint8_t> noiseJpeg(uint32_t width, uint32_t height, uint32_t seed) {
    const double noise = noiseForWantedSize(seed);
    return encodePeerJpeg(noiseScene(width, height, noise, seed), width, height, kQuality);
}

}  // namespace fi::bench
