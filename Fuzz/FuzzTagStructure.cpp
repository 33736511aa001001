// SPDX-License-Identifier: Apache-2.0
// Any bytes as the head of a file: they stay as they are, the records are whole, and a walk that keeps
// nothing and loads the bytes in steps meets the same tags.
#include <cstddef>
#include <vector>

#include "Contract.h"
#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/TagWalk.h"

using namespace fi;
using fi::fuzz::require;

namespace {

constexpr uint16_t kSlots = 8;

class CountingSink final : public TagSink {
public:
    uint32_t take(uint16_t slot, const FoundTag& tag) override {
        require(slot < kSlots && tag.count() >= 0, "a tag has a slot and a count");
        uint8_t start[16];
        if (!tag.copyTo(start, sizeof(start))) return kTagBadData;
        ++counts[slot];
        return kTagNoError;
    }
    void release(int32_t from) override {
        for (int32_t slot = from; slot < kSlots; ++slot)
            counts[slot] = 0;
    }

    uint32_t counts[kSlots] = {};
};

void visit(CIMAGETAG& field, uint16_t slot, const IMAGETAG_INFO& record, size_t& bytes) {
    const size_t size = static_cast<size_t>(record.count) * unitSizeOfType(record.type);
    require(record.type >= 1 && record.type <= 12 && record.count >= 0, "a record has a type and a count");
    // Reading every byte lets a sanitizer check the block.
    uint32_t sum = 0;
    for (size_t i = 0; i < size; ++i)
        sum += static_cast<uint8_t>(record.value[i]);
    require(sum <= size * 255, "a value has its bytes");
    if (record.type == kTagASCII)
        require(record.value[size] == 0 && record.value[size + 1] == 0, "two zero bytes follow a text");
    uint32_t error = 1;
    IMAGETAG_INFO* first = field.GetInfo(slot, record.tag, &error);
    require(first != nullptr && error == kTagNoError && first->tag == record.tag, "a tag is found");
    field.ReleaseInfo(first);
    bytes += size;
}

size_t visit(CIMAGETAG& field, uint16_t slot, size_t& bytes) {
    uint32_t size = 0;
    uint32_t error = 1;
    IMAGETAG_ARRAY* array = field.GetArray(slot, &size, &error);
    require(array != nullptr ? error == kTagNoError : error == kTagMoreNeeded, "a slot is empty or not");
    if (array == nullptr) return 0;
    const size_t count = array->count;
    require(size == offsetof(IMAGETAG_ARRAY, records) + count * sizeof(IMAGETAG_INFO), "the size is right");
    for (size_t i = 0; i < count; ++i)
        visit(field, slot, array->records[i], bytes);
    field.ReleaseArray(array);
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<char> bytes(data, data + size);
    const std::vector<char> before = bytes;
    const auto length = static_cast<uint32_t>(size);
    CIMAGETAG field;
    int16_t format = 0;
    uint32_t nextOffset = 0;
    uint32_t nextSize = 0;
    uint32_t error = 1;
    const uint8_t result =
        field.CreateField(nullptr, bytes.data(), length, &format, &nextOffset, &nextSize, &error);
    require(bytes == before, "a caller's bytes stay");
    require(result == (error == kTagNoError || error == kTagMoreNeeded), "result and error agree");
    require(error != kTagMoreNeeded || nextSize == 20480, "what is wanted next is told");

    MemorySource source(std::span<const uint8_t>(data, size));
    uint8_t room[64];
    TagData head(source, size, room);
    CountingSink sink;
    IMAGETAG_POSITION position{};
    const uint32_t code = walkHead(position, head, sink);
    size_t valueBytes = 0;
    for (uint16_t slot = 0; slot < kSlots; ++slot) {
        const size_t count = visit(field, slot, valueBytes);
        require(count == sink.counts[slot], "both walks meet the same tags");
    }
    require(valueBytes <= size + (16 << 20), "values take no more than the data and a constant");
    require(code == error, "both walks end alike");
    require(position.hasExifIFD == field.HasExifIFD(), "both walks meet the same pointers");

    (void)field.SearchExifMagicInAPP1(bytes.data(), length, &error);
    (void)field.SetJfifInfo(bytes.data(), length, &nextOffset, &nextSize, &error);
    require(error == kTagNoError || error == kTagMoreNeeded, "there is a frame or not");
    return 0;
}
