// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/ColorConversion.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <utility>

#include "PlatformKit/Drawing/ColorCache.h"
#include "PlatformKit/Drawing/ColorRows.h"

namespace fi {

namespace {

bool isGray(PixelLayout layout) {
    return layout == PixelLayout::Gray1 || layout == PixelLayout::Gray8 || layout == PixelLayout::Gray16;
}

bool hasAlpha(PixelLayout layout) {
    return layout == PixelLayout::RGBA32 || layout == PixelLayout::ARGB32;
}

bool hasWords(PixelLayout layout) {
    return layout == PixelLayout::Gray16 || layout == PixelLayout::RGBX64;
}

bool isLab(ColorSamples samples) {
    return samples == ColorSamples::CIELab || samples == ColorSamples::ICCLab;
}

bool areInks(ColorSamples samples) {
    return samples == ColorSamples::CMYK || samples == ColorSamples::InvertedCMYK;
}

bool suits(PixelLayout layout, ColorSamples samples) {
    if (samples == ColorSamples::Gray) return isGray(layout);
    if (isGray(layout)) return false;
    return samples == ColorSamples::RGB || !hasAlpha(layout);
}

/// By reference, which a function object holds without memory of its own.
template <typename Work>
void shareRowsOf(const PixelBuffer& picture, uint32_t threads, const Work& work) {
    shareRows(picture.height(), uint64_t{picture.width()} * picture.height(), threads, std::cref(work));
}

/// What a task leads to once a profile that cannot be used is set aside.
struct Answer {
    ColorAnswer answer;
    bool refused = false;

    /// The outcome when the pixels have become `otherwise`.
    [[nodiscard]] ColorOutcome outcome(ColorOutcome otherwise) const {
        return refused ? ColorOutcome::ProfileRefused : otherwise;
    }
};

Answer answerTo(ColorTask task) {
    Answer found;
    // Inks without a profile are no task of the engine: it is Refused, and they are converted plainly.
    const bool needsEngine = !areInks(task.samples);
    if (needsEngine || !task.profile.empty()) found.answer = converterFor(task);
    if (found.answer.kind == ColorAnswer::Kind::Refused && !task.profile.empty()) {
        found.refused = true;
        task.profile = {};
        if (needsEngine) found.answer = converterFor(task);
    }
    // The engine's own spaces fail for want of memory only.
    if (needsEngine && found.answer.kind == ColorAnswer::Kind::Refused)
        found.answer.kind = ColorAnswer::Kind::NoMemory;
    return found;
}

/// Pixels at a time, so that what is between two steps stays near the processor.
constexpr uint32_t kPiece = 1024;

void convertTransparentRow(uint8_t* row, uint32_t pixels, PixelLayout layout,
                           const RowConverter& converter) {
    std::array<uint8_t, size_t{kPiece} * 4> piece;
    for (uint32_t x = 0; x < pixels; x += kPiece) {
        const uint32_t count = std::min(kPiece, pixels - x);
        uint8_t* const place = row + size_t{x} * 4;
        separateAlpha(place, piece.data(), count, layout);
        converter.convert(piece.data(), piece.data(), count);
        uniteAlpha(piece.data(), place, count, layout);
    }
}

/// The rows of a colour picture, in place.
class ColorRowsJob {
public:
    ColorRowsJob(PixelBuffer& picture, ColorSamples samples, const RowConverter* converter)
        : m_picture(picture), m_samples(samples), m_converter(converter) {}

    void run(uint32_t threads) const {
        shareRowsOf(m_picture, threads, [this](uint32_t first, uint32_t end) {
            for (uint32_t y = first; y < end; ++y)
                convert(m_picture.row(y));
        });
    }

private:
    void convert(uint8_t* row) const {
        const uint32_t width = m_picture.width();
        const bool words = hasWords(m_picture.layout());
        if (m_converter == nullptr) {
            return convertInksPlainly(row, width, m_samples == ColorSamples::InvertedCMYK, words);
        }
        if (hasAlpha(m_picture.layout()))
            return convertTransparentRow(row, width, m_picture.layout(), *m_converter);
        if (isLab(m_samples)) prepareLab(row, width, m_samples, words);
        m_converter->convert(row, row, width);
    }

