// SPDX-License-Identifier: Apache-2.0
// Short lines of text as coverage, which a page can lay a colour through.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace fi {

/// Draws every line into the same memory, with one font that is found once. One thread at a time.
class Captions {
public:
    enum class Shorten : uint8_t { Middle, End };

    /// One byte a pixel, rows from the top.
    struct Coverage {
        std::span<const uint8_t> bytes;
        size_t rowBytes = 0;
        uint32_t width = 0;
        uint32_t height = 0;
    };

    /// Lines of `width` by `height` pixels.
    Captions(uint32_t width, uint32_t height);
    ~Captions();
    Captions(const Captions&) = delete;
    Captions& operator=(const Captions&) = delete;

    /// A line of UTF-8, centred; shortened with an ellipsis where it is too long. Valid until the next
    /// call. Empty (width 0) without memory.
    [[nodiscard]] Coverage draw(std::string_view text, Shorten shorten);

private:
    struct Canvas;
    std::unique_ptr<Canvas> m_canvas;
};

}  // namespace fi
