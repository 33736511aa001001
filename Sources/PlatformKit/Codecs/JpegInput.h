// SPDX-License-Identifier: Apache-2.0
// Feeds libjpeg from a ByteSource, piece by piece.
#pragma once

#include <memory>

#include "PlatformKit/Base/ByteSource.h"

struct jpeg_source_mgr;

namespace fi {

/// A source manager for libjpeg that holds one piece of the file at a time. Where the file ends too
/// early it says "end of image", so that the rows read so far come out.
class JpegInput {
public:
    explicit JpegInput(ByteSource& source);
    ~JpegInput();
    JpegInput(const JpegInput&) = delete;
    JpegInput& operator=(const JpegInput&) = delete;

    /// What `src` of a decompressor is set to. Lives as long as the input.
    [[nodiscard]] jpeg_source_mgr* manager();

    /// True once libjpeg wanted bytes beyond the end of the file.
    [[nodiscard]] bool ranDry() const;

    /// True when no byte is left to be read.
    [[nodiscard]] bool atEnd() const;

    /// From here on the whole file may be read. Until then, the tables in front of the picture may take
    /// a bounded number of bytes only, so that a huge file of padding is not searched to its end.
    void expectPixels();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace fi
