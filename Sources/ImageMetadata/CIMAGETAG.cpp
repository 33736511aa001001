// SPDX-License-Identifier: Apache-2.0
// The steps of a parse, one by one; CIMAGETAG_Parsing.cpp runs them, CIMAGETAG_Fields.cpp keeps what they
// find.
#include "FileImporter/CIMAGETAG.h"

#include <cstdlib>
#include <cstring>

#include "ImageMetadata/JfifFrame.h"
#include "ImageMetadata/TagFormat.h"
#include "ImageMetadata/TagMemory.h"
#include "ImageMetadata/TagValue.h"
#include "ImageMetadata/TagWalk.h"

namespace fi {

namespace {

constexpr uint16_t kImageWidth = 256;
constexpr uint16_t kImageLength = 257;

const uint8_t* bytesOf(const char* data) {
    return reinterpret_cast<const uint8_t*>(data);
}

uint8_t succeeded(uint32_t code, uint32_t* error) {
    *error = code;
    return code == kTagNoError ? 1 : 0;
}

bool pushShort(CIMAGETAG& field, uint16_t tag, uint16_t number, uint32_t* error) {
    auto* value = static_cast<char*>(allocateTagMemory(sizeof(number), "GetTagData"));
    if (value == nullptr) return succeeded(kTagNoMemory, error) != 0;
    std::memcpy(value, &number, sizeof(number));
    const IMAGETAG_INFO record{tag, kTagShort, kImageTagKindPlain, 1, value, {}};
    const bool pushed = field.PushChain(&record, 0, error) != 0;
    if (!pushed) std::free(value);
    return pushed;
}

}  // namespace

constinit CIMAGETAG gImageTag;

CIMAGETAG::~CIMAGETAG() {
    CloseField();
}

uint8_t CIMAGETAG::CheckFormat(const char* data, uint32_t size, int16_t* format, uint32_t* error) {
    TagData head(bytesOf(data), size);
    return succeeded(checkFormat(head, *format), error);
}

uint8_t CIMAGETAG::SearchExifMagicInAPP1(const char* data, uint32_t size, uint32_t* error) {
    TagData head(bytesOf(data), size);
    return succeeded(searchExifMagic(head), error);
}

uint8_t CIMAGETAG::SearchFirstIFD(const char* data, uint32_t size, uint32_t* error) {
    TagData head(bytesOf(data), size);
    return succeeded(searchFirstIFD(m_position, head), error);
}

uint8_t CIMAGETAG::CheckIFDSize(const char* ifd, uint32_t remaining, uint32_t* error) {
    TagData directory(bytesOf(ifd), remaining);
    const bool fits = entriesThatFit(directory, 0, m_position.bigEndian != 0).has_value();
    return succeeded(fits ? kTagNoError : kTagMoreNeeded, error);
}

void CIMAGETAG::FixUpEntry(char* entry) {
    const TagEntry fixed = readEntry(bytesOf(entry), m_position.bigEndian != 0);
    std::memcpy(entry, &fixed, sizeof(fixed));
}

uint8_t CIMAGETAG::GetTagData(const char* entry, IMAGETAG_INFO* record, const char* data, uint32_t length,
                              uint32_t* error) {
    TagData inHand(bytesOf(data), length, m_position.bufferStart);
    const TagPlace place{m_position, inHand, m_reader};
    const FoundTag found(readEntry(bytesOf(entry), false), place);
    *record = IMAGETAG_INFO{found.tag(), found.type(), kImageTagKindPlain, found.count(), nullptr, {}};
    uint32_t code = found.check();
    if (code == kTagNoError) code = makeRecord(found, *record);
    return succeeded(code, error);
}

uint8_t CIMAGETAG::SetJfifInfo(char* data, uint32_t size, uint32_t* nextOffset, uint32_t* nextSize,
                               uint32_t* error) {
    const auto frame = findJfifFrame({reinterpret_cast<uint8_t*>(data), size});
    if (!frame) {
        *nextOffset = 0;
        *nextSize = kStretchWanted;
        *error = kTagMoreNeeded;
        return 1;
    }
    const bool pushed = pushShort(*this, kImageWidth, frame->width, error) &&
                        pushShort(*this, kImageLength, frame->height, error);
    return pushed ? 1 : 0;
}

}  // namespace fi
