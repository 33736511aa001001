// SPDX-License-Identifier: Apache-2.0
// Where a codec gets its bytes: a file that is read piece by piece (never mapped), or memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

namespace fi {

/// Random access to the bytes of one photo. One thread at a time.
class ByteSource {
public:
    virtual ~ByteSource() = default;

    /// Bytes in all, as known when the source was opened.
    [[nodiscard]] virtual uint64_t size() const = 0;

    /// Reads up to `out.size()` bytes from `offset`. Returns how many came: fewer only at the end or
    /// when reading failed (a pulled card), which a codec treats as a cut file.
    [[nodiscard]] virtual size_t read(uint64_t offset, std::span<uint8_t> out) = 0;

    /// True once a read met an error rather than the end: what looks like a cut file may be whole.
    [[nodiscard]] virtual bool failed() const { return false; }

protected:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
};

/// Bytes that somebody else keeps alive.
class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::span<const uint8_t> bytes) : m_bytes(bytes) {}

    [[nodiscard]] uint64_t size() const override { return m_bytes.size(); }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override {
        if (offset >= m_bytes.size()) return 0;
        const size_t start = static_cast<size_t>(offset);
        const size_t count = std::min(out.size(), m_bytes.size() - start);
        if (count > 0) std::memcpy(out.data(), m_bytes.data() + start, count);
        return count;
    }

private:
    std::span<const uint8_t> m_bytes;
};

}  // namespace fi
