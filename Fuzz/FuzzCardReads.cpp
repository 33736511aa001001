// SPDX-License-Identifier: Apache-2.0
// Any reads in any order: a card's file answers like the plain model of one. The input holds the size of
// the file (2 bytes), the alignment unit (2), the size of blocks (2), then reads of 9 bytes each.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "Contract.h"
#include "ImageMetadata/CardModel.h"
#include "ImageMetadata/CardProbe.h"
#include "PlatformKit/Base/ByteView.h"
#include "PlatformKit/URL.h"

using namespace fi;
using namespace fi::test;
using fi::fuzz::require;

namespace {

/// The one file of this process, gone at its end.
struct CardFile {
    CardFile() : path(std::filesystem::temp_directory_path() / ("fi-card-" + std::to_string(getpid()))) {}
    ~CardFile() { std::filesystem::remove(path); }
    std::filesystem::path path;
};

void answerOnce(CardProbe& card, CardModel& model, uint8_t kind, uint32_t offset, uint32_t length) {
    if ((kind & 0x80) == 0) offset %= 1 << 13;  // most reads near the file
    switch (kind % 4) {
        case 0:
            return require(card.nextBlock() == model.nextBlock(), "the next block");
        case 1:
            return require(card.stretch(offset, length) == model.stretch(offset, length),
                           "a widened stretch");
        default:
            break;
    }
    const int64_t place = kind % 4 == 2 ? int64_t{offset} : -int64_t{offset} - 1;
    length %= 1 << 13;
    require(card.extend(length, place) == model.extend(length, place), "a stretch as it is");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const CardFile file;
    const ByteView input(data, size);
    const std::string bytes = patternedBytes(input.u16(0).value_or(0) % 4096);
    std::filesystem::remove(file.path);  // writing over it may wait for the disk
    std::ofstream(file.path, std::ios::binary) << bytes;

    CardProbe card;
    require(card.open(CFURL::createFromPath(file.path.string()).get()) == kTagNoError, "a file opens");
    require(card.m_blockSize == bytes.size(), "a block is as large as the file");
    card.m_alignmentUnit = std::max<uint32_t>(1, input.u16(2).value_or(0));
    card.m_blockSize = std::min<uint32_t>(card.m_blockSize, input.u16(4).value_or(0));
    CardModel model(bytes, card.m_alignmentUnit, card.m_blockSize);
    for (size_t at = 6; input.contains(at, 9); at += 9) {
        answerOnce(card, model, *input.u8(at), *input.u32(at + 1), *input.u32(at + 5));
        require(static_cast<uint64_t>(card.place()) == model.place(), "where the file stands");
        require(card.m_readPosition == model.readPosition(), "only blocks move the read position");
    }
    return 0;
}
