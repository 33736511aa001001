// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/ColorTables.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace fi {

namespace {

template <typename Word>
constexpr float kFull = static_cast<float>(std::numeric_limits<Word>::max());

template <typename Word>
Word loadSample(const uint8_t* from, size_t index) {
    Word word = 0;
    std::memcpy(&word, from + index * sizeof(Word), sizeof(Word));
    return word;
}

template <typename Word>
void storeSample(uint8_t* to, size_t index, Word word) {
    std::memcpy(to + index * sizeof(Word), &word, sizeof(Word));
}

template <typename Word>
Word narrowed(uint16_t value) {
    if constexpr (sizeof(Word) == 2) return value;
    return static_cast<Word>((value + 128U) / 257U);
}

template <typename Word>
class ToneConverter final : public RowConverter {
public:
    ToneConverter(std::span<const uint16_t> table, ColorTarget target)
        : m_color(target == ColorTarget::SRGB), m_table(table.size()) {
        std::transform(table.begin(), table.end(), m_table.begin(), &narrowed<Word>);
    }

    void convert(const uint8_t* from, uint8_t* to, uint32_t pixels) const override {
        for (size_t x = 0; x < pixels; ++x) {
            const size_t level = loadSample<Word>(from, x);
            if (!m_color) {
                storeSample(to, x, m_table[level]);
                continue;
            }
            for (size_t c = 0; c < 3; ++c)
                storeSample(to, x * 4 + c, m_table[level * 3 + c]);
            storeSample(to, x * 4 + 3, std::numeric_limits<Word>::max());
        }
    }

private:
    bool m_color;
    std::vector<Word> m_table;
};

double encoded(double light, ColorTarget target) {
    if (target == ColorTarget::Gray) return std::pow(light, 1 / 2.2);
    return light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

/// From linear light to the target's values, looked up by the light's square root: that is near to both
/// curves, so equal steps are fine enough in the shadows too.
template <typename Word>
class Encoding {
public:
    explicit Encoding(ColorTarget target) : m_values(kLast + 1) {
        for (size_t i = 0; i < m_values.size(); ++i) {
            const double root = static_cast<double>(i) / kLast;
            m_values[i] = static_cast<Word>(std::lround(encoded(root * root, target) * kFull<Word>));
        }
    }

    [[nodiscard]] Word operator()(float light) const {
        const float root = std::sqrt(std::clamp(light, 0.0f, 1.0f));
        return m_values[static_cast<size_t>(static_cast<int32_t>(root * kLast + 0.5f))];
    }

private:
    static constexpr int kLast = sizeof(Word) == 1 ? 16383 : 65535;
    std::vector<Word> m_values;
};

template <typename Word, size_t Components>
class LightConverter final : public RowConverter {
public:
    LightConverter(Lights lights, ColorTarget target) : m_lights(std::move(lights)), m_encoding(target) {}

    void convert(const uint8_t* from, uint8_t* to, uint32_t pixels) const override {
        for (size_t x = 0; x < pixels; ++x, from += 4 * sizeof(Word)) {
            const std::array<float, Components> sum = lightOf(from);
            constexpr size_t kStep = Components == 1 ? 1 : 4;
            for (size_t c = 0; c < Components; ++c)
                storeSample(to, x * kStep + c, m_encoding(sum[c]));
            if (Components > 1) storeSample(to, x * kStep + 3, std::numeric_limits<Word>::max());
        }
    }

private:
    [[nodiscard]] std::array<float, Components> lightOf(const uint8_t* pixel) const {
        std::array<float, Components> sum{};
        for (size_t sample = 0; sample < 3; ++sample) {
            const Word value = loadSample<Word>(pixel, sample);
            if constexpr (sizeof(Word) == 1) {
                const Light& light = m_lights[sample][value];
                for (size_t c = 0; c < Components; ++c)
                    sum[c] += light[c];
            } else {
                addBetween(m_lights[sample], value, sum);
            }
        }
        return sum;
    }

    static void addBetween(const std::vector<Light>& lights, Word value,
                           std::array<float, Components>& sum) {
        const float place =
            static_cast<float>(value) * (static_cast<float>(lightNodes(true) - 1) / kFull<Word>);
        const size_t node = std::min(static_cast<size_t>(place), size_t{lightNodes(true) - 2});
        const float part = place - static_cast<float>(node);
        const Light& below = lights[node];
        const Light& above = lights[node + 1];
        for (size_t c = 0; c < Components; ++c)
            sum[c] += below[c] + (above[c] - below[c]) * part;
    }

    Lights m_lights;
    Encoding<Word> m_encoding;
};

/// From X, Y and Z as parts of the white of D50 to linear light of sRGB: its primaries and white, brought
/// to D50 by Bradford's matrix, the other way round.
constexpr float kLightOfParts[3][3] = {
    {3.021982f, -1.617209f, -0.404774f},
    {-0.943709f, 1.916130f, 0.027579f},
    {0.069388f, -0.228994f, 1.159606f},
};

/// What Lab's lightness scale was made from: a cube, and near black a line.
float cubed(float value) {
    constexpr float kLineEnds = 6.0f / 29;
    return value > kLineEnds ? value * value * value : (value - 4.0f / 29) * (3 * kLineEnds * kLineEnds);
}

template <typename Word>
class LabConverter final : public RowConverter {
public:
    void convert(const uint8_t* from, uint8_t* to, uint32_t pixels) const override {
        for (size_t x = 0; x < pixels; ++x, from += 4 * sizeof(Word)) {
            const float y = (unit(from, 0) / 2.55f + 16) / 116;
            const float parts[3] = {cubed(y + (unit(from, 1) - 128) / 500), cubed(y),
                                    cubed(y - (unit(from, 2) - 128) / 200)};
            for (size_t c = 0; c < 3; ++c) {
                const float* const row = kLightOfParts[c];
                const float light = row[0] * parts[0] + row[1] * parts[1] + row[2] * parts[2];
                storeSample(to, x * 4 + c, m_encoding(light));
            }
            storeSample(to, x * 4 + 3, std::numeric_limits<Word>::max());
        }
    }

private:
    /// From 0 to 255.
    static float unit(const uint8_t* pixel, size_t index) {
        return static_cast<float>(loadSample<Word>(pixel, index)) * (255 / kFull<Word>);
    }

    Encoding<Word> m_encoding{ColorTarget::SRGB};
};

template <typename Word>
std::unique_ptr<const RowConverter> lightConverter(Lights lights, ColorTarget target) {
    if (target == ColorTarget::Gray)
        return std::make_unique<LightConverter<Word, 1>>(std::move(lights), target);
    return std::make_unique<LightConverter<Word, 3>>(std::move(lights), target);
}

}  // namespace

std::unique_ptr<const RowConverter> makeToneConverter(std::span<const uint16_t> table, ColorTarget target,
                                                      bool words) {
    if (words) return std::make_unique<ToneConverter<uint16_t>>(table, target);
    return std::make_unique<ToneConverter<uint8_t>>(table, target);
}

std::unique_ptr<const RowConverter> makeLightConverter(Lights lights, ColorTarget target, bool words) {
    if (words) return lightConverter<uint16_t>(std::move(lights), target);
    return lightConverter<uint8_t>(std::move(lights), target);
}

std::unique_ptr<const RowConverter> makeLabConverter(bool words) {
    if (words) return std::make_unique<LabConverter<uint16_t>>();
    return std::make_unique<LabConverter<uint8_t>>();
}

}  // namespace fi
