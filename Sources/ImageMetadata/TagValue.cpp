// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagValue.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "ImageMetadata/TagMemory.h"

namespace fi {

namespace {

constexpr uint32_t kSpareBytesOfText = 2;
constexpr size_t kVersionSize = 4;

constexpr uint16_t kindOf(uint16_t tag) {
    switch (tag) {
        case 29:     // GPSDateStamp
        case 306:    // DateTime
        case 36867:  // DateTimeOriginal
        case 36868:  // DateTimeDigitized
            return kImageTagKindDate;
        case 36864:
            return kImageTagKindExifVersion;
        case 40960:
            return kImageTagKindFlashpixVersion;
        default:
            return kImageTagKindPlain;
    }
}

void interpret(IMAGETAG_INFO& record, uint32_t size) {
    record.kind = kindOf(record.tag);
    if (record.kind == kImageTagKindPlain) return;
    const std::string_view bytes(record.value, size);
    if (record.kind == kImageTagKindDate)
        splitDate(bytes.substr(0, bytes.find('\0')), record.parsed);
    else
        record.parsed[0] = leadingNumber(bytes.substr(0, kVersionSize));
}

}  // namespace

uint32_t makeRecord(const FoundTag& found, IMAGETAG_INFO& record) {
    const uint32_t spare = found.type() == kTagASCII ? kSpareBytesOfText : 0;
    auto* value = static_cast<char*>(allocateTagMemory(size_t{found.size()} + spare, "GetTagData"));
    if (value == nullptr) return kTagNoMemory;
    if (!found.copyTo(value)) {
        std::free(value);
        return kTagBadData;
    }
    if (spare > 0) std::memset(value + found.size(), 0, spare);
    record = IMAGETAG_INFO{found.tag(), found.type(), kImageTagKindPlain, found.count(), value, {}};
    interpret(record, found.size());
    return kTagNoError;
}

void splitDate(std::string_view text, uint16_t (&numbers)[6]) {
    constexpr std::string_view kSeparators = " /:";
    std::fill(std::begin(numbers), std::end(numbers), leadingNumber(text));
    for (uint16_t& number : numbers) {
        number = leadingNumber(text);
        const size_t end = text.find_first_of(kSeparators);
        if (end == std::string_view::npos) return;
        text.remove_prefix(end + 1);
    }
}

uint16_t leadingNumber(std::string_view text) {
    uint32_t number = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9') break;
        number = (number * 10 + static_cast<uint32_t>(digit - '0')) & 0xFFFF;
    }
    return static_cast<uint16_t>(number);
}

}  // namespace fi
