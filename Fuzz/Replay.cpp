// SPDX-License-Identifier: Apache-2.0
// Runs a fuzzer over files instead of inventions: every file of the folders that the command line names.
// A folder "collection:NAME" is that folder of the collection of photos, passed over when it is not there.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Support/Corpus.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<std::string> filesIn(const std::string& folder) {
    constexpr std::string_view kCollection = "collection:";
    if (folder.rfind(kCollection, 0) == 0) return fi::test::corpusFiles(folder.substr(kCollection.size()));
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (entry.is_regular_file()) files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    // A copy without slack, so that a sanitizer sees the first byte read behind the end.
    const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
    (void)LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

}  // namespace

int main(int argc, char** argv) {
    size_t total = 0;
    for (int i = 1; i < argc; ++i) {
        const auto files = filesIn(argv[i]);
        std::printf("%s: %zu files\n", argv[i], files.size());
        for (const std::string& path : files) {
            replay(path);
        }
        total += files.size();
    }
    if (total == 0) std::fprintf(stderr, "there was nothing to replay\n");
    return total > 0 ? 0 : 1;
}
