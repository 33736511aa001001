// SPDX-License-Identifier: Apache-2.0
// The pictures of one opened file, with everything that was learnt about it so far.
#pragma once

#include <memory>
#include <optional>

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/ImageFailure.h"
#include "PlatformKit/Imaging/ImageFormats.h"
#include "PlatformKit/Imaging/ImagePixels.h"

namespace fi {

/// A decoded picture and what an image made of it should tell.
struct ReadPicture {
    PixelBuffer pixels;
    ImageTraits traits;
};

/// The reason for everything that a failing source spoils.
[[nodiscard]] CodecFailure readFailure();

class ImageReader {
public:
    /// `format` is what the source was recognised as.
    ImageReader(std::unique_ptr<ByteSource> source, const ImageFormat& format)
        : m_source(std::move(source)), m_format(format) {}

    /// Pictures in the file; 0 when the first one's header cannot be read.
    [[nodiscard]] uint32_t count();
    /// True when reading failed while the metadata was looked for: some of it may be missing.
    [[nodiscard]] bool lostMetadata() const { return m_lostMetadata; }
    /// True when there is such a picture; `failure` tells why not.
    [[nodiscard]] bool has(uint32_t index, ImageFailure* failure);
    /// Of a picture that the file has; borrowed until that of another is asked for.
    [[nodiscard]] const CodecResult<ImageHeader>& header(uint32_t index);
    /// The file's metadata, borrowed; null when it has none.
    [[nodiscard]] const TiffDirectorySet* directories();
    /// The metadata directory of one picture, borrowed; null when there is none.
    [[nodiscard]] const std::vector<TiffField>* directory(uint32_t index);
    /// 1 to 8; nullopt when the file states none.
    [[nodiscard]] std::optional<uint16_t> orientation(uint32_t index);

    /// Of a picture that the file has.
    CodecResult<ReadPicture> decode(uint32_t index, SizeFloor floor);

private:
    [[nodiscard]] CodecResult<ImageHeader> readHeader(uint32_t index);

    struct IndexedHeader {
        uint32_t index;
        CodecResult<ImageHeader> header;
    };

    std::unique_ptr<ByteSource> m_source;
    const ImageFormat& m_format;
    std::optional<CodecResult<ImageHeader>> m_first;
    std::optional<IndexedHeader> m_other;  ///< of the last picture behind the first
    bool m_triedDirectories = false;
    bool m_lostMetadata = false;
    std::optional<TiffDirectorySet> m_directories;
};

}  // namespace fi
