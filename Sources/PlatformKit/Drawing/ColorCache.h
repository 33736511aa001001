// SPDX-License-Identifier: Apache-2.0
// Converters that the process used last: photos of one camera have one profile.
#pragma once

#include "PlatformKit/Drawing/ColorTask.h"

namespace fi {

/// The answer to the task, made at the first use. Refusals are remembered as well, shortage of memory is
/// not. At most kMostColorAnswers are kept. Any thread; a task that several ask for at once may be answered
/// more than once.
[[nodiscard]] ColorAnswer converterFor(const ColorTask& task);

inline constexpr size_t kMostColorAnswers = 12;

/// How many tasks were not answered from memory; for tests.
[[nodiscard]] size_t colorAnswersMade();

}  // namespace fi
