// SPDX-License-Identifier: Apache-2.0
// Blocks of pixels moved with the registers that every x86-64 has.
#pragma once

#include <emmintrin.h>

#include "PlatformKit/Drawing/TurnBlocksPlain.h"

namespace fi {

class Sse2Blocks {
public:
    template <typename Pixel>
    static void transpose(SourceRows from, TurnedBlock<Pixel>& to) {
        constexpr uint32_t kSquare = kPixels<Pixel>;
        for (uint32_t y = 0; y < kBlockRows<Pixel>; y += kSquare) {
            for (uint32_t x = 0; x < kBlockColumns<Pixel>; x += kSquare) {
                const SourceRows square{from.row(y) + x * sizeof(Pixel), from.stride};
                const auto columns = transposed<Pixel>(square);
                for (uint32_t i = 0; i < kSquare; ++i)
                    _mm_store_si128(vectorAt(&to.rows[x + i][y]), columns.rows[i]);
            }
        }
    }

    template <typename Pixel>
    static void storePast(const TurnedBlock<Pixel>& block, TargetRows to) {
        for (uint32_t y = 0; y < kBlockColumns<Pixel>; ++y) {
            uint8_t* line = to.row(y);
            for (uint32_t x = 0; x < kBlockRows<Pixel>; x += kPixels<Pixel>)
                _mm_stream_si128(vectorAt(line + x * sizeof(Pixel)),
                                 _mm_load_si128(vectorAt(&block.rows[y][x])));
        }
    }

    template <typename Pixel>
    static void mirror(const uint8_t* from, uint8_t* to, size_t count) {
        mirrorWith<Pixel>(from, to, count, [](__m128i* at, __m128i value) { _mm_storeu_si128(at, value); });
    }

    template <typename Pixel>
    static void mirrorPast(const uint8_t* from, uint8_t* to, size_t count) {
        mirrorWith<Pixel>(from, to, count, [](__m128i* at, __m128i value) { _mm_stream_si128(at, value); });
    }

    static void finishPast() { _mm_sfence(); }

private:
    static constexpr size_t kVectorBytes = 16;
    template <typename Pixel>
    static constexpr uint32_t kPixels = kVectorBytes / sizeof(Pixel);
    template <typename Pixel>
    struct Square {
        __m128i rows[kPixels<Pixel>];
    };

    static __m128i* vectorAt(void* bytes) { return static_cast<__m128i*>(bytes); }
    static const __m128i* vectorAt(const void* bytes) { return static_cast<const __m128i*>(bytes); }

    /// Pixels of both in turns, from their first halves.
    template <typename Pixel>
    static __m128i mergeFirst(__m128i a, __m128i b) {
        if constexpr (sizeof(Pixel) == 1) return _mm_unpacklo_epi8(a, b);
        if constexpr (sizeof(Pixel) == 2) return _mm_unpacklo_epi16(a, b);
        if constexpr (sizeof(Pixel) == 4) return _mm_unpacklo_epi32(a, b);
        if constexpr (sizeof(Pixel) == 8) return _mm_unpacklo_epi64(a, b);
    }

    /// Pixels of both in turns, from their second halves.
    template <typename Pixel>
    static __m128i mergeSecond(__m128i a, __m128i b) {
        if constexpr (sizeof(Pixel) == 1) return _mm_unpackhi_epi8(a, b);
        if constexpr (sizeof(Pixel) == 2) return _mm_unpackhi_epi16(a, b);
        if constexpr (sizeof(Pixel) == 4) return _mm_unpackhi_epi32(a, b);
        if constexpr (sizeof(Pixel) == 8) return _mm_unpackhi_epi64(a, b);
    }

    /// One perfect shuffle. The place of a pixel in the square, row before column, is a number of as many
    /// bits as two sides; a shuffle rotates them by one.
    template <typename Pixel>
    static Square<Pixel> shuffled(const Square<Pixel>& square) {
        constexpr size_t kHalf = kPixels<Pixel> / 2;
        Square<Pixel> result;
        for (size_t i = 0; i < kHalf; ++i) {
            result.rows[2 * i] = mergeFirst<Pixel>(square.rows[i], square.rows[i + kHalf]);
            result.rows[2 * i + 1] = mergeSecond<Pixel>(square.rows[i], square.rows[i + kHalf]);
        }
        return result;
    }

    /// As many shuffles as a side has bits exchange row and column.
    template <typename Pixel>
    static Square<Pixel> transposed(SourceRows from) {
        Square<Pixel> square;
        for (uint32_t y = 0; y < kPixels<Pixel>; ++y)
            square.rows[y] = _mm_loadu_si128(vectorAt(from.row(y)));
        square = shuffled<Pixel>(square);
        if constexpr (sizeof(Pixel) <= 4) square = shuffled<Pixel>(square);
        if constexpr (sizeof(Pixel) <= 2) square = shuffled<Pixel>(square);
        if constexpr (sizeof(Pixel) == 1) square = shuffled<Pixel>(square);
        return square;
    }

    template <typename Pixel>
    static __m128i reversed(__m128i pixels) {
        const __m128i halves = _mm_shuffle_epi32(pixels, _MM_SHUFFLE(1, 0, 3, 2));
        if constexpr (sizeof(Pixel) == 8) return halves;
        if constexpr (sizeof(Pixel) == 4) return _mm_shuffle_epi32(pixels, _MM_SHUFFLE(0, 1, 2, 3));
        constexpr int kBackwards = _MM_SHUFFLE(0, 1, 2, 3);
        const __m128i words = _mm_shufflehi_epi16(_mm_shufflelo_epi16(halves, kBackwards), kBackwards);
        if constexpr (sizeof(Pixel) == 2) return words;
        return _mm_or_si128(_mm_slli_epi16(words, 8), _mm_srli_epi16(words, 8));
    }

    template <typename Pixel, typename Store>
    static void mirrorWith(const uint8_t* from, uint8_t* to, size_t count, Store store) {
        const uint8_t* end = from + count * sizeof(Pixel);
        size_t x = 0;
        for (; count - x >= kPixels<Pixel>; x += kPixels<Pixel>) {
            end -= kVectorBytes;
            store(vectorAt(to + x * sizeof(Pixel)), reversed<Pixel>(_mm_loadu_si128(vectorAt(end))));
        }
        PlainBlocks::mirror<Pixel>(from, to + x * sizeof(Pixel), count - x);
    }
};

}  // namespace fi
