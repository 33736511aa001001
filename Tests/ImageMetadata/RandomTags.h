// SPDX-License-Identifier: Apache-2.0
// Well-formed tag structures by chance, with the records that they must be parsed to.
#pragma once

#include <array>
#include <random>
#include <vector>

#include "ImageMetadata/TagParse.h"

namespace fi::test {

/// What a record must say.
struct ExpectedRecord {
    uint16_t tag;
    uint16_t type;
    uint16_t kind;
    int32_t count;
    Bytes value;  ///< in host byte order, as far as the rules turn it
    Parsed parsed;
    bool operator==(const ExpectedRecord&) const = default;
};

using ExpectedSlots = std::array<std::vector<ExpectedRecord>, 8>;

struct RandomStructure {
    uint32_t header;
    Bytes file;
    size_t endOfDirectories;  ///< position behind the last directory, and behind no value that it does not
                              ///< have
    ExpectedSlots slots;
};

/// Where the directories and their values stand.
enum class Arrangement : uint8_t { Mixed, DirectoriesFirst };

[[nodiscard]] RandomStructure randomStructure(std::mt19937& random, Arrangement arrangement);

/// The records of a CIMAGETAG in the same shape.
[[nodiscard]] ExpectedSlots slotsOf(const OpenTag& tag);

}  // namespace fi::test
