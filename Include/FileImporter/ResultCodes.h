// SPDX-License-Identifier: Apache-2.0
// The 16-bit results that operations return.
#pragma once

#include <cstdint>

#include "PlatformKit/Export.h"

namespace fi {

using OSErr = int16_t;

inline constexpr OSErr kNoErr = 0;
inline constexpr OSErr kGenericErr = -1;             ///< not initialised, unsupported, nothing found
inline constexpr OSErr kNotFoundErr = -43;           ///< no such file or entry
inline constexpr OSErr kFileBusyErr = -47;           ///< a file could not be removed or copied
inline constexpr OSErr kParamErr = -50;              ///< an argument outside its range
inline constexpr OSErr kMemFullErr = -108;           ///< out of memory, or a read that failed
inline constexpr OSErr kFolderErr = -120;            ///< a folder could not be created
inline constexpr OSErr kUnsupportedDepthErr = -206;  ///< an image of a depth that is not handled
inline constexpr OSErr kNoImageBufferErr = -401;     ///< an image buffer could not be made
inline constexpr OSErr kNoOutputErr = -2700;         ///< an output record was not supplied
inline constexpr OSErr kUnreadableImageErr = 1100;   ///< the file exists, its data is not a readable image
inline constexpr OSErr kLookupErr = 1101;  ///< passed on unchanged from an overriding file look-up

/// One plain sentence about a result code, for people; never null. Static text.
FI_EXPORT const char* resultCodeText(OSErr code);

}  // namespace fi
