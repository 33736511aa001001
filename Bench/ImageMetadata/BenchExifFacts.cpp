// SPDX-License-Identifier: Apache-2.0
// The Exif facts of 2,000 photos that the library has never seen, the kernel's caches warm: against
// libexif, Exiv2 and the bare system calls.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "FileImporter/ZebFileManager.h"
#include "ImageMetadata/PeerExif.h"
#include "Support/Comparison.h"
#include "Support/ScratchFolder.h"

namespace {

using namespace fi;
using namespace fi::bench;

constexpr double kBoundOfBareCalls = 1.5;

struct Photo : CameraPhoto {
    Ref<const CFString> name;
};

std::vector<Photo> photosIn(const std::string& folder, int count) {
    std::vector<Photo> photos;
    for (CameraPhoto& photo : writeCameraPhotos(folder, count)) {
        auto name = CFString::create(photo.path);
        photos.push_back({std::move(photo), std::move(name)});
    }
    return photos;
}

bool readByLibrary(const Photo& photo, CameraFacts& facts) {
    ExifInformation info{};
    if (ZebFileManager::defaultManager()->readExifTag(photo.name.get(), &info) != kNoErr) return false;
    const DateTimeRec& date = info.date;
    char text[64];
    std::snprintf(text, sizeof text, "%04d:%02d:%02d %02d:%02d:%02d", date.year, date.month, date.day,
                  date.hour, date.minute, date.second);
    std::memcpy(facts.date, text, sizeof facts.date);
    facts.orientation = static_cast<uint32_t>(info.orientation);
    const bool isExchanged = info.orientation >= 5 && info.orientation <= 8;
    facts.width = isExchanged ? info.height : info.width;
    facts.height = isExchanged ? info.width : info.height;
    facts.isSRGB = info.isSRGB != 0;
    return true;
}

/// Whether every reader finds in every photo what was written into it.
template <typename Read>
bool findsEveryFact(const std::vector<Photo>& photos, const char* reader, Read read) {
    for (const Photo& photo : photos) {
        CameraFacts facts;
        if (read(photo, facts) && facts == photo.facts) continue;
        std::fprintf(stderr, "%s: %s, %s %ux%u, orientation %u, sRGB %d\n", reader, photo.path.c_str(),
                     facts.date, facts.width, facts.height, facts.orientation, facts.isSRGB);
        return false;
    }
    return true;
}

bool allFindEveryFact(const std::vector<Photo>& photos) {
    bool agree = findsEveryFact(photos, "library", readByLibrary);
    for (const PeerExif& peer : peersOfExif()) {
        peer.prepare();
        agree &= findsEveryFact(photos, peer.row, [&](const Photo& photo, CameraFacts& facts) {
            return peer.read(photo.path.c_str(), facts);
        });
    }
    return agree;
}

void readAll(const std::vector<Photo>& photos) {
    for (const Photo& photo : photos) {
        ExifInformation info{};
        (void)ZebFileManager::defaultManager()->readExifTag(photo.name.get(), &info);
    }
}

void forgetAll() {
    ZebFileManager::defaultManager()->flushExifCache();
}

bool printRows(const std::vector<Photo>& photos, bool tiny) {
    const auto ours = [&] { readAll(photos); };
    const auto bare = [&] {
        for (const Photo& photo : photos)
            (void)readHeadBarely(photo.path.c_str());
    };
    bool kept =
        printRow({"Exif facts / open and pread", kBoundOfBareCalls, tiny ? 1 : 101, ours, bare, forgetAll});
    for (const PeerExif& peer : peersOfExif()) {
        const auto reference = [&] {
            CameraFacts facts;
            for (const Photo& photo : photos)
                (void)peer.read(photo.path.c_str(), facts);
        };
        kept &= printRow({peer.row, peer.bound, tiny ? 1 : 21, ours, reference, forgetAll});
    }
    return kept;
}

}  // namespace

int main(int argc, char** argv) {
    const bool tiny = sizeFromArguments(argc, argv) == Size::Tiny;
    const ScratchFolder folder;
    const std::vector<Photo> photos = photosIn(folder.path(), tiny ? 24 : 2000);
    if (!allFindEveryFact(photos)) return 1;
    if (peersOfExif().size() < 2) std::puts("rows of libexif or Exiv2 left out: not installed");
    return printRows(photos, tiny) || tiny ? 0 : 1;
}
