// SPDX-License-Identifier: Apache-2.0
// The kinds of files that can be read, each as a row of a table.
#pragma once

#include "PlatformKit/Base/ByteSource.h"
#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/Codecs/TiffDirectories.h"

namespace fi {

struct ImageFormat {
    bool (*recognises)(ByteView head);
    CodecResult<ImageHeader> (*readHeader)(ByteSource& source, uint32_t index);
    CodecResult<DecodedPicture> (*decode)(ByteSource& source, uint32_t index, SizeFloor floor);
    /// The metadata of the file, of which `header` describes the first picture.
    std::optional<TiffDirectorySet> (*readDirectories)(ByteSource& source, const ImageHeader& header);
};

/// The format of a file by its content; null when it is none of them.
[[nodiscard]] const ImageFormat* recognisedFormat(ByteSource& source);

}  // namespace fi
