// SPDX-License-Identifier: Apache-2.0
// The copying under the turns: pixels of whole bytes, block by block.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fi {

/// Rows of a picture that is read, in the order of reading: a negative stride walks upwards.
struct SourceRows {
    const uint8_t* first;
    ptrdiff_t stride;

    [[nodiscard]] const uint8_t* row(uint32_t y) const { return first + stride * ptrdiff_t{y}; }
};

/// Rows of a picture that is written, in the order of writing.
struct TargetRows {
    uint8_t* first;
    ptrdiff_t stride;

    [[nodiscard]] uint8_t* row(uint32_t y) const { return first + stride * ptrdiff_t{y}; }
};

/// The ways to move a block of pixels. All give the same bytes.
enum class BlockForm : uint8_t {
    Plain,  ///< for any processor
    Sse2,   ///< Plain where the processor is not an x86-64
};

#if defined(__SSE2__)
constexpr BlockForm kFastestForm = BlockForm::Sse2;
#else
constexpr BlockForm kFastestForm = BlockForm::Plain;
#endif

/// What is copied where. The two pictures have no byte in common.
struct PixelCopy {
    SourceRows from;
    TargetRows to;
    uint32_t width;   ///< of the source
    uint32_t height;  ///< of the source
    uint32_t pixelBytes;
    /// Lets writes go past the caches, which is faster for what does not fit into them. They do so when
    /// the target's rows are aligned for it.
    bool past;
};

/// Copies the rows in their order.
void copyRows(const PixelCopy& copy);

/// Copies the rows in their order, the last pixel of each first. Pixels have 1, 2, 4 or 8 bytes.
void mirrorRows(const PixelCopy& copy, BlockForm form);

/// The first column becomes the first row. Pixels have 1, 2, 4 or 8 bytes.
void exchangeAxes(const PixelCopy& copy, BlockForm form);

}  // namespace fi
