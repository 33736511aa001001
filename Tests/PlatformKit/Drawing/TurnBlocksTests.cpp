// SPDX-License-Identifier: Apache-2.0
// Both forms of the block copies, in memory of any stride and alignment, against the obvious model; not a
// byte beside the pixels may change.
#include "PlatformKit/Drawing/TurnBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace fi::test {
namespace {

constexpr uint8_t kUntouched = 0xA5;

enum class Move : uint8_t { Copy, Mirror, Exchange };

/// Rows at an odd place and an odd distance, or aligned to whole cache lines.
class Memory {
public:
    Memory(uint32_t width, uint32_t height, uint32_t pixelBytes, bool aligned) {
        const size_t rowBytes = size_t{width} * pixelBytes;
        m_stride = aligned ? (rowBytes + 63) / 64 * 64 : rowBytes + 1 + rowBytes % 2;
        m_lead = aligned ? 0 : 3;
        m_size = m_lead + m_stride * height;
        m_bytes.reset(static_cast<uint8_t*>(std::aligned_alloc(64, (m_size + 64) / 64 * 64)));
        std::fill_n(m_bytes.get(), m_size, kUntouched);
    }
    [[nodiscard]] uint8_t* row(uint32_t y) const { return m_bytes.get() + m_lead + m_stride * y; }
    [[nodiscard]] ptrdiff_t stride() const { return static_cast<ptrdiff_t>(m_stride); }
    [[nodiscard]] std::vector<uint8_t> contents() const { return {m_bytes.get(), m_bytes.get() + m_size}; }

private:
    struct Free {
        void operator()(uint8_t* bytes) const { std::free(bytes); }
    };
    std::unique_ptr<uint8_t, Free> m_bytes;
    size_t m_stride = 0;
    size_t m_lead = 0;
    size_t m_size = 0;
};

struct Shape {
    uint32_t width;
    uint32_t height;
    uint32_t pixelBytes;
};

void fillWithNoise(const Memory& memory, Shape shape) {
    uint32_t state = shape.width * 131 + shape.height;
    for (uint32_t y = 0; y < shape.height; ++y) {
        for (size_t i = 0; i < size_t{shape.width} * shape.pixelBytes; ++i) {
            state = state * 1664525U + 1013904223U;
            memory.row(y)[i] = static_cast<uint8_t>(state >> 24);
        }
    }
}

void modelMove(const Memory& from, const Memory& to, Shape shape, Move move) {
    for (uint32_t y = 0; y < shape.height; ++y) {
        for (uint32_t x = 0; x < shape.width; ++x) {
            const uint32_t toX = move == Move::Copy ? x : move == Move::Mirror ? shape.width - 1 - x : y;
            const uint32_t toY = move == Move::Exchange ? x : y;
            for (size_t i = 0; i < shape.pixelBytes; ++i)
                to.row(toY)[toX * shape.pixelBytes + i] = from.row(y)[x * shape.pixelBytes + i];
        }
    }
}

void realMove(const PixelCopy& copy, Move move, BlockForm form) {
    if (move == Move::Copy) copyRows(copy);
    if (move == Move::Mirror) mirrorRows(copy, form);
    if (move == Move::Exchange) exchangeAxes(copy, form);
}

/// The result in the whole memory, and the model's.
std::pair<std::vector<uint8_t>, std::vector<uint8_t>> moveBothWays(Shape shape, Move move, BlockForm form,
                                                                   bool aligned, bool past) {
    const Memory from(shape.width, shape.height, shape.pixelBytes, false);
    fillWithNoise(from, shape);
    const bool swap = move == Move::Exchange;
    const uint32_t width = swap ? shape.height : shape.width;
    const uint32_t height = swap ? shape.width : shape.height;
    const Memory result(width, height, shape.pixelBytes, aligned);
    const Memory model(width, height, shape.pixelBytes, aligned);
    modelMove(from, model, shape, move);
    realMove({{from.row(0), from.stride()},
              {result.row(0), result.stride()},
              shape.width,
              shape.height,
              shape.pixelBytes,
              past},
             move, form);
    return {result.contents(), model.contents()};
}

class TurnBlocksOfForm : public testing::TestWithParam<std::tuple<BlockForm, uint32_t, bool>> {
protected:
    /// Whether every move of a picture with these sides gives what the model gives.
    static void expectModel(uint32_t width, uint32_t height) {
        const auto [form, pixelBytes, aligned] = GetParam();
        for (const Move move : {Move::Copy, Move::Mirror, Move::Exchange}) {
            for (const bool past : {false, true}) {
                const auto [result, model] =
                    moveBothWays({width, height, pixelBytes}, move, form, aligned, past);
                ASSERT_EQ(result, model) << width << "x" << height << " move " << static_cast<int>(move)
                                         << (past ? " past the caches" : "");
            }
        }
    }
};

TEST_P(TurnBlocksOfForm, EverySmallSizeMatchesTheModel) {
    for (uint32_t width = 1; width <= 20; ++width) {
        for (uint32_t height = 1; height <= 20; ++height)
            ASSERT_NO_FATAL_FAILURE(expectModel(width, height));
    }
}

TEST_P(TurnBlocksOfForm, SizesAroundWholeBlocksMatchTheModel) {
    for (const uint32_t width : {31U, 32U, 33U, 63U, 64U, 65U, 127U, 128U, 129U}) {
        for (const uint32_t height : {1U, 31U, 32U, 33U, 63U, 64U, 65U, 128U, 130U})
            ASSERT_NO_FATAL_FAILURE(expectModel(width, height));
    }
}

TEST_P(TurnBlocksOfForm, SeveralStripsMatchTheModel) {
    for (const uint32_t width : {1023U, 1024U, 1025U, 2100U})
        ASSERT_NO_FATAL_FAILURE(expectModel(width, 66));
}

std::string nameOf(const testing::TestParamInfo<TurnBlocksOfForm::ParamType>& info) {
    const auto [form, pixelBytes, aligned] = info.param;
    return std::string(form == BlockForm::Plain ? "Plain" : "Sse2") + std::to_string(pixelBytes) +
           (aligned ? "Aligned" : "Odd");
}

INSTANTIATE_TEST_SUITE_P(Forms, TurnBlocksOfForm,
                         testing::Combine(testing::Values(BlockForm::Plain, BlockForm::Sse2),
                                          testing::Values(1U, 2U, 4U, 8U), testing::Bool()),
                         nameOf);

}  // namespace
}  // namespace fi::test
