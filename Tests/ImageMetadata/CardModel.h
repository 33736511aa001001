// SPDX-License-Identifier: Apache-2.0
// What a card reader has to answer, told from a string of bytes in the slowest and plainest way.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "ImageMetadata/CardProbe.h"

namespace fi::test {

class CardModel {
public:
    CardModel(std::string bytes, uint32_t unit, uint32_t blockSize)
        : m_bytes(std::move(bytes)), m_unit(unit), m_blockSize(blockSize) {}

    [[nodiscard]] CardAnswer nextBlock() {
        const uint64_t wanted = std::min<uint64_t>(size() - m_readPosition, m_blockSize);
        const std::string bytes = readHere(wanted);
        if (bytes.size() != wanted) return {kCardReadFailed};
        m_readPosition += wanted;
        return {kTagNoError, static_cast<uint32_t>(wanted), bytes, m_readPosition < size() ? 1U : 0U};
    }

    [[nodiscard]] CardAnswer stretch(uint32_t offset, uint32_t length) {
        const uint64_t start = offset - offset % m_unit;
        m_place = start;
        const bool readsNothing = length == 0 && start == offset;
        if (start > size() && !readsNothing) return {kCardReadFailed};
        m_place = start + m_readPosition;
        if (offset > size()) return {kCardReadFailed};
        const std::string bytes = m_bytes.substr(offset, length);
        return {kTagNoError, static_cast<uint32_t>(bytes.size()), bytes};
    }

    [[nodiscard]] CardAnswer extend(uint32_t length, int64_t offset) {
        uint64_t wanted = std::min<uint64_t>(size() - m_readPosition, length);
        if (offset >= 0) {
            m_place = static_cast<uint64_t>(offset);
            wanted = m_place > size() ? length : std::min<uint64_t>(size() - m_place, length);
        }
        const std::string bytes = readHere(length);
        const auto got = static_cast<uint32_t>(bytes.size());
        const int64_t next = offset + static_cast<int64_t>(m_readPosition);
        if (bytes.size() != wanted || next < 0) return {kCardReadFailed, got};
        m_place = static_cast<uint64_t>(next);
        return {kTagNoError, got, bytes};
    }

    [[nodiscard]] uint64_t place() const { return m_place; }
    [[nodiscard]] uint64_t readPosition() const { return m_readPosition; }

private:
    [[nodiscard]] uint64_t size() const { return m_bytes.size(); }

    std::string readHere(uint64_t length) {
        const std::string bytes = m_place < size() ? m_bytes.substr(m_place, length) : std::string();
        m_place += bytes.size();
        return bytes;
    }

    std::string m_bytes;
    uint32_t m_unit;
    uint32_t m_blockSize;
    uint64_t m_place = 0;
    uint64_t m_readPosition = 0;
};

}  // namespace fi::test
