// SPDX-License-Identifier: Apache-2.0
// The collection of real photos that may stand beside the checkout; the suite makes its own pictures
// and uses these in addition.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace fi::test {

/// Folder of the collection: $FILEIMPORTER_CORPORA, else ../shared/corpora beside the checkout;
/// nullopt when there is none.
[[nodiscard]] std::optional<std::string> corpusFolder();

/// Absolute paths of the files in one folder of the collection, sorted; empty when it is not there.
[[nodiscard]] std::vector<std::string> corpusFiles(const std::string& folder);

}  // namespace fi::test
