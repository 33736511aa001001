// SPDX-License-Identifier: Apache-2.0
// What a photo's own headers tell, and why it could not be shown.
#pragma once

#include "PhotoFacts.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/ImageFailure.h"

namespace fi {

/// All facts of a photo. `error` when it is no picture that can be read; what is known is there all the
/// same.
[[nodiscard]] PhotoFacts readPhotoFacts(const std::string& path);

/// When the photo of these facts was taken, else digitised, by its Exif data; else when its file was
/// modified.
[[nodiscard]] std::optional<DateTimeRec> photoDate(const PhotoFacts& facts);

/// Orientation, stored size and Exif from an image source's properties.
void addPictureFacts(PhotoFacts& facts, const CFDictionary& properties);

/// The failure as a result code and as words that can follow a file's name and a colon.
[[nodiscard]] PhotoError photoError(const ImageFailure& failure);

/// The same for a file that was to be read; of one that could not be opened it tells why.
[[nodiscard]] PhotoError readError(const std::string& path, const ImageFailure& failure);

/// What is told of a picture of which only a part could be read, and that is shown all the same.
[[nodiscard]] PhotoError incompleteError();

}  // namespace fi
