// SPDX-License-Identifier: Apache-2.0
// Decodes BMP pictures that are stored row by row, each row of its own.
#pragma once

#include <vector>

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Codecs/BandedPicture.h"
#include "PlatformKit/Codecs/BmpHeader.h"
#include "PlatformKit/Codecs/BmpPixels.h"

namespace fi {

class BmpRows {
public:
    /// Both are BORROWED and must outlive the decoder.
    BmpRows(ByteSource& source, const BmpHeader& header);

    /// Bytes of all rows in the file; nullopt when they are beyond counting.
    [[nodiscard]] static std::optional<uint64_t> storedBytes(const BmpHeader& header);

    /// The picture that the rows make. Gray1 and RGBA32 know no reduction.
    [[nodiscard]] static BandedPicture::Shape shapeOf(const BmpHeader& header);

    /// `picture` is of that shape. False when rows are missing: they are painted in gray, in Gray1 white.
    [[nodiscard]] bool decode(BandedPicture& picture);

    /// True once any row was read.
    [[nodiscard]] bool any() const { return m_any; }

private:
    bool readBand(const BandedPicture::Band& band, uint32_t top);

    ByteSource& m_source;
    const BmpHeader& m_header;
    BmpPixels m_pixels;
    uint64_t m_stride;              // bytes from row to row in the file
    std::vector<uint8_t> m_stored;  // the rows of a band
    bool m_any = false;
};

}  // namespace fi
