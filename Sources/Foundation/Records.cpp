// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/Records.h"

#include "Foundation/RawBitmaps.h"

namespace fi {

PhotoInfo::~PhotoInfo() = default;

OSErr makePATIMG(const tagRAWBITMAP& bitmap, PATIMG& image) {
    constexpr uint32_t kFormats[] = {kPATIMGFormat1Bit, kPATIMGFormatGray, kPATIMGFormatColor};
    if (bitmap.kind < 1 || bitmap.kind > 3) return kParamErr;
    image = PATIMG{bitmap.bits,
                   bitmap.rowBytes,
                   bitmap.width,
                   bitmap.height,
                   bitmap.attribute,
                   bitmap.attribute,
                   kFormats[bitmap.kind - 1],
                   0,
                   0};
    return kNoErr;
}

}  // namespace fi
