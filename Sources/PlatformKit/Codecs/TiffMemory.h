// SPDX-License-Identifier: Apache-2.0
// A TIFF file that libtiff writes into memory.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct tiff;

namespace fi {

/// Errors of libtiff are kept instead of going to stderr; memory that runs short is an error of writing.
class TiffMemory {
public:
    TiffMemory();
    ~TiffMemory();
    TiffMemory(const TiffMemory&) = delete;
    TiffMemory& operator=(const TiffMemory&) = delete;

    /// Null when libtiff could not begin.
    [[nodiscard]] tiff* get() const;

    /// Writes what is left, closes, and gives the bytes; empty when anything failed on the way.
    [[nodiscard]] std::vector<uint8_t> finish();

    [[nodiscard]] std::string lastError() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace fi
