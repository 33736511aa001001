// SPDX-License-Identifier: Apache-2.0
// Paths added one by one: four times as many must not cost sixteen times as much.
#include <cstdio>
#include <string>
#include <vector>

#include "FileImporter/FileSearchDC.h"
#include "Support/Comparison.h"

namespace {

using namespace fi;
using namespace fi::bench;

constexpr double kBound = 6;

/// Paths of which every fourth has a letter with a mark, which a comparison has to take apart.
std::vector<Ref<const CFString>> somePaths(size_t count) {
    std::vector<Ref<const CFString>> paths;
    for (size_t i = 0; i < count; ++i) {
        const char* folder = i % 4 == 0 ? "/Photos/\xC3\x89t\xC3\xA9/" : "/Photos/Summer/";
        paths.push_back(CFString::create(folder + std::to_string(i) + ".jpg"));
    }
    return paths;
}

size_t add(const std::vector<Ref<const CFString>>& paths) {
    const auto search = make<FileSearchDC>();
    for (const auto& path : paths)
        search->addFileFromPath(path.get());
    return search->getFileNum();
}

}  // namespace

int main(int argc, char** argv) {
    const bool tiny = sizeFromArguments(argc, argv) == Size::Tiny;
    const auto few = somePaths(tiny ? 80 : 8'000);
    const auto many = somePaths(tiny ? 320 : 32'000);
    size_t ours = 0;
    size_t reference = 0;
    const bool kept = printRow({"adding 32,000 / 8,000", kBound, tiny ? 1 : 21, [&] { ours = add(many); },
                                [&] { reference = add(few); }});
    if (ours == many.size() && reference == few.size()) return kept || tiny ? 0 : 1;
    std::fprintf(stderr, "added %zu of %zu and %zu of %zu\n", ours, many.size(), reference, few.size());
    return 1;
}
