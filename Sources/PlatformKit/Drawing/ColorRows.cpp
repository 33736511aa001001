// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/ColorRows.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <thread>

#include "PlatformKit/Codecs/PixelMixing.h"

namespace fi {

namespace {

constexpr uint32_t kMostThreads = 8;
/// Starting a thread takes about as long as converting a few thousand pixels.
constexpr uint64_t kPixelsOfAThread = 1 << 16;

uint16_t loadWord(const uint8_t* row, size_t index) {
    uint16_t word = 0;
    std::memcpy(&word, row + index * 2, 2);
    return word;
}

void storeWord(uint8_t* row, size_t index, uint32_t value) {
    const auto word = static_cast<uint16_t>(value);
    std::memcpy(row + index * 2, &word, 2);
}

/// From 256 steps a unit to 257, rounded; the few values above the new range are cut.
uint32_t widened(uint32_t value) {
    return std::min((value * 257 + 128) / 256, 65535U);
}

void prepareWideLab(uint8_t* row, uint32_t pixels, bool isSigned) {
    for (size_t x = 0; x < pixels; ++x) {
        if (!isSigned) storeWord(row, x * 4, widened(loadWord(row, x * 4)));
        for (size_t c = 1; c < 3; ++c) {
            const uint32_t value = loadWord(row, x * 4 + c);
            storeWord(row, x * 4 + c, widened(isSigned ? value ^ 0x8000U : value));
        }
    }
}

void convertWideInks(uint8_t* row, uint32_t pixels, bool inverted) {
    const uint32_t mask = inverted ? 0 : 0xFFFF;
    for (size_t x = 0; x < pixels; ++x) {
        const uint32_t light = loadWord(row, x * 4 + 3) ^ mask;
        for (size_t c = 0; c < 3; ++c) {
            const uint32_t paper = loadWord(row, x * 4 + c) ^ mask;
            storeWord(row, x * 4 + c, (paper * light + 32767U) / 65535U);  // 65535 squared fits
        }
        storeWord(row, x * 4 + 3, 65535);
    }
}

/// Where the alpha and the first colour of a pixel stand.
struct AlphaPlaces {
    size_t alpha;
    size_t color;
};

AlphaPlaces placesOf(PixelLayout layout) {
    return layout == PixelLayout::ARGB32 ? AlphaPlaces{0, 1} : AlphaPlaces{3, 0};
}

}  // namespace

void prepareLab(uint8_t* row, uint32_t pixels, ColorSamples samples, bool words) {
    const bool isSigned = samples == ColorSamples::CIELab;
    if (words) return prepareWideLab(row, pixels, isSigned);
    if (!isSigned) return;
    for (size_t x = 0; x < pixels; ++x) {
        row[x * 4 + 1] ^= 0x80;
        row[x * 4 + 2] ^= 0x80;
    }
}

void convertInksPlainly(uint8_t* row, uint32_t pixels, bool inverted, bool words) {
    if (words) return convertWideInks(row, pixels, inverted);
    convertInks(row, pixels, inverted);
}

void separateAlpha(const uint8_t* from, uint8_t* to, uint32_t pixels, PixelLayout layout) {
    const AlphaPlaces places = placesOf(layout);
    for (; pixels > 0; --pixels, from += 4, to += 4) {
        const uint32_t alpha = from[places.alpha];
        for (size_t c = 0; c < 3; ++c) {
            const uint32_t color = from[places.color + c];
            to[c] =
                static_cast<uint8_t>(alpha == 0 ? 0 : std::min((color * 255 + alpha / 2) / alpha, 255U));
        }
        to[3] = 255;
    }
}

void uniteAlpha(const uint8_t* from, uint8_t* to, uint32_t pixels, PixelLayout layout) {
    const AlphaPlaces places = placesOf(layout);
    for (; pixels > 0; --pixels, from += 4, to += 4) {
        const uint32_t alpha = to[places.alpha];
        for (size_t c = 0; c < 3; ++c)
            to[places.color + c] = static_cast<uint8_t>((from[c] * alpha + 127) / 255);
    }
}

void layAlphaOnWhite(const uint8_t* from, uint8_t* to, uint32_t pixels, PixelLayout layout) {
    const AlphaPlaces places = placesOf(layout);
    for (size_t x = 0; x < pixels; ++x) {
        std::memcpy(to + x * 4, from + x * 4 + places.color, 3);
        to[x * 4 + 3] = from[x * 4 + places.alpha];
    }
    layOnWhite(to, pixels);
}

void shareRows(uint32_t height, uint64_t pixels, uint32_t threads,
               const std::function<void(uint32_t, uint32_t)>& work) {
    const uint64_t most = std::min<uint64_t>({threads, kMostThreads, pixels / kPixelsOfAThread, height});
    const auto parts = static_cast<uint32_t>(std::max<uint64_t>(most, 1));
    const auto start = [&](uint32_t part) {
        return static_cast<uint32_t>(uint64_t{height} * part / parts);
    };
    std::thread others[kMostThreads];
    uint32_t begun = 1;
    try {
        for (; begun < parts; ++begun)
            others[begun] = std::thread(std::cref(work), start(begun), start(begun + 1));
    } catch (const std::exception&) {
        // No more threads: the calling one does the rest.
    }
    work(0, start(1));
    if (begun < parts) work(start(begun), height);
    for (uint32_t part = 1; part < begun; ++part)
        others[part].join();
}

}  // namespace fi
