// SPDX-License-Identifier: Apache-2.0
// What became of a photo that was to be made into a file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "PhotoFacts.h"

namespace fi {

struct PhotoResult {
    std::string path;
    std::string output;
    std::optional<uint32_t> width;  ///< pixels of what was written; empty when nothing was
    std::optional<uint32_t> height;
    std::optional<PhotoError>
        readError;  ///< of `path`; what could be read may have been written all the same
    std::optional<PhotoError> writeError;  ///< of `output`
};

}  // namespace fi
