// SPDX-License-Identifier: Apache-2.0
// Exif facts that the library remembers: against asking the system whether the file is unchanged, and with
// many other files remembered beside them.
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "FileImporter/ZebFileManager.h"
#include "Support/Comparison.h"
#include "Support/ScratchFolder.h"

namespace {

using namespace fi;
using namespace fi::bench;

constexpr double kBoundOfLstat = 2.5;
constexpr double kBoundOfMany = 1.3;
constexpr size_t kFilesOfAFolder = 1000;

struct File {
    std::string path;
    Ref<const CFString> name;
};

/// Empty files: what is remembered of them is made up.
std::vector<File> writeFiles(const std::string& folder, size_t count) {
    std::vector<File> files;
    for (size_t number = 0; number < count; ++number) {
        const std::string place = folder + "/" + std::to_string(100 + number / kFilesOfAFolder) + "ABCDE";
        if (number % kFilesOfAFolder == 0) std::filesystem::create_directories(place);
        const std::string path = place + "/IMG_" + std::to_string(1000 + number % kFilesOfAFolder) + ".JPG";
        std::ofstream{path};
        files.push_back({path, CFString::create(path)});
    }
    return files;
}

ExifInformation factsOf(const File& file, size_t number) {
    ExifInformation info{};
    info.width = static_cast<uint16_t>(number);
    struct stat status {};
    if (lstat(file.path.c_str(), &status) == 0) {
        info.modificationTime =
            static_cast<double>(status.st_mtim.tv_sec) + static_cast<double>(status.st_mtim.tv_nsec) * 1e-9;
    }
    return info;
}

class Remembered {
public:
    Remembered(const std::string& folder, size_t count) : m_files(writeFiles(folder, count)) {
        for (size_t number = 0; number < count; ++number)
            m_facts.push_back(factsOf(m_files[number], number));
    }

    /// The library remembers every `step`th file, and no other.
    void rememberEvery(size_t step) const {
        ZebFileManager* manager = ZebFileManager::defaultManager();
        manager->flushExifCache();
        for (size_t number = 0; number < m_files.size(); number += step)
            manager->setExifToCahce(m_files[number].name.get(), &m_facts[number]);
    }

    /// Returns how many of every `step`th file were remembered rightly.
    [[nodiscard]] size_t askEvery(size_t step) const {
        size_t right = 0;
        for (size_t number = 0; number < m_files.size(); number += step) {
            ExifInformation info{};
            const OSErr code =
                ZebFileManager::defaultManager()->readExifTag(m_files[number].name.get(), &info);
            if (code == kNoErr && info.width == m_facts[number].width) ++right;
        }
        return right;
    }

    void lstatEvery(size_t step) const {
        struct stat status {};
        for (size_t number = 0; number < m_files.size(); number += step)
            (void)lstat(m_files[number].path.c_str(), &status);
    }

private:
    std::vector<File> m_files;
    std::vector<ExifInformation> m_facts;
};

}  // namespace

int main(int argc, char** argv) {
    const bool tiny = sizeFromArguments(argc, argv) == Size::Tiny;
    const size_t asked = tiny ? 10 : 1000;
    const size_t step = 30;  // the files that are asked for stand among thirty times as many
    const ScratchFolder folder;
    const Remembered files(folder.path(), asked * step);

    size_t right = 0;
    const auto ask = [&] { right = files.askEvery(step); };
    const auto rememberAsked = [&] { files.rememberEvery(step); };
    const auto rememberAll = [&] { files.rememberEvery(1); };
    rememberAsked();
    bool kept = printRow(
        {"facts asked again / lstat", kBoundOfLstat, tiny ? 1 : 201, ask, [&] { files.lstatEvery(step); }});
    const auto warmed = [&](const auto& remember) {
        return [&] {
            remember();
            (void)files.askEvery(step);
        };
    };
    kept &= printRow({"30,000 cached / 1,000 cached", kBoundOfMany, tiny ? 1 : 41, ask, ask,
                      warmed(rememberAll), warmed(rememberAsked)});
    if (right == asked) return kept || tiny ? 0 : 1;
    std::fprintf(stderr, "%zu files, %zu remembered rightly\n", asked, right);
    return 1;
}
