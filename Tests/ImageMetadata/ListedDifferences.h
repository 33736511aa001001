// SPDX-License-Identifier: Apache-2.0
// exif-differences.tsv: where the library's facts of a photo are others than exiftool's, and why.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace fi::test {

struct ListedDifference {
    std::string ours;
    std::string exiftools;
    uint64_t offset = 0;  ///< of the bytes in the file that bring the rule about
    std::string hex;      ///< those bytes
    std::string reason;
};

/// By the photo's path inside the collection and the fact's name.
using ListedDifferences = std::map<std::pair<std::string, std::string>, ListedDifference>;

/// Reads the table; a line of another shape or a second one for the same fact fails the test.
[[nodiscard]] ListedDifferences listedDifferences();

}  // namespace fi::test
