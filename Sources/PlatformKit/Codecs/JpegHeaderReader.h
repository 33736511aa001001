// SPDX-License-Identifier: Apache-2.0
// Walks the segments in front of a JPEG's first scan and gathers the facts they hold.
#pragma once

#include <vector>

#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/SourceWindow.h"

namespace fi {

/// A height that stands behind the first scan, because it was not known in front of it.
struct JpegLateHeight {
    uint64_t frameOffset = 0;  ///< of the two bytes of the frame that say 0 instead
    uint16_t height = 0;
};

class JpegHeaderReader {
public:
    explicit JpegHeaderReader(ByteSource& source) : m_window(source) {}

    CodecResult<ImageHeader> read();

    /// After read(): where the height came from, when the frame did not say it.
    [[nodiscard]] const std::optional<JpegLateHeight>& lateHeight() const { return m_lateHeight; }

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
    void findLateHeight(uint64_t scan);
    void takeJfif(const Segment& segment);
    void takeExif(const Segment& segment);
    void takeProfilePart(const Segment& segment);
    void joinProfile();
    void finishDensity();

    SourceWindow m_window;
    uint64_t m_at = 2;      // behind the start of image
    uint64_t m_strays = 0;  // bytes between segments so far
    bool m_hasFrame = false;
    uint64_t m_frameHeightAt = 0;
    std::optional<JpegLateHeight> m_lateHeight;
    ImageHeader m_header;
    std::vector<ProfilePart> m_profile;
};

}  // namespace fi
