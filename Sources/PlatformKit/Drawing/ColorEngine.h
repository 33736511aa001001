// SPDX-License-Identifier: Apache-2.0
// The colour library, asked for one conversion at a time, silent and within bounds of memory.
#pragma once

#include "PlatformKit/Drawing/ColorTask.h"

namespace fi {

/// Makes what a task needs, from its profile or, without one, from the space that the samples commonly
/// mean. May throw std::bad_alloc. Any thread.
[[nodiscard]] ColorAnswer makeConverter(const ColorTask& task);

}  // namespace fi
