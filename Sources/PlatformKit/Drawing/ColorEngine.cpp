// SPDX-License-Identifier: Apache-2.0
// The library is exact when it computes pixel by pixel and coarse when it prepares a grid. It is asked
// exactly for tables as far as tables will do: for gray, and for colours of three curves and a matrix.
#include "PlatformKit/Drawing/ColorEngine.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

#include <lcms2.h>

#include "PlatformKit/Drawing/ColorContext.h"
#include "PlatformKit/Drawing/ColorProfile.h"
#include "PlatformKit/Drawing/ColorTables.h"

namespace fi {

namespace {

constexpr cmsUInt32Number kExact = cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE;
/// Three quarters of a level of eight bits: half of one rounds away, and numbers in profiles are rounded.
constexpr int kSameLevel = 192;

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
struct FreeCurve {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::unique_ptr<void, DeleteTransform>;
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

/// Whatever the library has prepared, four samples to four.
class PreparedConverter final : public RowConverter {
public:
    PreparedConverter(std::unique_ptr<ColorContext> context, Transform transform, bool words)
        : m_context(std::move(context)), m_transform(std::move(transform)), m_words(words) {}

    void convert(const uint8_t* from, uint8_t* to, uint32_t pixels) const override {
        cmsDoTransform(m_transform.get(), from, to, pixels);
        const size_t sample = m_words ? 2 : 1;
        for (size_t x = 0; x < pixels; ++x)
            std::fill_n(to + (x * 4 + 3) * sample, sample, uint8_t{255});
    }

private:
    std::unique_ptr<ColorContext> m_context;  // outlives the transform
    Transform m_transform;
    bool m_words;
};

cmsUInt32Number formatOf(ColorSamples samples, bool words) {
    const cmsUInt32Number bytes = BYTES_SH(words ? 2U : 1U);
    switch (samples) {
        case ColorSamples::Gray:
            return COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | bytes;
        case ColorSamples::RGB:
            return COLORSPACE_SH(PT_RGB) | CHANNELS_SH(3) | EXTRA_SH(1) | bytes;
        case ColorSamples::CMYK:
            return COLORSPACE_SH(PT_CMYK) | CHANNELS_SH(4) | bytes;
        case ColorSamples::InvertedCMYK:
            return COLORSPACE_SH(PT_CMYK) | CHANNELS_SH(4) | FLAVOR_SH(1) | bytes;
        case ColorSamples::CIELab:
        case ColorSamples::ICCLab:
            break;
    }
    return COLORSPACE_SH(PT_Lab) | CHANNELS_SH(3) | EXTRA_SH(1) | bytes;
}

bool isLab(ColorSamples samples) {
    return samples == ColorSamples::CIELab || samples == ColorSamples::ICCLab;
}

class Builder {
public:
    explicit Builder(const ColorTask& task) : m_task(task), m_context(ColorContext::create()) {}

    ColorAnswer build() {
        if (!m_context) return {ColorAnswer::Kind::NoMemory};
        if (m_task.samples == ColorSamples::RGB && m_task.target == ColorTarget::SRGB &&
            m_task.profile.empty()) {
            return {ColorAnswer::Kind::Identity};
        }
        if (isLab(m_task.samples) && m_task.profile.empty()) {
            return {ColorAnswer::Kind::Converter, makeLabConverter(m_task.words)};
        }
        const Profile source = openSource();
        if (!source) return failure();
        if (m_task.samples == ColorSamples::Gray) return buildTones(source.get());
        if (isMatrixShaper(source.get())) return buildLights(source.get());
        return buildPrepared(source.get());
    }

private:
    [[nodiscard]] cmsContext context() const { return static_cast<cmsContext>(m_context->handle()); }

    [[nodiscard]] ColorAnswer failure() const {
        return {m_context->ranOut() ? ColorAnswer::Kind::NoMemory : ColorAnswer::Kind::Refused};
    }

    [[nodiscard]] Profile openSource() const {
        if (!m_task.profile.empty()) {
            const auto bytes = acceptedProfile(m_task.profile, m_task.samples);
            if (!bytes) return nullptr;
            const auto size = static_cast<cmsUInt32Number>(bytes->size());
            return Profile(cmsOpenProfileFromMemTHR(context(), bytes->data(), size));
        }
        switch (m_task.samples) {
            case ColorSamples::Gray:
                return grayOfGamma(2.2);
            case ColorSamples::RGB:
                return Profile(cmsCreate_sRGBProfileTHR(context()));
            default:
                return nullptr;
        }
    }

    [[nodiscard]] Profile grayOfGamma(double gamma) const {
        const Curve curve(cmsBuildGamma(context(), gamma));
        if (!curve) return nullptr;
        return Profile(cmsCreateGrayProfileTHR(context(), cmsD50_xyY(), curve.get()));
    }

    [[nodiscard]] Profile linearSRGB() const {
        const cmsCIExyY white = {0.3127, 0.3290, 1.0};
        const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1.0}, {0.30, 0.60, 1.0}, {0.15, 0.06, 1.0}};
        const Curve curve(cmsBuildGamma(context(), 1.0));
        if (!curve) return nullptr;
        cmsToneCurve* const curves[3] = {curve.get(), curve.get(), curve.get()};
        return Profile(cmsCreateRGBProfileTHR(context(), &white, &primaries, curves));
    }

    [[nodiscard]] Transform transform(void* from, cmsUInt32Number fromFormat, void* to,
                                      cmsUInt32Number toFormat, cmsUInt32Number flags) const {
        if (from == nullptr || to == nullptr) return nullptr;
        return Transform(
            cmsCreateTransformTHR(context(), from, fromFormat, to, toFormat, INTENT_PERCEPTUAL, flags));
    }

