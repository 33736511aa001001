// SPDX-License-Identifier: Apache-2.0
// How the rooms' failures become the public record, and how no exception leaves a public operation.
#pragma once

#include <new>
#include <string_view>

#include "PlatformKit/Codecs/CodecTypes.h"
#include "PlatformKit/ImageFailure.h"

namespace fi {

/// Fills the record that a caller asked for; null means that nobody asked.
void report(ImageFailure* failure, ImageError code, std::string_view text) noexcept;
void report(ImageFailure* failure, const CodecFailure& reason) noexcept;

/// Calls `operation`; whatever it throws becomes the failure, and the result is then that of `Result{}`.
template <typename Operation>
auto withoutExceptions(ImageFailure* failure, const Operation& operation) noexcept
    -> decltype(operation()) {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        report(failure, ImageError::NoMemory, "There is not enough memory.");
    } catch (...) {
        report(failure, ImageError::Damaged, "The picture cannot be processed.");
    }
    return {};
}

}  // namespace fi
