// SPDX-License-Identifier: Apache-2.0
// The value of a tag as JSON, and in words.
#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "PhotoTags.h"

namespace fi {

/// Units in the value.
[[nodiscard]] size_t tagCount(const PhotoTag& tag);

/// A text as text, bytes as base64, a number as a number, a fraction as [numerator, denominator]; several
/// of the last two as an array, none as an empty one. Text is UTF-8 without the zero bytes at its end; a
/// number that is not finite is null.
[[nodiscard]] nlohmann::ordered_json tagJsonValue(const PhotoTag& tag);

/// The exact bytes, in base64, of a text that is not UTF-8; nothing for every other value.
[[nodiscard]] std::optional<std::string> tagExactText(const PhotoTag& tag);

/// In at most about `columns` columns of a terminal; cut where it is longer, with the number of its units.
[[nodiscard]] std::string tagWords(const PhotoTag& tag, size_t columns);

}  // namespace fi
