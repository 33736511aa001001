// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/FactTags.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "ImageMetadata/ExifValues.h"
#include "ImageMetadata/TagTypes.h"

namespace fi {

namespace {

/// Decodes no more of an array than fits into `room` bytes, which hold one value of any type at least.
uint8_t decode(uint8_t* out, size_t room, const IMAGETAG_INFO& info) {
    IMAGETAG_INFO cut = info;
    const auto most = static_cast<int32_t>(room / std::max(unitSizeOfType(info.type), 1U));
    cut.count = std::min(info.count, most);
    return valueFromType(out, cut);
}

/// A tag's first value as a number; 0 without it. Wide enough for every type: sizes may be LONG.
uint32_t numberOf(FactTags& tags, uint16_t tag) {
    uint8_t area[sizeof(uint64_t)] = {};
    if (const IMAGETAG_INFO* info = tags.find(kSlotOfExif, tag)) decode(area, sizeof area, *info);
    uint32_t number = 0;
    std::memcpy(&number, area, sizeof number);
    return number;
}

bool readDate(FactTags& tags, uint16_t tag, DateTimeRec& date) {
    const IMAGETAG_INFO* info = tags.find(kSlotOfExif, tag);
    return info != nullptr && readDateText(textOfTag(*info), date);
}

/// A text is never copied: its unit is told as 0.
void readMaker(FactTags& tags, ExifInformation& facts) {
    const IMAGETAG_INFO* info = tags.find(kSlotOfIFD0, kMakerTag);
    if (info == nullptr || valueFromType(nullptr, *info) == 0) return;
    uint8_t area[sizeof facts.maker + sizeof(uint64_t)] = {};
    decode(area, sizeof area, *info);
    std::memcpy(facts.maker, area, sizeof facts.maker - 1);
}

}  // namespace

ExifInformation factsOf(FactTags& tags) {
    ExifInformation facts{};
    if (tags.find(kSlotOfExif, kExifVersionTag) == nullptr) return facts;
    if (!readDate(tags, kDateOriginalTag, facts.date)) (void)readDate(tags, kDateDigitizedTag, facts.date);
    if (const IMAGETAG_INFO* info = tags.find(kSlotOfIFD0, kOrientationTag))
        facts.orientation = firstShortOfTag(*info);
    facts.width = static_cast<uint16_t>(numberOf(tags, kPixelXDimensionTag));
    facts.height = static_cast<uint16_t>(numberOf(tags, kPixelYDimensionTag));
    facts.xResolution = static_cast<float>(numberOf(tags, kXResolutionTag));
    facts.yResolution = static_cast<float>(numberOf(tags, kYResolutionTag));
    readMaker(tags, facts);
    facts.isSRGB = static_cast<uint16_t>(numberOf(tags, kColorSpaceTag)) == 1 ? 1 : 0;
    return facts;
}

void turnUpright(ExifInformation& info) {
    if (info.orientation >= 5 && info.orientation <= 8) std::swap(info.width, info.height);
}

}  // namespace fi
