// SPDX-License-Identifier: Apache-2.0
// Where an encoder puts its bytes.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

namespace fi {

/// Takes the next bytes of a file; false when they could not be written, which ends the encoding.
using ByteSink = std::function<bool(std::span<const uint8_t>)>;

}  // namespace fi
