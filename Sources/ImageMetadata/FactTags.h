// SPDX-License-Identifier: Apache-2.0
// How the Exif facts follow from a photo's tags.
#pragma once

#include "FileImporter/CIMAGETAG.h"
#include "FileImporter/ExifInformation.h"

namespace fi {

/// Slots of CIMAGETAG that hold them.
inline constexpr uint16_t kSlotOfIFD0 = 0;
inline constexpr uint16_t kSlotOfExif = 1;

inline constexpr uint16_t kMakerTag = 271;
inline constexpr uint16_t kOrientationTag = 274;
inline constexpr uint16_t kXResolutionTag = 282;
inline constexpr uint16_t kYResolutionTag = 283;
inline constexpr uint16_t kExifVersionTag = 36864;
inline constexpr uint16_t kDateOriginalTag = 36867;
inline constexpr uint16_t kDateDigitizedTag = 36868;
inline constexpr uint16_t kColorSpaceTag = 40961;
inline constexpr uint16_t kPixelXDimensionTag = 40962;
inline constexpr uint16_t kPixelYDimensionTag = 40963;

/// Where tags are looked up.
class FactTags {
public:
    /// The first record of a slot with that tag, or null; BORROWED until the next call. Its value holds
    /// count x unit size bytes in host order.
    [[nodiscard]] virtual const IMAGETAG_INFO* find(uint16_t slot, uint16_t tag) = 0;

protected:
    ~FactTags() = default;
};

/// The facts that tags tell, all else zero: without an Exif version that is everything, without a date that
/// exists the date.
[[nodiscard]] ExifInformation factsOf(FactTags& tags);

/// Exchanges the sides of a photo that lies on one of them, as its orientation says.
void turnUpright(ExifInformation& info);

}  // namespace fi
