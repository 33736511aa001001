// SPDX-License-Identifier: Apache-2.0
// A photo's facts in words: as a row of a table, as a paragraph, and as JSON.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "PhotoFacts.h"
#include "PhotoResult.h"
#include "PhotoTags.h"

namespace fi {

/// "2004-05-01T18:03:00".
[[nodiscard]] std::string isoDate(const DateTimeRec& date);
/// "2004-05-01 18:03:00".
[[nodiscard]] std::string readableDate(const DateTimeRec& date);

/// One JSON object without line ends; `index` leads when there is one.
[[nodiscard]] std::string jsonLine(const PhotoFacts& facts, std::optional<size_t> index);

/// The same of a single file, with its tags; null where they could not be had.
[[nodiscard]] std::string jsonLineWithTags(const PhotoFacts& facts, const std::optional<PhotoTags>& tags);

/// One JSON object of a photo that was to be made into a file.
[[nodiscard]] std::string jsonLine(const PhotoResult& result);

/// Several lines, the first one the path.
[[nodiscard]] std::string factsParagraph(const PhotoFacts& facts);
[[nodiscard]] std::string factsParagraphWithTags(const PhotoFacts& facts,
                                                 const std::optional<PhotoTags>& tags);

/// Rows of one list, in columns: index, name, type, size, stored pixels, orientation, Exif or not, and
/// date.
class PhotoTable {
public:
    explicit PhotoTable(const std::vector<std::string>& paths);

    [[nodiscard]] std::string row(const PhotoFacts& facts, size_t index) const;

private:
    size_t m_indexWidth;
    size_t m_nameWidth = 0;
};

}  // namespace fi
