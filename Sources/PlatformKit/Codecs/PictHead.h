// SPDX-License-Identifier: Apache-2.0
// The beginning of a QuickDraw picture: its version, frame and resolution.
#pragma once

#include <optional>

#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/PictInput.h"

namespace fi {

/// Bytes that applications put in front of a picture in a file; a picture in memory has none.
inline constexpr uint64_t kPictFileHeader = 512;

struct PictHead {
    uint32_t version = 2;  ///< 1: opcodes of one byte; 2: of two, at even places
    uint64_t start = 0;    ///< of the picture in the source; even places count from here
    uint64_t opcodes = 0;  ///< where those behind the version and the header are
    PictRect frame;        ///< in points
    PictRect space;        ///< the coordinates of the drawing; the frame when nothing else is said
    uint32_t width = 0;    ///< of the picture in pixels, as is the height
    uint32_t height = 0;
    std::optional<Density> density;  ///< absent when no resolution is stated: a point is a pixel

    [[nodiscard]] PictPlane plane() const { return {space, width, height}; }
};

/// Where the picture begins: 0 or kPictFileHeader; nullopt when `head` is of no picture.
[[nodiscard]] std::optional<uint64_t> findPict(ByteView head);

/// Width and height times 72 and divided by the density are, rounded, the frame in points exactly: where a
/// writer's resolution contradicts its frame and its drawing, the density is that of the frame.
CodecResult<PictHead> readPictHead(ByteSource& source);

}  // namespace fi
