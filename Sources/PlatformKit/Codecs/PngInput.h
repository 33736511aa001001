// SPDX-License-Identifier: Apache-2.0
// Feeds libpng from a ByteSource, piece by piece.
#pragma once

#include <memory>

#include "PlatformKit/Base/ByteSource.h"

struct png_struct_def;

namespace fi {

/// Holds one piece of the file at a time. Where the file ends too early, libpng's step is left.
class PngInput {
public:
    explicit PngInput(ByteSource& source);
    ~PngInput();
    PngInput(const PngInput&) = delete;
    PngInput& operator=(const PngInput&) = delete;

    /// Makes libpng read from here. Call it in a step that the trap runs.
    void feed(png_struct_def* reader);

    /// Bytes of the file that libpng has not taken.
    [[nodiscard]] uint64_t remaining() const;

    /// From here on the whole file may be read. Until then, the chunks in front of the picture may take a
    /// bounded number of bytes only, so that a huge file of padding is not searched to its end.
    void expectPixels();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace fi
