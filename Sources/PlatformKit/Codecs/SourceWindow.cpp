// SPDX-License-Identifier: Apache-2.0
// One read for each place that the window moves to.
#include "PlatformKit/Codecs/SourceWindow.h"

#include <algorithm>

namespace fi {

SourceWindow::SourceWindow(ByteSource& source, uint64_t base)
    : m_source(source), m_base(base), m_size(source.size() > base ? source.size() - base : 0) {}

ByteView SourceWindow::view(uint64_t offset, size_t length) {
    if (offset >= m_size) return {};
    const uint64_t wanted = std::min<uint64_t>(std::min(length, kMaximumView), m_size - offset);
    const bool inside =
        offset >= m_start && ByteView(m_bytes.data(), m_count).contains(offset - m_start, wanted);
    if (!inside) {
        m_start = offset;
        m_count = m_source.read(m_base + offset, m_bytes);
    }
    return ByteView(m_bytes.data(), m_count).cut(offset - m_start, wanted);
}

std::vector<uint8_t> SourceWindow::copy(uint64_t offset, uint64_t length) {
    if (offset >= m_size) return {};
    std::vector<uint8_t> bytes(static_cast<size_t>(std::min(length, m_size - offset)));
    const bool inside =
        offset >= m_start && ByteView(m_bytes.data(), m_count).contains(offset - m_start, bytes.size());
    if (inside) {
        std::copy_n(m_bytes.data() + (offset - m_start), bytes.size(), bytes.data());
        return bytes;
    }
    bytes.resize(m_source.read(m_base + offset, bytes));
    return bytes;
}

}  // namespace fi
