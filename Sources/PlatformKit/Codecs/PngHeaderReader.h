// SPDX-License-Identifier: Apache-2.0
// Walks the chunks in front of a PNG picture's data and gathers the facts they hold.
#pragma once

#include <string_view>

#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/SourceWindow.h"

namespace fi {

class PngHeaderReader {
public:
    explicit PngHeaderReader(ByteSource& source) : m_window(source) {}

    CodecResult<ImageHeader> read();

private:
    struct Chunk {
        char name[4] = {};
        uint64_t start = 0;  // of its data
        uint64_t length = 0;

        [[nodiscard]] bool is(std::string_view other) const {
            return std::string_view(name, sizeof name) == other;
        }
    };

    /// The chunk at `m_at`, and one step on; nullopt when no whole chunk is left.
    [[nodiscard]] std::optional<Chunk> nextChunk();
    void take(const Chunk& chunk);
    void takeDensity(const Chunk& chunk);
    void takeExif(const Chunk& chunk);
    void takeProfile(const Chunk& chunk);
    void finishDensity();

    SourceWindow m_window;
    uint64_t m_at = 0;
    ImageHeader m_header;
};

}  // namespace fi
