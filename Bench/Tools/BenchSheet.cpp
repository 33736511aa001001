// SPDX-License-Identifier: Apache-2.0
// A contact sheet of many photos, made by the tool as a user runs it, against libjpeg-turbo decoding the
// same photos from memory at the smallest scale that is not below the sheet's pictures.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Support/Comparison.h"
#include "Support/NoisePhotos.h"
#include "Support/PeerJpeg.h"
#include "Support/ScratchFolder.h"

namespace {

namespace fs = std::filesystem;

constexpr uint32_t kDifferentPhotos = 5;
constexpr uint32_t kShorterSideOnSheet = 120;  // of a 4:3 picture in its cell
constexpr int kRounds = 3;
constexpr double kProcessorBound = 1.15;
constexpr double kMemoryBound = 150;

struct Work {
    uint32_t photos;
    uint32_t width;
    uint32_t height;
};

void writeCard(const std::string& folder, const std::vector<std::vector<uint8_t>>& photos, uint32_t count) {
    fs::create_directories(folder);
    for (uint32_t i = 0; i < count; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "/IMG_%04u.JPG", i + 1);
        const auto& photo = photos[i % photos.size()];
        std::ofstream(folder + name, std::ios::binary)
            .write(reinterpret_cast<const char*>(photo.data()), static_cast<std::streamsize>(photo.size()));
    }
}

/// Runs the tool and returns the most memory that it took, in megabytes.
double makeSheet(const std::string& folder) {
    const std::string card = folder + "/DCIM";
    const std::string sheet = folder + "/sheet.jpg";
    const pid_t child = fork();
    if (child == 0) {
        execl(FI_TOOL, FI_TOOL, "sheet", "-q", card.c_str(), "-o", sheet.c_str(), nullptr);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "the tool ended with status %d\n", status);
        std::exit(1);
    }
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace fi::bench;
    const bool tiny = sizeFromArguments(argc, argv) == Size::Tiny;
    const Work work = tiny ? Work{4, 320, 240} : Work{200, 4000, 3000};
    const ScratchFolder folder;
    std::vector<std::vector<uint8_t>> photos;
    for (uint32_t seed = 1; seed <= kDifferentPhotos; ++seed)
        photos.push_back(noiseJpeg(work.width, work.height, seed));
    writeCard(folder.path() + "/DCIM/100BENCH", photos, work.photos);

    double megabytes = 0;
    const std::string name = "sheet of " + std::to_string(work.photos) + " photos";
    const bool fast = printRow({name, kProcessorBound, tiny ? 1 : kRounds,
                                [&] { megabytes = std::max(megabytes, makeSheet(folder.path())); },
                                [&] {
                                    for (uint32_t i = 0; i < work.photos; ++i)
                                        decodePeerJpeg(photos[i % photos.size()], kShorterSideOnSheet);
                                }});
    const bool small = printMemoryRow(name + ", memory", megabytes, kMemoryBound);
    return (fast && small) || tiny ? 0 : 1;
}
