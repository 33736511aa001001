// SPDX-License-Identifier: Apache-2.0
// Turns of pictures of 24 megapixels into memory that is already there: against a copy of as many bytes
// into the same memory, and against pixman.
#include "PlatformKit/Drawing/Turns.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>

#include "Support/Comparison.h"
#ifdef FI_BENCH_PIXMAN
#include "Drawing/PeerPixman.h"
#endif

namespace {

using namespace fi;
using namespace fi::bench;

constexpr double kBoundOfCopy = 1.3;

struct Pictures {
    PixelBuffer source;
    PixelBuffer upright;  ///< with the sides of the source
    PixelBuffer lying;    ///< with its sides exchanged
    int rounds;
};

std::optional<Pictures> makePictures(bool tiny, PixelLayout layout) {
    const uint32_t width = tiny ? 60 : 6000;
    const uint32_t height = tiny ? 40 : 4000;
    auto source = PixelBuffer::create(width, height, layout);
    auto upright = PixelBuffer::create(width, height, layout);
    auto lying = PixelBuffer::create(height, width, layout);
    if (!source || !upright || !lying) return std::nullopt;
    uint32_t state = 1;
    for (uint32_t y = 0; y < height; ++y) {
        for (size_t i = 0; i < source->rowBytes(); ++i) {
            state = state * 1664525U + 1013904223U;
            source->row(y)[i] = static_cast<uint8_t>(state >> 24);
        }
    }
    return Pictures{std::move(*source), std::move(*upright), std::move(*lying), tiny ? 1 : 21};
}

bool printTurn(Pictures& pictures, const char* name, Turn turn) {
    PixelBuffer& target = swapsSides(turn) ? pictures.lying : pictures.upright;
    const PixelBuffer& source = pictures.source;
    // Both hold as many bytes: the sides are multiples of a cache line.
    const size_t bytes = std::min(source.rowBytes() * source.height(), target.rowBytes() * target.height());
    bool done = false;
    const bool kept =
        printRow({name, kBoundOfCopy, pictures.rounds, [&] { done = turnInto(source, target, turn); },
                  [&] { std::memcpy(target.row(0), source.row(0), bytes); }});
    return done && kept;
}

bool printTurns(Pictures& pictures) {
    bool kept = printTurn(pictures, "clockwise / copy", Turn::Clockwise);
    kept &= printTurn(pictures, "counter-clockwise / copy", Turn::CounterClockwise);
    kept &= printTurn(pictures, "transpose / copy", Turn::Transpose);
    kept &= printTurn(pictures, "transverse / copy", Turn::Transverse);
    kept &= printTurn(pictures, "half / copy", Turn::Half);
    kept &= printTurn(pictures, "mirror, left-right / copy", Turn::MirrorHorizontal);
    kept &= printTurn(pictures, "mirror, top-bottom / copy", Turn::MirrorVertical);
    return kept;
}

#ifdef FI_BENCH_PIXMAN
bool isSame(const PixelBuffer& a, const PixelBuffer& b) {
    for (uint32_t y = 0; y < a.height(); ++y) {
        for (uint32_t x = 0; x < a.width(); ++x) {
            if (std::memcmp(a.row(y) + size_t{x} * 4, b.row(y) + size_t{x} * 4, 3) != 0) return false;
        }
    }
    return true;
}

bool printPixman(Pictures& pictures, const char* name, PixmanOrder order, double bound) {
    auto target = PixelBuffer::create(pictures.lying.width(), pictures.lying.height(), PixelLayout::RGBX32);
    if (!target) return false;
    bool done = false;
    const bool kept = printRow({name, bound, pictures.rounds,
                                [&] { done = turnInto(pictures.source, pictures.lying, Turn::Clockwise); },
                                pixmanQuarterTurn(pictures.source, *target, order)});
    if (done && isSame(pictures.lying, *target)) return kept;
    std::fprintf(stderr, "%s: the results differ\n", name);
    return false;
}

bool printPeers(Pictures& pictures) {
    bool kept = printPixman(pictures, "clockwise / pixman", PixmanOrder::AsStored, 0.25);
    // Its own routine takes the time of 2.5 copies: a quarter of that is out of any turn's reach.
    kept &= printPixman(pictures, "clockwise / pixman, B G R", PixmanOrder::Swapped, 0.5);
    return kept;
}
#else
bool printPeers(Pictures&) {
    std::puts("rows of pixman left out: not installed");
    return true;
}
#endif

}  // namespace

int main(int argc, char** argv) {
    const bool tiny = sizeFromArguments(argc, argv) == Size::Tiny;
    auto pictures = makePictures(tiny, PixelLayout::RGBX32);
    if (!pictures) return 1;
    bool kept = printTurns(*pictures);
    kept &= printPeers(*pictures);
    return kept || tiny ? 0 : 1;
}
