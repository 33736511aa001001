// SPDX-License-Identifier: Apache-2.0
// A photo's tags in words, and as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "PhotoTags.h"

namespace fi {

/// {"IFD0": [{"tag": 274, "name": "Orientation", "type": "SHORT", "count": 1, "value": 6}], ...}: the
/// directories that hold tags.
[[nodiscard]] nlohmann::ordered_json tagsJson(const PhotoTags& tags);

/// Lines for the end of a photo's paragraph, each behind a line end: one a tag, under its directory's name.
/// Long values are cut.
[[nodiscard]] std::string tagLines(const PhotoTags& tags);

}  // namespace fi
