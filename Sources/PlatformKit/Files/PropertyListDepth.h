// SPDX-License-Identifier: Apache-2.0
// How deep a property list nests, before anything is built from it.
#pragma once

#include <string_view>

namespace fi {

/// True when arrays and dictionaries in the text never nest deeper than `levels`. Text whose tags cannot
/// be told apart with certainty (an embedded document type, a "<" inside a tag) is refused as well.
[[nodiscard]] bool nestsAtMost(std::string_view xml, int levels);

}  // namespace fi