    PixelBuffer& m_picture;
    ColorSamples m_samples;
    const RowConverter* m_converter;
};

void convertInto(PixelBuffer& target, const PixelBuffer& source, const RowConverter& converter,
                 uint32_t threads) {
    shareRowsOf(source, threads, [&](uint32_t first, uint32_t end) {
        for (uint32_t y = first; y < end; ++y)
            converter.convert(source.row(y), target.row(y), source.width());
    });
}

std::optional<PixelBuffer> emptyLike(const PixelBuffer& picture, PixelLayout bytes, PixelLayout words) {
    const PixelLayout layout = hasWords(picture.layout()) ? words : bytes;
    return PixelBuffer::create(picture.width(), picture.height(), layout);
}

/// One byte a pixel of Gray1, everything else as it is.
std::optional<PixelBuffer> spreadBits(const PixelBuffer& picture) {
    auto copy = PixelBuffer::create(picture.width(), picture.height(), PixelLayout::Gray8);
    if (!copy) return std::nullopt;
    for (uint32_t y = 0; y < picture.height(); ++y) {
        for (uint32_t x = 0; x < picture.width(); ++x)
            copy->row(y)[x] = (picture.row(y)[x / 8] << (x % 8) & 0x80) != 0 ? 255 : 0;
    }
    return copy;
}

ColorOutcome colorGray(PixelBuffer& picture, ByteView profile, uint32_t threads) {
    const Answer found =
        answerTo({ColorSamples::Gray, ColorTarget::SRGB, picture.layout() == PixelLayout::Gray16, profile});
    if (!found.answer.converter) return ColorOutcome::NoMemory;
    auto color = emptyLike(picture, PixelLayout::RGBX32, PixelLayout::RGBX64);
    if (!color) return ColorOutcome::NoMemory;
    if (picture.layout() == PixelLayout::Gray1) {
        const auto bytes = spreadBits(picture);
        if (!bytes) return ColorOutcome::NoMemory;
        convertInto(*color, *bytes, *found.answer.converter, threads);
    } else {
        convertInto(*color, picture, *found.answer.converter, threads);
    }
    picture = std::move(*color);
    return found.outcome(ColorOutcome::Converted);
}

ColorOutcome retoneGray(PixelBuffer& picture, ByteView profile, uint32_t threads) {
    if (picture.layout() == PixelLayout::Gray1 || profile.empty()) return ColorOutcome::Unchanged;
    const Answer found =
        answerTo({ColorSamples::Gray, ColorTarget::Gray, picture.layout() == PixelLayout::Gray16, profile});
    if (found.answer.kind == ColorAnswer::Kind::NoMemory) return ColorOutcome::NoMemory;
    if (!found.answer.converter) return found.outcome(ColorOutcome::Unchanged);
    convertInto(picture, picture, *found.answer.converter, threads);
    return found.outcome(ColorOutcome::Converted);
}

void convertOnWhite(PixelBuffer& gray, const PixelBuffer& picture, const RowConverter& converter,
                    uint32_t threads) {
    shareRowsOf(picture, threads, [&](uint32_t first, uint32_t end) {
        std::array<uint8_t, size_t{kPiece} * 4> piece;
        for (uint32_t y = first; y < end; ++y) {
            for (uint32_t x = 0; x < picture.width(); x += kPiece) {
                const uint32_t count = std::min(kPiece, picture.width() - x);
                layAlphaOnWhite(picture.row(y) + size_t{x} * 4, piece.data(), count, picture.layout());
                converter.convert(piece.data(), gray.row(y) + x, count);
            }
        }
    });
}

ColorOutcome grayColor(PixelBuffer& picture, const ColorSource& source, uint32_t threads) {
    // All that can fail comes first.
    const Answer found =
        answerTo({ColorSamples::RGB, ColorTarget::Gray, hasWords(picture.layout()), ByteView()});
    if (!found.answer.converter) return ColorOutcome::NoMemory;
    auto gray = emptyLike(picture, PixelLayout::Gray8, PixelLayout::Gray16);
    if (!gray) return ColorOutcome::NoMemory;
    const ColorOutcome outcome = convertToSRGB(picture, source, threads);
    if (outcome == ColorOutcome::NoMemory) return outcome;
    if (hasAlpha(picture.layout())) {
        convertOnWhite(*gray, picture, *found.answer.converter, threads);
    } else {
        convertInto(*gray, picture, *found.answer.converter, threads);
    }
    picture = std::move(*gray);
    return outcome == ColorOutcome::ProfileRefused ? outcome : ColorOutcome::Converted;
}

}  // namespace

ColorOutcome convertToSRGB(PixelBuffer& picture, const ColorSource& source, uint32_t threads) {
    if (!suits(picture.layout(), source.samples)) return ColorOutcome::Unsuitable;
    if (source.samples == ColorSamples::Gray) return colorGray(picture, source.profile, threads);
    const Answer found =
        answerTo({source.samples, ColorTarget::SRGB, hasWords(picture.layout()), source.profile});
    if (found.answer.kind == ColorAnswer::Kind::NoMemory) return ColorOutcome::NoMemory;
    if (found.answer.kind == ColorAnswer::Kind::Identity) return found.outcome(ColorOutcome::Unchanged);
    ColorRowsJob(picture, source.samples, found.answer.converter.get()).run(threads);
    return found.outcome(ColorOutcome::Converted);
}

ColorOutcome convertToGray(PixelBuffer& picture, const ColorSource& source, uint32_t threads) {
    if (!suits(picture.layout(), source.samples)) return ColorOutcome::Unsuitable;
    if (source.samples == ColorSamples::Gray) return retoneGray(picture, source.profile, threads);
    return grayColor(picture, source, threads);
}

}  // namespace fi
