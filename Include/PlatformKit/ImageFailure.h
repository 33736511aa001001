// SPDX-License-Identifier: Apache-2.0
// Why a picture could not be read or written.
#pragma once

#include <cstdint>

#include "PlatformKit/String.h"

namespace fi {

enum class ImageError : uint8_t {
    None,
    CannotOpen,     ///< no readable regular file is there
    NotAnImage,     ///< the content is of no kind that is read
    NoSuchImage,    ///< the file holds fewer pictures
    Damaged,        ///< nothing usable could be read
    Unsupported,    ///< a kind of picture that is not read, or not written
    LimitExceeded,  ///< larger than a single photo may be
    NoMemory,
    WriteFailed,
    ReadFailed,  ///< the system failed to read the file: a pulled card, a broken disk
};

/// Filled in by an operation that fails, left alone by one that succeeds. Operations BORROW it for the
/// length of their call.
struct ImageFailure {
    ImageError code = ImageError::None;
    Ref<const CFString> text;  ///< OWNED by the record: one plain sentence for a person; null with None
};

}  // namespace fi
