// SPDX-License-Identifier: Apache-2.0
// The slots of CIMAGETAG and the copies that it hands out of them.
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/TagMemory.h"

namespace fi {

namespace {

constexpr uint16_t kSlots = 8;

}  // namespace

uint8_t CIMAGETAG::PushChain(const IMAGETAG_INFO* record, uint16_t slot, uint32_t* error) {
    *error = kTagNoMemory;
    if (slot >= kSlots) return 0;
    IMAGETAG_FIELD& field = m_fields[slot];
    if (field.count == INT16_MAX) return 0;
    const size_t records = static_cast<size_t>(field.count) + 1;
    void* grown = reallocateTagMemory(field.records, records * sizeof(IMAGETAG_INFO), "PushChain");
    if (grown == nullptr) return 0;
    field.records = static_cast<IMAGETAG_INFO*>(grown);
    field.records[field.count++] = *record;
    *error = kTagNoError;
    return 1;
}

IMAGETAG_INFO* CIMAGETAG::GetInfo(uint16_t slot, uint16_t tag, uint32_t* error) {
    *error = kTagMoreNeeded;
    if (slot >= kSlots) return nullptr;
    const IMAGETAG_INFO* const first = m_fields[slot].records;
    const IMAGETAG_INFO* const last = first + m_fields[slot].count;
    const auto* found =
        std::find_if(first, last, [tag](const IMAGETAG_INFO& record) { return record.tag == tag; });
    if (found == last) return nullptr;
    auto* copy = static_cast<IMAGETAG_INFO*>(allocateTagMemory(sizeof(IMAGETAG_INFO), "GetInfo"));
    *error = copy == nullptr ? kTagNoMemory : kTagNoError;
    if (copy != nullptr) *copy = *found;
    return copy;
}

IMAGETAG_ARRAY* CIMAGETAG::GetArray(uint16_t slot, uint32_t* size, uint32_t* error) {
    *error = kTagMoreNeeded;
    if (slot >= kSlots || m_fields[slot].count == 0) return nullptr;
    const IMAGETAG_FIELD& field = m_fields[slot];
    const size_t bytesOfRecords = static_cast<size_t>(field.count) * sizeof(IMAGETAG_INFO);
    const size_t bytes = offsetof(IMAGETAG_ARRAY, records) + bytesOfRecords;
    auto* copy = static_cast<IMAGETAG_ARRAY*>(allocateTagMemory(bytes, "GetArray"));
    *error = copy == nullptr ? kTagNoMemory : kTagNoError;
    if (copy == nullptr) return nullptr;
    copy->count = static_cast<uint16_t>(field.count);
    std::memcpy(copy->records, field.records, bytesOfRecords);
    *size = static_cast<uint32_t>(bytes);
    return copy;
}

void CIMAGETAG::ReleaseInfo(IMAGETAG_INFO* info) {
    std::free(info);
}

void CIMAGETAG::ReleaseArray(IMAGETAG_ARRAY* array) {
    std::free(array);
}

void CIMAGETAG::ReleaseField(int32_t from) {
    for (int32_t slot = std::max(from, 0); slot < kSlots; ++slot) {
        IMAGETAG_FIELD& field = m_fields[slot];
        for (int16_t i = 0; i < field.count; ++i)
            std::free(field.records[i].value);
        std::free(field.records);
        field.records = nullptr;
        field.count = 0;
    }
}

void CIMAGETAG::CloseField() {
    ReleaseField(0);
}

}  // namespace fi
