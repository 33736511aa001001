// SPDX-License-Identifier: Apache-2.0
// An entry of a directory whose value has been located but not copied yet.
#pragma once

#include <cstdint>

#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/TagData.h"
#include "ImageMetadata/TagEntry.h"

namespace fi {

/// Nothing is read and nothing allocated before copyTo(). Good while its entry, its data and its reader
/// are.
class FoundTag {
public:
    uint16_t tag = 0;
    uint16_t type = 0;  ///< 1 to 12
    int32_t count = 0;  ///< the low 16 bits of the entry's count; never negative here
    uint32_t size = 0;  ///< bytes of the value

    /// Locates the value of an entry in host order. 0; kTagBadData: a type that is none, a value before
    /// the data in hand, or behind them without a reader (null) to fetch it; kTagNoMemory: a negative
    /// count, which nothing can be allocated for.
    [[nodiscard]] uint32_t locate(const TagEntry& entry, const IMAGETAG_POSITION& position, TagData& data,
                                  CMEMCARDFILE* reader);

    /// Copies the first `limit` bytes of the value (all when it has fewer; cut between units) in host
    /// order. False when they could not be read.
    [[nodiscard]] bool copyTo(void* out, uint32_t limit) const;
    [[nodiscard]] bool copyTo(void* out) const { return copyTo(out, size); }

private:
    [[nodiscard]] bool copyRaw(void* out, uint32_t bytes) const;

    uint32_t m_inlineValue = 0;
    bool m_isInline = false;
    bool m_needsSwap = false;
    uint64_t m_filePosition = 0;
    TagData* m_data = nullptr;         ///< BORROWED
    CMEMCARDFILE* m_reader = nullptr;  ///< BORROWED; null when the value lies in the data
};

}  // namespace fi
