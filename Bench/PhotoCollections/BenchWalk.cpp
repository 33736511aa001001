// SPDX-License-Identifier: Apache-2.0
// A card of 10,000 photos in 40 folders, listed by the library and by the bare walk, the kernel's caches
// warm.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "FileImporter/CFileSearchDC.h"
#include "PhotoCollections/BareWalk.h"
#include "Support/Comparison.h"
#include "Support/ScratchFolder.h"

namespace {

using namespace fi;
using namespace fi::bench;

constexpr double kBound = 1.5;
constexpr int kFilesOfAFolder = 250;

void makeCard(const std::string& root, int folders) {
    for (int folder = 0; folder < folders; ++folder) {
        const std::string path = root + "/DCIM/" + std::to_string(100 + folder) + "ABCDE";
        std::filesystem::create_directories(path);
        for (int file = 0; file < kFilesOfAFolder; ++file)
            std::ofstream(path + "/IMG_" + std::to_string(1000 + file) + ".JPG");
    }
}

size_t countPhotos(const std::string& root) {
    CFileSearchDC search;
    if (!search.Open(CFURL::createFromPath(root).get())) return 0;
    search.FileSearch(256);
    return search.GetListNum();
}

}  // namespace

int main(int argc, char** argv) {
    const bool tiny = sizeFromArguments(argc, argv) == Size::Tiny;
    const int folders = tiny ? 2 : 40;
    const ScratchFolder card;
    makeCard(card.path(), folders);

    size_t ours = 0;
    size_t reference = 0;
    const bool kept =
        printRow({"walk of 10,000 files", kBound, tiny ? 1 : 41, [&] { ours = countPhotos(card.path()); },
                  [&] { reference = countPhotosBarely(card.path().c_str()); }});
    const auto expected = static_cast<size_t>(folders) * kFilesOfAFolder;
    if (ours == expected && reference == expected) return kept || tiny ? 0 : 1;
    std::fprintf(stderr, "%zu photos, found %zu, barely %zu\n", expected, ours, reference);
    return 1;
}
