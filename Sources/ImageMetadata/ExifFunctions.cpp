// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/ExifFunctions.h"

#include <span>

#include "ImageMetadata/AdobeRGB.h"
#include "ImageMetadata/ExifSegment.h"
#include "ImageMetadata/ExifValues.h"
#include "ImageMetadata/QuickReaders.h"
#include "PlatformKit/Base/Boundary.h"

namespace fi {

bool CheckDate(const char* text, DateTimeRec* out) {
    return guarded([&] { return text != nullptr && readDateText(text, *out); }, false);
}

bool QuerryDateTime(const DateTimeRec* date) {
    return isDate(*date);
}

void ConvWORD_LB(uint16_t* value) {
    *value = __builtin_bswap16(*value);
}

uint32_t ConvDWORD_LB(uint32_t* value) {
    *value = __builtin_bswap32(*value);
    return *value;
}

int16_t ConvOrientation(int16_t& orientation) {
    orientation = turnOfOrientation(orientation);
    return orientation;
}

uint8_t Exif_GetValueFromType(void* out, const IMAGETAG_INFO* info) {
    return info != nullptr ? valueFromType(out, *info) : uint8_t{0};
}

bool ExifCheckAdobeRGB() {
    return guarded([] { return isAdobeRGB(gImageTag); }, false);
}

OSErr ReadExifTagForZebFileManager(CFURLRef url, tCacheInfo* info) {
    return readExifTagInto(url, *info);
}

uint32_t GetSizeOrChangeOffsetIFD(unsigned char* ifd, int32_t base, uint8_t littleEndian, TIFF_EXIFSUB* sub,
                                  uint8_t measure) {
    const ByteOrder order = littleEndian != 0 ? ByteOrder::Little : ByteOrder::Big;
    const uint32_t count = ByteView(ifd, 2, order).u16(0).value_or(0);
    const std::span<unsigned char> directory(ifd, 2 + size_t{count} * 12);
    if (measure == 0) return moveDirectory(directory, order, base);

    // A directory's offset in its file is never negative: large ones come in the shape of an int.
    const auto offset = static_cast<uint32_t>(base);
    const DirectoryExtent extent = measureDirectory(ByteView(directory, order), offset);
    if (sub == nullptr) return extent.span;
    *sub = {nullptr, 0, static_cast<int32_t>(extent.size), 0};
    if (extent.exif) {
        // Wherever the stored offset leads, also to nowhere: the address is only told.
        const uintptr_t fileStart = reinterpret_cast<uintptr_t>(ifd) - offset;
        sub->exifIFD = reinterpret_cast<unsigned char*>(fileStart + extent.exif->offset);
        sub->exifOffset = extent.exif->offset;
        sub->pointerFieldOffset = extent.exif->fieldPosition;
    }
    return extent.span;
}

}  // namespace fi
