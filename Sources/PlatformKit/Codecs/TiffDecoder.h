// SPDX-License-Identifier: Apache-2.0
// Turns one opened TIFF page into plain pixels, strip by strip.
#pragma once

#include <memory>
#include <vector>

#include "PlatformKit/Codecs/BandedPicture.h"
#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/TiffHandle.h"

namespace fi {

class TiffDecoder {
public:
    /// The handle must be open, within the limits, and outlive the decoder.
    explicit TiffDecoder(TiffHandle& handle);
    ~TiffDecoder();
    TiffDecoder(const TiffDecoder&) = delete;
    TiffDecoder& operator=(const TiffDecoder&) = delete;

    CodecResult<DecodedPicture> decode(SizeFloor floor);

private:
    struct Raster;

    [[nodiscard]] std::optional<CodecFailure> begin();
    void giveExactTileBuffer();
    /// Reads every band; false when none was whole.
    bool readBands(BandedPicture& picture);
    bool readBand(const BandedPicture::Band& band, uint32_t top);
    void spreadRows(const BandedPicture::Band& band) const;
    void takeGray(const BandedPicture::Band& band) const;

    TiffHandle& m_handle;
    std::unique_ptr<Raster> m_raster;
    std::vector<uint8_t> m_tile;   // only for tiles without compression
    std::vector<uint32_t> m_band;  // only for gray: libtiff makes words of four bytes
};

}  // namespace fi
