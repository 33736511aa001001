// SPDX-License-Identifier: Apache-2.0
// Decodes gray, RGB and CMYK pages of the depths that libtiff's RGBA reader does not know.
#pragma once

#include <vector>

#include "PlatformKit/Codecs/BandedPicture.h"
#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/TiffHandle.h"
#include "PlatformKit/Codecs/TiffSamples.h"

namespace fi {

class TiffSampleDecoder {
public:
    /// The handle must be open, within the limits, and outlive the decoder.
    explicit TiffSampleDecoder(TiffHandle& handle);

    /// True for the pages that this decoder is for.
    [[nodiscard]] bool accepts() const;

    CodecResult<DecodedPicture> decode(SizeFloor floor);

private:
    /// A strip or a tile: its place in the picture, and how it lies in the buffer.
    struct Unit {
        uint32_t left;
        uint32_t top;
        uint32_t width;
        uint32_t height;
        uint32_t plane;
    };

    void describe();
    [[nodiscard]] uint32_t colors() const;
    /// Reads every band; false when no strip or tile was whole.
    bool readBands(BandedPicture& picture);
    bool readPlane(const BandedPicture::Band& band, uint32_t top, uint32_t plane);
    bool readUnit(const Unit& unit);
    void takeUnit(const BandedPicture::Band& band, const Unit& unit) const;
    void takePlane(const BandedPicture::Band& band, const Unit& unit, uint32_t channel,
                   uint32_t sample) const;
    void finishRow(uint8_t* row) const;

    TiffHandle& m_handle;
    SampleFormat m_format;
    uint32_t m_width = 0;
    uint32_t m_height = 0;
    uint32_t m_samples = 1;
    uint16_t m_photometric = 0;
    bool m_separate = false;
    bool m_tiled = false;
    bool m_alpha = false;
    bool m_multiplied = false;
    uint32_t m_unitWidth = 0;
    uint32_t m_bandRows = 0;
    size_t m_rowBytes = 0;
    std::vector<uint8_t> m_buffer;
};

}  // namespace fi
