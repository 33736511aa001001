// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/TurnBlocks.h"

#include <algorithm>

#include "PlatformKit/Drawing/TurnBlocksPlain.h"
#if defined(__SSE2__)
#include "PlatformKit/Drawing/TurnBlocksSse2.h"
#endif

namespace fi {

namespace {

/// Columns of the source that are gone through at a time. Each is a row of the target, in a page of its
/// own: more pages than the processor remembers the places of cost a search for every line.
constexpr uint32_t kStripColumns = 1024;

bool isAlignedForLines(TargetRows rows) {
    return reinterpret_cast<uintptr_t>(rows.first) % kLineBytes == 0 && rows.stride % kLineBytes == 0;
}

/// A whole block. Going through `turned` touches every line of the source and of the target once,
/// whatever their strides; direct copying falls into one cache set when a stride is a power of two.
template <typename Form, typename Pixel>
void exchangeBlock(SourceRows from, TargetRows to, bool past) {
    TurnedBlock<Pixel> turned;
    Form::template transpose<Pixel>(from, turned);
    if (past) {
        Form::template storePast<Pixel>(turned, to);
    } else {
        PlainBlocks::store<Pixel>(turned, to);
    }
}

/// A block that the picture's right or lower end cuts.
template <typename Form, typename Pixel>
void exchangeCutBlock(SourceRows from, TargetRows to, uint32_t columns, uint32_t rows) {
    uint8_t whole[kBlockRows<Pixel>][kLineBytes] = {};
    for (uint32_t y = 0; y < rows; ++y)
        std::memcpy(whole[y], from.row(y), columns * sizeof(Pixel));
    TurnedBlock<Pixel> turned;
    Form::template transpose<Pixel>({whole[0], kLineBytes}, turned);
    for (uint32_t x = 0; x < columns; ++x)
        std::memcpy(to.row(x), turned.rows[x], rows * sizeof(Pixel));
}

/// Asks for the lines of a block that comes soon. The processor does not foresee so many rows at once.
template <typename Pixel>
void fetchAhead(const PixelCopy& copy, uint32_t top, uint32_t rows, uint32_t x) {
    constexpr uint32_t kAhead = 4 * kBlockColumns<Pixel>;
    if (copy.width - x <= kAhead) return;
    for (uint32_t y = top; y < top + rows; ++y)
        __builtin_prefetch(copy.from.row(y) + size_t{x + kAhead} * sizeof(Pixel));
}

/// The columns from `left` to `right`, in blocks from the top.
template <typename Form, typename Pixel>
void exchangeStrip(const PixelCopy& copy, uint32_t left, uint32_t right, bool past) {
    for (uint32_t top = 0, rows = 0; top < copy.height; top += rows) {
        rows = std::min(kBlockRows<Pixel>, copy.height - top);
        for (uint32_t x = left, columns = 0; x < right; x += columns) {
            columns = std::min(kBlockColumns<Pixel>, right - x);
            fetchAhead<Pixel>(copy, top, rows, x);
            const SourceRows from{copy.from.row(top) + size_t{x} * sizeof(Pixel), copy.from.stride};
            const TargetRows to{copy.to.row(x) + size_t{top} * sizeof(Pixel), copy.to.stride};
            if (rows == kBlockRows<Pixel> && columns == kBlockColumns<Pixel>) {
                exchangeBlock<Form, Pixel>(from, to, past);
            } else {
                exchangeCutBlock<Form, Pixel>(from, to, columns, rows);
            }
        }
    }
}

template <typename Form, typename Pixel>
void exchangePixels(const PixelCopy& copy) {
    const bool past = copy.past && isAlignedForLines(copy.to);
    for (uint32_t left = 0, right = 0; left < copy.width; left = right) {
        right = left + std::min(kStripColumns, copy.width - left);
        exchangeStrip<Form, Pixel>(copy, left, right, past);
    }
    if (past) Form::finishPast();
}

template <typename Form, typename Pixel>
void mirrorPixels(const PixelCopy& copy) {
    const bool past = copy.past && isAlignedForLines(copy.to);
    for (uint32_t y = 0; y < copy.height; ++y) {
        if (past) {
            Form::template mirrorPast<Pixel>(copy.from.row(y), copy.to.row(y), copy.width);
        } else {
            Form::template mirror<Pixel>(copy.from.row(y), copy.to.row(y), copy.width);
        }
    }
    if (past) Form::finishPast();
}

template <typename Form>
void mirrorIn(const PixelCopy& copy) {
    switch (copy.pixelBytes) {
        case 1:
            return mirrorPixels<Form, uint8_t>(copy);
        case 2:
            return mirrorPixels<Form, uint16_t>(copy);
        case 4:
            return mirrorPixels<Form, uint32_t>(copy);
        case 8:
            return mirrorPixels<Form, uint64_t>(copy);
        default:
            return;
    }
}

template <typename Form>
void exchangeIn(const PixelCopy& copy) {
    switch (copy.pixelBytes) {
        case 1:
            return exchangePixels<Form, uint8_t>(copy);
        case 2:
            return exchangePixels<Form, uint16_t>(copy);
        case 4:
            return exchangePixels<Form, uint32_t>(copy);
        case 8:
            return exchangePixels<Form, uint64_t>(copy);
        default:
            return;
    }
}

}  // namespace

void copyRows(const PixelCopy& copy) {
    for (uint32_t y = 0; y < copy.height; ++y)
        std::memcpy(copy.to.row(y), copy.from.row(y), size_t{copy.width} * copy.pixelBytes);
}

void mirrorRows(const PixelCopy& copy, [[maybe_unused]] BlockForm form) {
#if defined(__SSE2__)
    if (form == BlockForm::Sse2) return mirrorIn<Sse2Blocks>(copy);
#endif
    mirrorIn<PlainBlocks>(copy);
}

void exchangeAxes(const PixelCopy& copy, [[maybe_unused]] BlockForm form) {
#if defined(__SSE2__)
    if (form == BlockForm::Sse2) return exchangeIn<Sse2Blocks>(copy);
#endif
    exchangeIn<PlainBlocks>(copy);
}

}  // namespace fi
