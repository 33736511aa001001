// SPDX-License-Identifier: Apache-2.0
// Pictures, sources and comparisons that the codec tests share.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Base/PixelBuffer.h"

namespace fi::test {

/// A smooth picture whose four corners differ from one another.
[[nodiscard]] PixelBuffer makePicture(uint32_t width, uint32_t height, PixelLayout layout);

/// Mean of the absolute differences of all color bytes; pictures of different shapes differ by 255.
[[nodiscard]] double meanDifference(const PixelBuffer& a, const PixelBuffer& b);

/// True when each color of each pixel of `small` is the mean, rounded half up, of its block of `large`; the
/// blocks lie evenly over it.
[[nodiscard]] bool isBlockMeanOf(const PixelBuffer& small, const PixelBuffer& large);

[[nodiscard]] std::vector<uint8_t> jpegOf(const PixelBuffer& picture, double quality = 1.0);

/// `jpeg` with a segment of the marker behind its start-of-image.
[[nodiscard]] std::vector<uint8_t> withSegment(const std::vector<uint8_t>& jpeg, uint8_t marker,
                                               const std::vector<uint8_t>& payload);

/// The bytes of a text literal, inner NULs included.
[[nodiscard]] std::vector<uint8_t> bytesOf(std::string_view text);

[[nodiscard]] std::vector<uint8_t> joined(const std::vector<uint8_t>& first,
                                          const std::vector<uint8_t>& second);

/// The first `count` bytes.
[[nodiscard]] std::vector<uint8_t> firstBytes(const std::vector<uint8_t>& bytes, size_t count);

/// A deterministic harm: `count` bytes of the copy are replaced, chosen by `seed`.
[[nodiscard]] std::vector<uint8_t> mutated(std::vector<uint8_t> bytes, uint32_t seed, uint32_t count);

/// Counts what is read, and can break off like a card that is pulled.
class CountingSource final : public ByteSource {
public:
    explicit CountingSource(std::span<const uint8_t> bytes) : m_memory(bytes), m_failsFrom(bytes.size()) {}

    [[nodiscard]] uint64_t size() const override { return m_memory.size(); }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override;

    [[nodiscard]] uint64_t bytesRead() const { return m_bytesRead; }
    [[nodiscard]] size_t largestRead() const { return m_largestRead; }
    void failFrom(uint64_t offset) { m_failsFrom = offset; }
    /// Bytes from `first` to before `end` cannot be read.
    void makeHole(uint64_t first, uint64_t end) {
        m_failsFrom = first;
        m_failsTo = end;
    }

private:
    MemorySource m_memory;
    uint64_t m_failsFrom;
    uint64_t m_failsTo = UINT64_MAX;
    uint64_t m_bytesRead = 0;
    size_t m_largestRead = 0;
};

}  // namespace fi::test
