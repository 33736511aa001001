// SPDX-License-Identifier: Apache-2.0
// What stands on the made-up card: photos of all kinds, and everything that is not to be found.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "PlatformKit/DateTime.h"
#include "TestPictures.h"

namespace fi {

enum class SampleKind : uint8_t {
    Jpeg,
    Tiff,
    CutJpeg,     ///< ends in the middle of the picture
    NoPicture,   ///< text under a photo's name
    Empty,       ///< no bytes at all
    Unreadable,  ///< a photo that nobody but the superuser may read
    Companion,   ///< what some computers leave beside a file, under a photo's name
    DeadLink,    ///< a link to nothing
    PrintOrder,
    Junk,
    Folder,
};

struct SampleFile {
    std::string path;  ///< from the card's root
    SampleKind kind = SampleKind::Junk;
    TestPicture picture;
    DateTimeRec date{};
    bool isListed = false;  ///< a search finds it
};

/// Everything on the card. What a search finds comes in its order, the frames numbered from 1.
[[nodiscard]] std::vector<SampleFile> sampleCard();

/// True when a listed photo of this kind can be shown in full.
[[nodiscard]] constexpr bool isWholePicture(SampleKind kind) {
    return kind == SampleKind::Jpeg || kind == SampleKind::Tiff;
}

}  // namespace fi
