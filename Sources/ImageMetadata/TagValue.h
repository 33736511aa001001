// SPDX-License-Identifier: Apache-2.0
// Records of tags: a value copied, and what its text says in numbers.
#pragma once

#include <cstdint>
#include <string_view>

#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/FoundTag.h"

namespace fi {

/// Fills a record; its value is OWNED (std::free). 0; kTagNoMemory, or kTagBadData when the value could not
/// be read, and the record is untouched.
[[nodiscard]] uint32_t makeRecord(const FoundTag& found, IMAGETAG_INFO& record);

/// Numbers of a text whose fields are parted by ' ', '/' and ':'. An empty field is 0, one that is missing
/// equals the first one. Numbers are kept modulo 2^16.
void splitDate(std::string_view text, uint16_t (&numbers)[6]);

/// The number that the leading digits make, modulo 2^16; 0 without any.
[[nodiscard]] uint16_t leadingNumber(std::string_view text);

}  // namespace fi
