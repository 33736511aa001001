// SPDX-License-Identifier: Apache-2.0
#include "SampleCard.h"

#include <fmt/format.h>

#include <string_view>

namespace fi {

namespace {

struct Folder {
    std::string_view path;
    std::string_view prefix;
    uint32_t count;
};

// In the order of a search.
constexpr Folder kFolders[] = {
    {"DCIM/100FIMPA", "FIMP", 120},
    {"DCIM/101FIMPA", "FIMP", 120},
    {"DCIM/102_ABCD", "_ABC", 60},
    {"Holiday", "K\u00fcste \u6771\u4eac ", 12},
};

struct Exception {
    uint32_t frame;
    SampleKind kind;
};

constexpr Exception kExceptions[] = {
    {57, SampleKind::CutJpeg},
    {133, SampleKind::NoPicture},
    {199, SampleKind::Empty},
    {253, SampleKind::Unreadable},
};

constexpr uint32_t kEveryTiff = 25;
constexpr uint32_t kHiddenFrame = 900;  // of photos that must not be found

// A day in May from half past four in the morning, a photo every 217 seconds.
constexpr uint32_t kFirstSecond = 4 * 3600 + 30 * 60;
constexpr uint32_t kStep = 217;

SampleKind kindOf(uint32_t frame) {
    for (const Exception& exception : kExceptions) {
        if (exception.frame == frame) return exception.kind;
    }
    return frame % kEveryTiff == 0 ? SampleKind::Tiff : SampleKind::Jpeg;
}

DateTimeRec dateOf(uint32_t second) {
    const auto field = [](uint32_t value) { return static_cast<int16_t>(value); };
    return {2004, 5, 1, field(second / 3600), field(second / 60 % 60), field(second % 60), 6};
}

SampleFile photo(std::string path, SampleKind kind, uint32_t frame) {
    // Hidden photos have the light of noon.
    const uint32_t second = frame < kHiddenFrame ? kFirstSecond + (frame - 1) * kStep : 12 * 3600;
    SampleFile file;
    file.path = std::move(path);
    file.kind = kind;
    file.picture = {frame, second / 3600.0, static_cast<uint16_t>(1 + (frame - 1) % 8)};
    file.date = dateOf(second);
    return file;
}

SampleFile other(std::string path, SampleKind kind) {
    SampleFile file = photo(std::move(path), kind, kHiddenFrame);
    return file;
}

void addFound(std::vector<SampleFile>& card) {
    uint32_t frame = 0;
    for (const Folder& folder : kFolders) {
        for (uint32_t number = 1; number <= folder.count; ++number) {
            const SampleKind kind = kindOf(++frame);
            const char* const extension = kind == SampleKind::Tiff ? "TIF" : "JPG";
            card.push_back(photo(
                fmt::format("{}/{}{:04}.{}", folder.path, folder.prefix, number, extension), kind, frame));
            card.back().isListed = true;
        }
    }
}

/// Photos in places that are passed over.
void addHidden(std::vector<SampleFile>& card) {
    uint32_t frame = kHiddenFrame;
    for (const char* path :
         {".Trashes/501/FIMP0901.JPG", ".Trash-1000/files/FIMP0902.JPG", "RESOURCE.FRK/FIMP0903.JPG",
          "Trash/FIMP0904.JPG", "DCIM/100FIMPA/FIMP0905.jpeg", "DCIM/100FIMPA/MVI_0906.THM"}) {
        card.push_back(photo(path, SampleKind::Jpeg, ++frame));
    }
    card.push_back(other(".Trash-1000/info", SampleKind::Folder));
    card.push_back(other("DCIM/100FIMPA/._FIMP0001.JPG", SampleKind::Companion));
    card.push_back(other("DCIM/102_ABCD/_ABC9999.JPG", SampleKind::DeadLink));
}

void addJunk(std::vector<SampleFile>& card) {
    for (const char* path : {"DCIM/100FIMPA/MVI_0906.AVI", "DCIM/101FIMPA/SND_0121.WAV", "DCIM/Thumbs.db",
                             "DCIM/AVINDEX.BDM"}) {
        card.push_back(other(path, SampleKind::Junk));
    }
    card.push_back(other("DCIM/103FIMPA", SampleKind::Folder));
    card.push_back(other("MISC/AUTPRINT.MRK", SampleKind::PrintOrder));
}

}  // namespace

std::vector<SampleFile> sampleCard() {
    std::vector<SampleFile> card;
    addFound(card);
    addHidden(card);
    addJunk(card);
    return card;
}

}  // namespace fi
