// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagFormat.h"

#include <cstring>
#include <optional>

namespace fi {

namespace {

constexpr uint64_t kFewestBytes = 12;
constexpr uint64_t kFirstMarker = 2;
constexpr uint64_t kMarkerAndLength = 4;
constexpr uint64_t kIdentifierSize = 4;
constexpr uint8_t kAPP0 = 0xE0;
constexpr uint8_t kAPP1 = 0xE1;

bool startsAsJpeg(const uint8_t* head) {
    return head[0] == 0xFF && head[1] == 0xD8;
}

/// The first marker with one of two codes. It is looked for at every byte, inside other segments too.
std::optional<uint64_t> findMarker(TagData& data, uint8_t code, uint8_t otherCode) {
    for (uint64_t offset = kFirstMarker;; ++offset) {
        const uint8_t* pair = data.at(offset, 2);
        if (pair == nullptr) return std::nullopt;
        if (pair[0] == 0xFF && (pair[1] == code || pair[1] == otherCode)) return offset;
    }
}

bool identifierIs(TagData& data, uint64_t marker, const char* identifier) {
    const uint8_t* bytes = data.at(marker + kMarkerAndLength, kIdentifierSize);
    return bytes != nullptr && std::memcmp(bytes, identifier, kIdentifierSize) == 0;
}

}  // namespace

uint32_t checkFormat(TagData& data, int16_t& format) {
    const uint8_t* head = data.at(0, kFewestBytes);
    if (head == nullptr) return kTagNotRecognised;
    if (head[0] == 'M' || head[0] == 'I') {
        if (head[1] != head[0]) return kTagNotAnImage;
        format = kImageTagFormatTIFF;
        return kTagNoError;
    }
    if (!startsAsJpeg(head)) return kTagNotAnImage;
    const auto marker = findMarker(data, kAPP0, kAPP1);
    if (!marker || identifierIs(data, *marker, "JFIF")) {
        format = kImageTagFormatJFIF;
        return kTagNoError;
    }
    if (!identifierIs(data, *marker, "Exif")) return kTagNotRecognised;
    format = kImageTagFormatExif;
    return kTagNoError;
}

uint32_t searchExifMagic(TagData& data) {
    const uint8_t* head = data.at(0, kFewestBytes);
    if (head == nullptr) return kTagNotRecognised;
    if (!startsAsJpeg(head)) return kTagNotAnImage;
    const auto marker = findMarker(data, kAPP1, kAPP1);
    if (!marker) return kTagMoreNeeded;
    return identifierIs(data, *marker, "Exif") ? kTagNoError : kTagNotRecognised;
}

}  // namespace fi
