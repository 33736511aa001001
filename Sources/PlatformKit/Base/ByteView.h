// SPDX-License-Identifier: Apache-2.0
// The only way bytes of a file are looked at: a bounds-checked, non-owning view with a byte order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

namespace fi {

enum class ByteOrder : uint8_t { Little, Big };

/// A window on bytes that somebody else owns. No accessor ever reads outside of it: what lies (even
/// partly) outside answers nullopt, and a sub-view is cut to what there is.
class ByteView {
public:
    constexpr ByteView() = default;
    constexpr ByteView(const uint8_t* data, size_t size, ByteOrder order = ByteOrder::Little)
        : m_bytes(data, size), m_order(order) {}
    constexpr explicit ByteView(std::span<const uint8_t> bytes, ByteOrder order = ByteOrder::Little)
        : m_bytes(bytes), m_order(order) {}

    [[nodiscard]] constexpr size_t size() const { return m_bytes.size(); }
    [[nodiscard]] constexpr bool empty() const { return m_bytes.empty(); }
    [[nodiscard]] constexpr const uint8_t* data() const { return m_bytes.data(); }
    [[nodiscard]] constexpr std::span<const uint8_t> bytes() const { return m_bytes; }
    [[nodiscard]] constexpr ByteOrder order() const { return m_order; }
    [[nodiscard]] constexpr ByteView withOrder(ByteOrder order) const { return ByteView(m_bytes, order); }

    /// True when `length` bytes lie at `offset`. The subtraction cannot wrap: it follows the comparison.
    [[nodiscard]] constexpr bool contains(uint64_t offset, uint64_t length) const {
        return offset <= m_bytes.size() && length <= m_bytes.size() - offset;
    }

    /// The bytes from `offset`, at most `length` of them, in the same byte order; empty beyond the end.
    [[nodiscard]] constexpr ByteView cut(uint64_t offset, uint64_t length = UINT64_MAX) const {
        if (offset >= m_bytes.size()) return ByteView(nullptr, 0, m_order);
        const size_t start = static_cast<size_t>(offset);
        const size_t rest = m_bytes.size() - start;
        return ByteView(m_bytes.subspan(start, length < rest ? static_cast<size_t>(length) : rest),
                        m_order);
    }

    [[nodiscard]] constexpr std::optional<uint8_t> u8(uint64_t offset) const {
        if (!contains(offset, 1)) return std::nullopt;
        return m_bytes[static_cast<size_t>(offset)];
    }
    [[nodiscard]] constexpr std::optional<uint16_t> u16(uint64_t offset) const {
        return read<uint16_t>(offset);
    }
    [[nodiscard]] constexpr std::optional<uint32_t> u32(uint64_t offset) const {
        return read<uint32_t>(offset);
    }
    [[nodiscard]] constexpr std::optional<uint64_t> u64(uint64_t offset) const {
        return read<uint64_t>(offset);
    }

    [[nodiscard]] bool startsWith(std::string_view text, uint64_t offset = 0) const {
        return contains(offset, text.size()) &&
               (text.empty() || std::memcmp(m_bytes.data() + offset, text.data(), text.size()) == 0);
    }

private:
    template <typename Word>
    [[nodiscard]] constexpr std::optional<Word> read(uint64_t offset) const {
        if (!contains(offset, sizeof(Word))) return std::nullopt;
        const uint8_t* at = m_bytes.data() + offset;
        Word value = 0;
        for (size_t i = 0; i < sizeof(Word); ++i) {
            const size_t shift = 8 * (m_order == ByteOrder::Little ? i : sizeof(Word) - 1 - i);
            value = static_cast<Word>(value | (static_cast<Word>(at[i]) << shift));
        }
        return value;
    }

    std::span<const uint8_t> m_bytes;
    ByteOrder m_order = ByteOrder::Little;
};

}  // namespace fi
