// SPDX-License-Identifier: Apache-2.0
// A card reader whose inside can be looked at and changed, and whose answers come in one piece.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "FileImporter/CMEMCARDFILE.h"

namespace fi::test {

/// What a read answers; `got` and `bytes` stay as they are when there are none.
struct CardAnswer {
    uint32_t code = kTagNoError;
    uint32_t got = 0;
    std::string bytes = {};
    uint32_t more = 0;

    friend bool operator==(const CardAnswer&, const CardAnswer&) = default;
};

/// Its result does not fit its error code: no code of the reader's.
inline constexpr uint32_t kContradiction = 999;

class CardProbe : public CMEMCARDFILE {
public:
    using CMEMCARDFILE::m_alignmentUnit;
    using CMEMCARDFILE::m_block;
    using CMEMCARDFILE::m_blockSize;
    using CMEMCARDFILE::m_bytesInBlock;
    using CMEMCARDFILE::m_descriptor;
    using CMEMCARDFILE::m_info;
    using CMEMCARDFILE::m_readPosition;

    CardProbe() = default;
    ~CardProbe() override { CloseFile(); }

    [[nodiscard]] uint32_t open(CFURLRef url) {
        uint32_t error = 4711;
        return codeOf(OpenFile(url, &error, nullptr), error);
    }

    [[nodiscard]] CardAnswer nextBlock() {
        CardAnswer answer;
        uint32_t error = 4711;
        std::string room(m_blockSize, '?');
        answer.code = codeOf(GetDataBlock(room.data(), &answer.got, &answer.more, &error), error);
        answer.bytes = room.substr(0, answer.got);
        return answer;
    }

    /// The destination has `room` bytes at most, for a sanitizer to see one too many.
    [[nodiscard]] CardAnswer stretch(uint32_t offset, uint32_t length, uint32_t room = 1U << 16) {
        CardAnswer answer;
        uint32_t error = 4711;
        std::string bytes(std::min(room, length), '?');
        answer.code =
            codeOf(GetDataBlockSpecification(bytes.data(), offset, length, &answer.got, &error), error);
        answer.bytes = bytes.substr(0, answer.got);
        return answer;
    }

    [[nodiscard]] CardAnswer extend(uint32_t length, int64_t offset) {
        CardAnswer answer;
        uint32_t error = 4711;
        std::string bytes(length, '?');
        answer.code = codeOf(ReadImageExtend(bytes.data(), length, offset, &answer.got, &error), error);
        if (answer.code == kTagNoError) answer.bytes = bytes.substr(0, answer.got);
        return answer;
    }

    /// Where the file stands.
    [[nodiscard]] int64_t place() const { return lseek(m_descriptor, 0, SEEK_CUR); }

private:
    static uint32_t codeOf(uint8_t result, const uint32_t& error) {
        return result == (error == kTagNoError ? 1 : 0) ? error : kContradiction;
    }
};

/// Bytes of which no two stretches are the same.
inline std::string patternedBytes(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

}  // namespace fi::test
