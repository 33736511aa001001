// SPDX-License-Identifier: Apache-2.0
#include "Support/TiffBlock.h"

#include <algorithm>

namespace fi::test {

namespace {

enum Type : uint16_t { kAscii = 2, kShort = 3, kLong = 4, kRational = 5 };

}  // namespace

TiffDirectory& TiffDirectory::text(uint16_t tag, std::string_view value) {
    std::vector<uint8_t> characters(value.begin(), value.end());
    characters.push_back(0);
    return bytes(tag, kAscii, std::move(characters));
}

TiffDirectory& TiffDirectory::shorts(uint16_t tag, const std::vector<uint16_t>& values) {
    const auto count = static_cast<uint32_t>(values.size());
    m_entries.push_back({tag, kShort, 2, {values.begin(), values.end()}, {}, {}, count});
    return *this;
}

TiffDirectory& TiffDirectory::longs(uint16_t tag, const std::vector<uint32_t>& values) {
    m_entries.push_back({tag, kLong, 4, values, {}, {}, static_cast<uint32_t>(values.size())});
    return *this;
}

TiffDirectory& TiffDirectory::fractions(uint16_t tag, const std::vector<Fraction>& values) {
    std::vector<uint32_t> numbers;
    for (const auto& [numerator, denominator] : values) {
        numbers.push_back(numerator);
        numbers.push_back(denominator);
    }
    m_entries.push_back(
        {tag, kRational, 4, std::move(numbers), {}, {}, static_cast<uint32_t>(values.size())});
    return *this;
}

TiffDirectory& TiffDirectory::bytes(uint16_t tag, uint16_t type, std::vector<uint8_t> values) {
    const auto count = static_cast<uint32_t>(values.size());
    m_entries.push_back({tag, type, 1, {values.begin(), values.end()}, {}, {}, count});
    return *this;
}

TiffDirectory& TiffDirectory::block(uint16_t tag, std::vector<uint8_t> bytes) {
    m_entries.push_back({tag, kLong, 4, {0}, std::move(bytes), {}, 1});
    return *this;
}

TiffDirectory& TiffDirectory::directory(uint16_t tag, TiffDirectory inner) {
    m_entries.push_back({tag, kLong, 4, {0}, {}, {std::move(inner)}, 1});
    return *this;
}

class TiffBlockWriter {
public:
    explicit TiffBlockWriter(ByteOrder order) : m_order(order) {
        const uint8_t mark = order == ByteOrder::Little ? 'I' : 'M';
        m_out = {mark, mark, 0, 0, 0, 0, 0, 0};
        put(2, 42, 2);
    }

    std::vector<uint8_t> write(const std::vector<TiffDirectory>& pages) {
        size_t link = 4;
        for (const TiffDirectory& page : pages) {
            put(link, writeDirectory(page), 4);
            link = m_linkOfLast;
        }
        return std::move(m_out);
    }

private:
    void put(size_t at, uint32_t value, uint32_t bytes) {
        for (uint32_t i = 0; i < bytes; ++i) {
            const uint32_t shift = 8 * (m_order == ByteOrder::Little ? i : bytes - 1 - i);
            m_out[at + i] = static_cast<uint8_t>(value >> shift);
        }
    }

    /// Room for `bytes` at an even offset.
    uint32_t reserve(size_t bytes) {
        const size_t start = m_out.size() + m_out.size() % 2;
        m_out.resize(start + bytes);
        return static_cast<uint32_t>(start);
    }

    uint32_t writeDirectory(const TiffDirectory& directory) {
        auto entries = directory.m_entries;
        std::stable_sort(entries.begin(), entries.end(),
                         [](const auto& a, const auto& b) { return a.tag < b.tag; });
        const uint32_t start = reserve(2 + 12 * entries.size() + 4);
        put(start, static_cast<uint32_t>(entries.size()), 2);
        for (size_t i = 0; i < entries.size(); ++i) {
            writeEntry(start + 2 + 12 * i, entries[i]);
        }
        m_linkOfLast = start + 2 + 12 * entries.size();
        return start;
    }

    void writeEntry(size_t at, TiffDirectory::Entry& entry) {
        put(at, entry.tag, 2);
        put(at + 2, entry.type, 2);
        put(at + 4, entry.count, 4);
        if (!entry.inner.empty()) entry.numbers = {writeDirectory(entry.inner.front())};
        if (!entry.elsewhere.empty()) {
            entry.numbers = {reserve(entry.elsewhere.size())};
            std::copy(entry.elsewhere.begin(), entry.elsewhere.end(),
                      m_out.begin() + static_cast<ptrdiff_t>(entry.numbers.front()));
        }
        const size_t length = entry.numbers.size() * entry.unit;
        size_t values = at + 8;
        if (length > 4) {
            values = reserve(length);
            put(at + 8, static_cast<uint32_t>(values), 4);
        }
        for (size_t i = 0; i < entry.numbers.size(); ++i) {
            put(values + i * entry.unit, entry.numbers[i], entry.unit);
        }
    }

    ByteOrder m_order;
    std::vector<uint8_t> m_out;
    size_t m_linkOfLast = 0;
};

std::vector<uint8_t> tiffBlock(const std::vector<TiffDirectory>& pages, ByteOrder order) {
    return TiffBlockWriter(order).write(pages);
}

}  // namespace fi::test
