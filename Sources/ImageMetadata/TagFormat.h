// SPDX-License-Identifier: Apache-2.0
// What kind of file the first bytes announce.
#pragma once

#include <cstdint>

#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/TagData.h"

namespace fi {

/// The format (kImageTagFormat…) of data that begin at the file's first byte. An error code otherwise, see
/// CIMAGETAG::CheckFormat; `format` is untouched then.
[[nodiscard]] uint32_t checkFormat(TagData& data, int16_t& format);

/// 0 when the first APP1 segment holds Exif data, else an error code, see CIMAGETAG::SearchExifMagicInAPP1.
[[nodiscard]] uint32_t searchExifMagic(TagData& data);

}  // namespace fi
