// SPDX-License-Identifier: Apache-2.0
// The pictures of a file: what they are, read from their headers, and their pixels.
#pragma once

#include <cstdint>
#include <memory>

#include "PlatformKit/CGImage.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/ImageFailure.h"
#include "PlatformKit/URL.h"

namespace fi {

class ImageReader;

/// Reads JPEG and TIFF files, told apart by their content and never by their names. Orientation is not
/// applied. The file stays open, and is read piece by piece, as long as the source exists. One thread at
/// a time. Every operation that can fail takes an optional `failure`, filled in when it does.
class FI_EXPORT ImageSource final : public NSObject {
public:
    /// OWNED; the URL is BORROWED. Null when no regular file can be read there (pipes and devices are never
    /// waited for) or its content is not recognised.
    static Ref<ImageSource> open(CFURLRef url, ImageFailure* failure = nullptr);
    /// OWNED. From bytes in memory, which it retains; null when they are not recognised.
    static Ref<ImageSource> openData(CFDataRef data, ImageFailure* failure = nullptr);

    /// Pictures in the file; 0 when its header cannot be read.
    [[nodiscard]] uint32_t count() const;

    /// OWNED. What ImageProperties.h names, from the headers alone; null when there is no such picture or
    /// its header cannot be read.
    [[nodiscard]] Ref<const CFDictionary> copyProperties(uint32_t index,
                                                         ImageFailure* failure = nullptr) const;

    /// OWNED. The picture in its full size, gray in 8 bits or colour in 32; null when it cannot be
    /// decoded. A file that is cut gives what is there (CGImage::isDamaged()); one that
    /// cannot be read to its end, because the system fails, gives nothing but ImageError::ReadFailed.
    [[nodiscard]] Ref<const CGImage> createImage(uint32_t index, ImageFailure* failure = nullptr) const;

    /// OWNED. The picture in the smallest size that it can be decoded in quickly and that is not below
    /// the wanted one on either side; never larger than stored. Sides in stored, not upright, direction;
    /// 0 in either asks for the full size.
    [[nodiscard]] Ref<const CGImage> createImage(uint32_t index, uint32_t atLeastWidth,
                                                 uint32_t atLeastHeight,
                                                 ImageFailure* failure = nullptr) const;

private:
    friend struct SourceReader;
    explicit ImageSource(std::unique_ptr<ImageReader> reader);
    ~ImageSource() override;

    std::unique_ptr<ImageReader> m_reader;
};

}  // namespace fi
