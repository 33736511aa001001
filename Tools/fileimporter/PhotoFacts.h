// SPDX-License-Identifier: Apache-2.0
// What the tool tells about one photo.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "FileImporter/ResultCodes.h"
#include "PlatformKit/DateTime.h"

namespace fi {

struct PhotoError {
    OSErr code = kNoErr;
    std::string text;
};

/// What is not known is empty.
struct PhotoFacts {
    std::string path;
    std::optional<uint64_t> bytes;
    std::optional<DateTimeRec> modified;
    std::optional<DateTimeRec> date;  ///< of the shot, else of the file
    std::optional<int64_t> orientation;
    std::optional<int64_t> width;  ///< stored pixels
    std::optional<int64_t> height;
    std::optional<bool> exif;
    std::optional<PhotoError> error;
    bool ofUnknownKind = false;  ///< the error is that its content is of no kind that is read
};

/// "jpeg", "tiff", "pict", "bmp", "pdf", "qal" or "image", from the file's name.
[[nodiscard]] std::string_view photoType(std::string_view path);

/// Size and dates of a file, links followed; `error` when it is no regular file with something in it. It
/// is not opened.
[[nodiscard]] PhotoFacts readFileFacts(const std::string& path);

/// Why a file could not be opened; nothing when it can be.
[[nodiscard]] std::optional<PhotoError> faultOfOpening(const std::string& path);

}  // namespace fi
