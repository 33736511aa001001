// SPDX-License-Identifier: Apache-2.0
// Hands libjpeg's bytes to a ByteSink, piece by piece.
#pragma once

#include <memory>

#include "PlatformKit/Codecs/ByteSink.h"

struct jpeg_destination_mgr;

namespace fi {

/// A destination manager for libjpeg. A sink that refuses (or throws) ends the running step.
class JpegOutput {
public:
    /// The sink must outlive the output.
    explicit JpegOutput(const ByteSink& sink);
    ~JpegOutput();
    JpegOutput(const JpegOutput&) = delete;
    JpegOutput& operator=(const JpegOutput&) = delete;

    /// What `dest` of a compressor is set to. Lives as long as the output.
    [[nodiscard]] jpeg_destination_mgr* manager();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace fi
