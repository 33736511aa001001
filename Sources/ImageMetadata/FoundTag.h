// SPDX-License-Identifier: Apache-2.0
// An entry of a directory whose value has been located but not copied yet.
#pragma once

#include <cstdint>

#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/TagData.h"
#include "ImageMetadata/TagEntry.h"

namespace fi {

/// Where values are looked for.
struct TagPlace {
    IMAGETAG_POSITION& position;
    TagData& data;
    CMEMCARDFILE* reader;  ///< BORROWED; brings what lies behind the data. Null for none.
};

/// Nothing is read and nothing allocated before copyTo(). Good while its place is.
class FoundTag {
public:
    /// Of an entry in host order.
    FoundTag(const TagEntry& entry, const TagPlace& place) : m_entry(entry), m_place(place) {}

    [[nodiscard]] uint16_t tag() const { return m_entry.tag; }
    [[nodiscard]] uint16_t type() const { return m_entry.type; }
    /// The low 16 bits of the entry's count, with their sign.
    [[nodiscard]] int32_t count() const { return static_cast<int16_t>(m_entry.count); }
    /// Bytes of the value.
    [[nodiscard]] uint32_t size() const {
        return static_cast<uint32_t>(count()) * unitSizeOfType(m_entry.type);
    }

    /// 0 when there is a value to copy. kTagBadData: a type that is none, a value before the data in hand,
    /// or behind them without a reader. kTagNoMemory: a negative count, for which nothing can be allocated.
    [[nodiscard]] uint32_t check() const {
        if (unitSizeOfType(m_entry.type) == 0) return kTagBadData;
        if (count() < 0) return kTagNoMemory;
        if (isInline()) return kTagNoError;
        if (filePosition() < m_place.data.start()) return kTagBadData;
        return isInHand() || m_place.reader != nullptr ? kTagNoError : kTagBadData;
    }

    /// Copies the first `limit` bytes of the value (all when it has fewer; a multiple of the unit) in host
    /// order. False when they could not be read. For a tag that passed check().
    [[nodiscard]] bool copyTo(void* out, uint32_t limit) const;
    [[nodiscard]] bool copyTo(void* out) const { return copyTo(out, size()); }

private:
    [[nodiscard]] bool isInline() const {
        return size() <= sizeof(m_entry.value) && type() != kTagRational && type() != kTagSRational;
    }
    [[nodiscard]] uint64_t filePosition() const {
        return uint64_t{m_place.position.headerPosition} + m_entry.value;
    }
    [[nodiscard]] bool isInHand() const {
        return m_place.data.contains(filePosition() - m_place.data.start(), size());
    }
    [[nodiscard]] bool copyRaw(void* out, uint32_t bytes) const;
    [[nodiscard]] bool fetch(void* out, uint32_t bytes) const;

    const TagEntry m_entry;
    const TagPlace& m_place;
};

}  // namespace fi
