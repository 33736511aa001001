// SPDX-License-Identifier: Apache-2.0
// The inner side of ImageSource.
#pragma once

#include "PlatformKit/ImageSource.h"
#include "PlatformKit/Imaging/ImageReader.h"

namespace fi {

struct SourceReader {
    /// Borrowed from the source.
    static ImageReader& of(const ImageSource& source) { return *source.m_reader; }
    static Ref<ImageSource> makeSource(std::unique_ptr<ByteSource> bytes, ImageFailure* failure);
};

}  // namespace fi
