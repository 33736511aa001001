// SPDX-License-Identifier: Apache-2.0
// One page of a TIFF file, opened by libtiff on a ByteSource.
#pragma once

#include <memory>
#include <string>

#include "PlatformKit/Base/ByteSource.h"

struct tiff;

namespace fi {

/// libtiff gets its bytes from the source alone (nothing is mapped), may allocate no block larger than
/// the limit, and tells its errors to the handle instead of stderr.
class TiffHandle {
public:
    /// Opens the page whose directory lies at `directory`; get() is null when that fails.
    TiffHandle(ByteSource& source, uint64_t directory);
    ~TiffHandle();
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    [[nodiscard]] tiff* get() const;

    /// Length of the whole file.
    [[nodiscard]] uint64_t fileBytes() const;

    /// From here on, picture data that begins in the file and is cut by its end is filled up with zeros,
    /// so that libtiff decodes the rows before the cut; each such read counts as an error.
    void fillUpCutData();

    /// Errors told so far.
    [[nodiscard]] uint32_t errors() const;
    /// libtiff's words for the last of them; empty when there was none.
    [[nodiscard]] std::string lastError() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace fi
