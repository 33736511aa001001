// SPDX-License-Identifier: Apache-2.0
// What a photo says about itself, as texts that can be compared with what others read from it and that can
// stand in a table.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "FileImporter/ExifInformation.h"

namespace fi::test {

inline constexpr std::string_view kNoFact = "none";

/// "date" (of the original, else of the digitizing: "2003:10:20 09:01:29"), "orientation" and "size"
/// (stored pixels: "1600x1200"), each kNoFact when there is none.
using PhotoFacts = std::map<std::string, std::string>;

inline constexpr const char* kDate = "date";
inline constexpr const char* kOrientation = "orientation";
inline constexpr const char* kSize = "size";

/// The library's answers. The date that it takes from the file itself for want of another is no fact.
[[nodiscard]] PhotoFacts factsOfLibrary(const std::string& path);

/// The facts in exiftool's words, by the path inside the collection.
[[nodiscard]] std::map<std::string, PhotoFacts> factsOfExiftool(const std::string& jsonPath);

/// What other projects state of the files for their own tests; facts that they do not mention are missing.
/// By the path of their statement inside the collection: the name of the photo, and its facts.
struct Statement {
    std::string photo;  ///< name of the file without its folder
    PhotoFacts facts;
};
[[nodiscard]] std::map<std::string, Statement> factsOfOtherProjects(const std::string& folder);

}  // namespace fi::test
