// SPDX-License-Identifier: Apache-2.0
// The first two bytes say how much of the others is a file's head. Its parse goes on by hand and with a
// rented reader: both end soon, and no byte of the file changes.
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Contract.h"
#include "FileImporter/CIMAGETAG.h"

using namespace fi;
using fi::fuzz::require;

namespace {

/// IFD0 again, IFD1, and IFD1 again; whoever asks more often never ends.
constexpr int kMostRounds = 3;

/// One file for all inputs, removed at the end.
class ScratchFile {
public:
    ScratchFile() : m_path((std::filesystem::temp_directory_path() / "fuzz-tags-XXXXXX").string()) {
        m_descriptor = mkstemp(m_path.data());
        require(m_descriptor >= 0, "a scratch file can be made");
    }
    ~ScratchFile() {
        close(m_descriptor);
        unlink(m_path.c_str());
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    Ref<const CFURL> hold(const std::vector<char>& bytes) {
        // Cut afterwards: a file that is emptied first waits for the disk when it is closed.
        const auto size = static_cast<ssize_t>(bytes.size());
        const bool written = pwrite(m_descriptor, bytes.data(), bytes.size(), 0) == size &&
                             ftruncate(m_descriptor, size) == 0;
        require(written, "the scratch file can be written");
        return CFURL::createFromPath(m_path);
    }
    [[nodiscard]] std::vector<char> contents() const {
        std::ifstream in(m_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

private:
    std::string m_path;
    int m_descriptor;
};

struct Answer {
    int16_t format = 0;
    uint32_t nextOffset = 0;
    uint32_t nextSize = 0;
    uint32_t error = 1;
};

void goOnByHand(const std::vector<char>& file, const std::vector<char>& head) {
    CIMAGETAG field;
    Answer now;
    (void)field.CreateField(nullptr, head.data(), static_cast<uint32_t>(head.size()), &now.format,
                            &now.nextOffset, &now.nextSize, &now.error);
    int rounds = 0;
    uint32_t asked = UINT32_MAX;
    while (now.error == kTagMoreNeeded && now.nextOffset != asked && now.nextOffset < file.size()) {
        require(++rounds <= kMostRounds, "going on by hand ends");
        asked = now.nextOffset;
        const size_t length = std::min<size_t>(now.nextSize, file.size() - asked);
        const std::vector<char> more(file.begin() + asked,
                                     file.begin() + asked + static_cast<ptrdiff_t>(length));
        (void)field.PutExtraField(more.data(), static_cast<uint32_t>(length), asked, &now.nextOffset,
                                  &now.nextSize, &now.error);
    }
}

void goOnWithReader(const std::vector<char>& head, CFURLRef url, size_t fileSize) {
    CMEMCARDFILE reader;
    Answer now;
    require(reader.OpenFile(url, &now.error, nullptr) == 1, "the scratch file can be opened");
    CIMAGETAG field;
    field.RentMemCard(&reader);
    const uint8_t result = field.CreateField(nullptr, head.data(), static_cast<uint32_t>(head.size()),
                                             &now.format, &now.nextOffset, &now.nextSize, &now.error);
    const bool isPlainJfif = now.format == kImageTagFormatJFIF && now.nextOffset == 0;
    require(result == 0 || now.error == kTagNoError || isPlainJfif, "a reader leaves nothing to ask for");
    uint32_t size = 0;
    require(reader.GetMaxSizeofDataBlock(&size, &now.error) == 1 && size == fileSize,
            "a rented reader stays open");
    reader.CloseFile();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    static ScratchFile scratch;
    const std::vector<char> file(data + 2, data + size);
    const size_t headLength = std::min(data[0] + size_t{256} * data[1], file.size());
    const std::vector<char> head(file.begin(), file.begin() + static_cast<ptrdiff_t>(headLength));
    goOnByHand(file, head);
    const auto url = scratch.hold(file);
    goOnWithReader(head, url.get(), file.size());
    CIMAGETAG field;
    Answer whole;
    (void)field.CreateField(url.get(), nullptr, 0, &whole.format, &whole.nextOffset, &whole.nextSize,
                            &whole.error);
    require(scratch.contents() == file, "the file's bytes stay");
    return 0;
}
