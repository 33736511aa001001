// SPDX-License-Identifier: Apache-2.0
// A small moving window on a ByteSource, for readers that hop from header to header.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Base/ByteView.h"

namespace fi {

class SourceWindow {
public:
    static constexpr size_t kMaximumView = 4096;

    /// Offsets count from `base`.
    explicit SourceWindow(ByteSource& source, uint64_t base = 0);

    /// Bytes of the source behind the base.
    [[nodiscard]] uint64_t size() const { return m_size; }

    /// Up to `length` (at most kMaximumView) bytes at `offset`, fewer at the end of the source. The view
    /// holds until the next call.
    [[nodiscard]] ByteView view(uint64_t offset, size_t length);

    /// Up to `length` bytes at `offset` of their own. What is allocated never exceeds what the source has.
    [[nodiscard]] std::vector<uint8_t> copy(uint64_t offset, uint64_t length);

private:
    ByteSource& m_source;
    uint64_t m_base;
    uint64_t m_size;
    uint64_t m_start = 0;
    size_t m_count = 0;
    std::array<uint8_t, kMaximumView> m_bytes;
};

}  // namespace fi
