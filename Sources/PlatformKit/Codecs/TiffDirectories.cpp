// SPDX-License-Identifier: Apache-2.0
// A bounded walk: head, first directory, the ones it points to, and the one behind it.
#include "PlatformKit/Codecs/TiffDirectories.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "PlatformKit/Base/CheckedMath.h"
#include "PlatformKit/Codecs/SourceWindow.h"
#include "PlatformKit/Codecs/TiffLayout.h"

namespace fi {

namespace {

enum Tag : uint16_t {
    kTagOrientation = 0x0112,
    kTagXResolution = 0x011A,
    kTagYResolution = 0x011B,
    kTagResolutionUnit = 0x0128,
    kTagXmp = 0x02BC,
    kTagIptc = 0x83BB,
    kTagPhotoshop = 0x8649,
    kTagExifDirectory = 0x8769,
    kTagIccProfile = 0x8773,
    kTagGpsDirectory = 0x8825,
    kTagMakerNote = 0x927C,
    kTagInteropDirectory = 0xA005,
};

constexpr uint64_t kMaximumEntries = 2048;  // of one directory; cameras write fewer than a hundred
constexpr uint64_t kMaximumValueBytes = uint64_t{64} << 10;
constexpr uint64_t kMaximumBlockBytes = uint64_t{16} << 20;

uint64_t maximumBytes(uint16_t tag) {
    const bool isBlock = tag == kTagXmp || tag == kTagIptc || tag == kTagPhotoshop || tag == kTagIccProfile;
    return isBlock ? kMaximumBlockBytes : kMaximumValueBytes;
}

class DirectoryReader {
public:
    DirectoryReader(ByteSource& source, uint64_t base)
        : m_window(source, base), m_budget(m_window.size() + kMaximumValueBytes) {}

    std::optional<TiffDirectorySet> read() {
        const auto layout = TiffLayout::parse(m_window.view(0, TiffLayout::kHeadBytes));
        if (!layout) return std::nullopt;
        m_layout = *layout;
        TiffDirectorySet set;
        set.order = m_layout.order;
        const uint64_t next = readDirectory(m_layout.firstDirectory, set.ifd0);
        follow(set.ifd0, kTagExifDirectory, set.exif);
        follow(set.exif, kTagInteropDirectory, set.interop);
        follow(set.ifd0, kTagGpsDirectory, set.gps);
        readDirectory(next, set.ifd1);
        return set;
    }

private:
    void follow(const std::vector<TiffField>& directory, uint16_t tag, std::vector<TiffField>& out) {
        const TiffField* pointer = findField(directory, tag);
        if (pointer == nullptr) return;
        readDirectory(pointer->asUnsigned().value_or(0), out);
    }

    /// Returns the offset of the directory behind this one, 0 when there is none.
    uint64_t readDirectory(uint64_t offset, std::vector<TiffField>& out) {
        const bool seen = std::find(m_seen.begin(), m_seen.end(), offset) != m_seen.end();
        if (offset == 0 || offset >= m_window.size() || seen) return 0;
        m_seen.push_back(offset);
        const auto count = m_layout.readCount(m_window.view(offset, m_layout.countBytes()));
        if (!count) return 0;
        const uint64_t entries = offset + m_layout.countBytes();
        // A table longer than the source cannot be whole; its product must not wrap either.
        const uint64_t fitting = (m_window.size() - offset) / m_layout.entryBytes();
        const uint64_t readable = std::min({*count, fitting, kMaximumEntries});
        for (uint64_t i = 0; i < readable; ++i) {
            readEntry(entries + i * m_layout.entryBytes(), out);
        }
        if (*count > fitting) return 0;
        const uint64_t link = entries + *count * m_layout.entryBytes();
        return m_layout.readOffset(m_window.view(link, m_layout.offsetBytes()), 0).value_or(0);
    }

    void readEntry(uint64_t at, std::vector<TiffField>& out) {
        const ByteView entry = m_window.view(at, m_layout.entryBytes()).withOrder(m_layout.order);
        if (entry.size() < m_layout.entryBytes()) return;
        TiffField field;
        field.tag = entry.u16(0).value_or(0);
        field.type = entry.u16(2).value_or(0);
        field.order = m_layout.order;
        const uint64_t count = m_layout.readOffset(entry, 4).value_or(0);
        const auto bytes = checkedMultiply<uint64_t>(count, tiffTypeBytes(field.type));
        if (field.tag == kTagMakerNote || !bytes || *bytes == 0 || count > UINT32_MAX) return;
        field.count = static_cast<uint32_t>(count);
        const uint32_t valueAt = 4 + m_layout.offsetBytes();
        const uint64_t offset = *bytes <= m_layout.offsetBytes()
                                    ? at + valueAt
                                    : m_layout.readOffset(entry, valueAt).value_or(m_window.size());
        field.data = m_window.copy(offset, std::min({*bytes, maximumBytes(field.tag), m_budget}));
        if (field.data.empty()) return;
        m_budget -= field.data.size();
        out.push_back(std::move(field));
    }

    SourceWindow m_window;
    uint64_t m_budget;
    TiffLayout m_layout;
    std::vector<uint64_t> m_seen;
};

std::optional<double> positive(const TiffField* field) {
    const auto value = field != nullptr ? field->asRational() : std::nullopt;
    if (!value || !std::isfinite(*value) || *value <= 0) return std::nullopt;
    return value;
}

}  // namespace

std::optional<TiffDirectorySet> readTiffDirectories(ByteSource& source, uint64_t base) {
    try {
        return DirectoryReader(source, base).read();
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

const TiffField* findField(const std::vector<TiffField>& directory, uint16_t tag) {
    const auto found = std::find_if(directory.begin(), directory.end(),
                                    [tag](const TiffField& field) { return field.tag == tag; });
    return found != directory.end() ? &*found : nullptr;
}

std::optional<uint16_t> orientation(const TiffDirectorySet& set) {
    const TiffField* field = findField(set.ifd0, kTagOrientation);
    const auto value = field != nullptr ? field->asUnsigned() : std::nullopt;
    if (!value || *value < 1 || *value > 8) return std::nullopt;
    return static_cast<uint16_t>(*value);
}

std::optional<Density> density(const TiffDirectorySet& set) {
    const TiffField* unitField = findField(set.ifd0, kTagResolutionUnit);
    const uint64_t unit = unitField != nullptr ? unitField->asUnsigned().value_or(0) : 2;
    if (unit != 2 && unit != 3) return std::nullopt;
    const double scale = unit == 3 ? kCentimetresPerInch : 1.0;
    const auto x = positive(findField(set.ifd0, kTagXResolution));
    const auto y = positive(findField(set.ifd0, kTagYResolution));
    if (!x && !y) return std::nullopt;
    return Density{x.value_or(y.value_or(0)) * scale, y.value_or(x.value_or(0)) * scale};
}

}  // namespace fi
