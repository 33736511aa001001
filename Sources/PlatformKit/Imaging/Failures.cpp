// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/Failures.h"

namespace fi {

namespace {

ImageError publicCode(CodecError code) {
    switch (code) {
        case CodecError::NotThisFormat:
            return ImageError::NotAnImage;
        case CodecError::Damaged:
            return ImageError::Damaged;
        case CodecError::Unsupported:
            return ImageError::Unsupported;
        case CodecError::LimitExceeded:
            return ImageError::LimitExceeded;
        case CodecError::NoMemory:
            return ImageError::NoMemory;
        case CodecError::ReadFailed:
            return ImageError::ReadFailed;
        case CodecError::WriteFailed:
            return ImageError::WriteFailed;
    }
    return ImageError::Damaged;
}

}  // namespace

void report(ImageFailure* failure, ImageError code, std::string_view text) noexcept {
    if (failure == nullptr) return;
    failure->code = code;
    failure->text = nullptr;
    try {
        failure->text = CFString::create(text);
    } catch (...) {
        // The code alone must do.
    }
}

void report(ImageFailure* failure, const CodecFailure& reason) noexcept {
    report(failure, publicCode(reason.code), reason.text);
}

}  // namespace fi
