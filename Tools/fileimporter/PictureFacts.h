// SPDX-License-Identifier: Apache-2.0
// What a photo's own headers tell, and why it could not be shown.
#pragma once

#include "PhotoFacts.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/ImageFailure.h"

namespace fi {

/// Date, orientation, stored size and Exif from an image source's properties.
void addPictureFacts(PhotoFacts& facts, const CFDictionary& properties);

/// When the photo was taken; else when it was digitised; nothing when the properties tell neither.
[[nodiscard]] std::optional<DateTimeRec> dateTaken(const CFDictionary& properties);

/// The failure as a result code and as words that can follow a file's name and a colon.
[[nodiscard]] PhotoError photoError(const ImageFailure& failure);

}  // namespace fi
