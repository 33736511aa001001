// SPDX-License-Identifier: Apache-2.0
// Walks the segments in front of a JPEG's first scan and gathers the facts they hold.
#pragma once

#include <vector>

#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/SourceWindow.h"

namespace fi {

class JpegHeaderReader {
public:
    explicit JpegHeaderReader(ByteSource& source) : m_window(source) {}

    CodecResult<ImageHeader> read();

private:
    struct Segment {
        uint8_t marker = 0;
        uint64_t start = 0;   // of what follows the length
        uint64_t length = 0;  // without the length itself
    };
    /// One part of a profile that is spread over several segments.
    struct ProfilePart {
        uint8_t number = 0;
        uint8_t count = 0;
        std::vector<uint8_t> bytes;
    };

    [[nodiscard]] std::optional<Segment> nextSegment();
    [[nodiscard]] std::optional<uint8_t> nextMarker();
    void take(const Segment& segment);
    void takeFrame(const Segment& segment);
    void takeJfif(const Segment& segment);
    void takeExif(const Segment& segment);
    void takeProfilePart(const Segment& segment);
    void joinProfile();
    void finishDensity();

    SourceWindow m_window;
    uint64_t m_at = 2;      // behind the start of image
    uint64_t m_strays = 0;  // bytes between segments so far
    bool m_hasFrame = false;
    ImageHeader m_header;
    std::vector<ProfilePart> m_profile;
};

}  // namespace fi