    /// The library prefers a table to curves and a matrix where a profile has both.
    [[nodiscard]] bool isMatrixShaper(void* profile) const {
        return m_task.samples == ColorSamples::RGB && cmsIsMatrixShaper(profile) != 0 &&
               cmsIsTag(profile, cmsSigAToB0Tag) == 0;
    }

    [[nodiscard]] ColorAnswer buildTones(void* source) const {
        const bool color = m_task.target == ColorTarget::SRGB;
        const Profile target(color ? cmsCreate_sRGBProfileTHR(context()) : grayOfGamma(2.2).release());
        const Transform exact =
            transform(source, TYPE_GRAY_16, target.get(), color ? TYPE_RGB_16 : TYPE_GRAY_16, kExact);
        if (!exact) return failure();
        std::vector<uint16_t> levels(m_task.words ? 65536 : 256);
        for (size_t i = 0; i < levels.size(); ++i)
            levels[i] = static_cast<uint16_t>(m_task.words ? i : i * 257);
        std::vector<uint16_t> table(levels.size() * (color ? 3 : 1));
        cmsDoTransform(exact.get(), levels.data(), table.data(),
                       static_cast<cmsUInt32Number>(levels.size()));
        if (!color && areSame(levels, table)) return {ColorAnswer::Kind::Identity};
        return {ColorAnswer::Kind::Converter, makeToneConverter(table, m_task.target, m_task.words)};
    }

    [[nodiscard]] static bool areSame(const std::vector<uint16_t>& a, const std::vector<uint16_t>& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [](int left, int right) { return std::abs(left - right) <= kSameLevel; });
    }

    /// Curves and a matrix are known by their grays and a coarse grid of colours.
    [[nodiscard]] bool isSRGB(void* source) const {
        const Profile target(cmsCreate_sRGBProfileTHR(context()));
        const Transform exact = transform(source, TYPE_RGB_16, target.get(), TYPE_RGB_16, kExact);
        if (!exact) return false;
        std::vector<uint16_t> colors;
        for (unsigned level = 0; level < 256; ++level)
            colors.insert(colors.end(), 3, static_cast<uint16_t>(level * 257));
        constexpr unsigned kSteps = 9;
        for (unsigned i = 0; i < kSteps * kSteps * kSteps; ++i) {
            for (const unsigned place : {i % kSteps, i / kSteps % kSteps, i / kSteps / kSteps})
                colors.push_back(static_cast<uint16_t>(place * 65535 / (kSteps - 1)));
        }
        std::vector<uint16_t> converted(colors.size());
        cmsDoTransform(exact.get(), colors.data(), converted.data(),
                       static_cast<cmsUInt32Number>(colors.size() / 3));
        return areSame(colors, converted);
    }

    [[nodiscard]] ColorAnswer buildLights(void* source) const {
        const bool color = m_task.target == ColorTarget::SRGB;
        if (color && isSRGB(source)) return {ColorAnswer::Kind::Identity};
        const Profile target = color ? linearSRGB() : grayOfGamma(1.0);
        const cmsUInt32Number toFormat = color ? TYPE_RGB_FLT : TYPE_GRAY_FLT;
        const Transform exact = transform(source, TYPE_RGB_FLT, target.get(), toFormat, kExact);
        if (!exact) return failure();
        Lights lights;
        for (size_t sample = 0; sample < 3; ++sample)
            lights[sample] = lightsOf(exact.get(), sample, color ? 3 : 1);
        return {ColorAnswer::Kind::Converter,
                makeLightConverter(std::move(lights), m_task.target, m_task.words)};
    }

    /// Of one sample alone. Each holds a third of the black's light, so that the sum of three has one.
    [[nodiscard]] std::vector<Light> lightsOf(void* exact, size_t sample, size_t components) const {
        const uint32_t count = lightNodes(m_task.words);
        std::vector<float> colors(size_t{count} * 3);
        for (size_t i = 0; i < count; ++i)
            colors[i * 3 + sample] = static_cast<float>(i) / static_cast<float>(count - 1);
        std::vector<float> values(count * components);
        cmsDoTransform(exact, colors.data(), values.data(), count);
        std::vector<Light> lights(count);
        for (size_t i = 0; i < count; ++i) {
            for (size_t c = 0; c < components; ++c)
                lights[i][c] = bounded(values[i * components + c]) - bounded(values[c]) * (2.0f / 3.0f);
        }
        return lights;
    }

    /// Profiles can hold anything: what is no number, or far from any light, is cut.
    [[nodiscard]] static float bounded(float light) {
        return light == light ? std::clamp(light, -64.0f, 64.0f) : 0.0f;
    }

    [[nodiscard]] ColorAnswer buildPrepared(void* source) {
        const Profile target(cmsCreate_sRGBProfileTHR(context()));
        // Bytes need no better grid than the usual one.
        const cmsUInt32Number flags = cmsFLAGS_NOCACHE | (m_task.words ? cmsFLAGS_HIGHRESPRECALC : 0U);
        Transform prepared = transform(source, formatOf(m_task.samples, m_task.words), target.get(),
                                       formatOf(ColorSamples::RGB, m_task.words), flags);
        if (!prepared) return failure();
        return {ColorAnswer::Kind::Converter, std::make_shared<PreparedConverter>(
                                                  std::move(m_context), std::move(prepared), m_task.words)};
    }

    const ColorTask& m_task;
    std::unique_ptr<ColorContext> m_context;
};

}  // namespace

ColorAnswer makeConverter(const ColorTask& task) {
    return Builder(task).build();
}

}  // namespace fi
