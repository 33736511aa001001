// SPDX-License-Identifier: Apache-2.0
// The size of a JPEG as its frame states it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace fi {

struct JfifFrameSize {
    uint16_t width;
    uint16_t height;
};

/// Walks the segments of a JPEG to its baseline frame, or else to the last progressive one. The lengths of
/// the segments that were passed, and height and width of the frame, are left in host order in the data.
[[nodiscard]] std::optional<JfifFrameSize> findJfifFrame(std::span<uint8_t> jpeg);

}  // namespace fi
