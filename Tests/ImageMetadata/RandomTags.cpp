// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/RandomTags.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace fi::test {

namespace {

constexpr uint32_t kUnits[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
constexpr uint16_t kInteropTags[] = {1, 2, 0x1000, 0x1001, 0x1002};
constexpr uint16_t kDateTags[] = {306, 36867, 36868, 29};

uint32_t below(std::mt19937& random, uint32_t limit) {
    return static_cast<uint32_t>(random() % limit);
}

void turn(Bytes& bytes, size_t at, size_t size) {
    std::reverse(bytes.begin() + static_cast<ptrdiff_t>(at),
                 bytes.begin() + static_cast<ptrdiff_t>(at + size));
}

/// What the rules make of the four bytes of an entry's field.
Bytes turnedField(uint16_t type, Bytes field) {
    const bool bytes = type == 1 || type == 2 || type == 6 || type == 7;
    if (bytes) return field;
    if (type == 3) {
        turn(field, 0, 2);
        turn(field, 2, 2);
        return field;
    }
    turn(field, 0, 4);
    return field;
}

/// What the rules make of a value at an offset.
Bytes turnedValue(uint16_t type, uint32_t count, Bytes value) {
    uint32_t unit = kUnits[type];
    if (type == 5 || type == 10 || type == 12) unit = 4;
    const size_t words = type == 12 ? count : value.size() / unit;
    for (size_t i = 0; i < words; ++i)
        turn(value, i * unit, unit);
    return value;
}

/// An entry and the value that it has elsewhere.
struct Entry {
    uint16_t tag = 0;
    uint16_t type = 0;
    uint32_t count = 0;
    Bytes field = Bytes(4);
    Bytes value = {};  ///< at an offset, when there is one
    int directory = -1;
    bool dropped = false;
    uint16_t kind = kImageTagKindPlain;
    Parsed parsed = {};
};

struct Directory {
    size_t slot;
    std::vector<Entry> entries;
    int next = -1;
};

class Generator {
public:
    Generator(std::mt19937& random, Arrangement arrangement)
        : m_random(random),
          m_arrangement(arrangement),
          m_order(below(2) == 0 ? ByteOrder::Little : ByteOrder::Big),
          m_header(std::array{kTiffHeader, kExifHeader, kJfifExifHeader}[below(3)]) {}

    RandomStructure generate() {
        const int first = makeMain(0);
        if (below(2) == 0) m_directories[static_cast<size_t>(first)].next = makeMain(4);
        place();
        return write(first);
    }

private:
    [[nodiscard]] uint32_t below(uint32_t limit) { return test::below(m_random, limit); }

    int makeMain(size_t slot) {
        Directory directory = makeDirectory(slot);
        if (below(2) == 0) point(directory, 0x8769, makeExif(slot + 1));
        if (below(2) == 0) point(directory, 0x8825, add(makeDirectory(slot + 2)));
        return add(std::move(directory));
    }

    int makeExif(size_t slot) {
        Directory directory = makeDirectory(slot);
        if (below(2) == 0) point(directory, 0xA005, makeInterop(slot + 2));
        return add(std::move(directory));
    }

    /// Always five entries.
    int makeInterop(size_t slot) {
        Directory directory{slot, {}};
        while (directory.entries.size() < 5) {
            Entry entry = makeEntry();
            entry.dropped = below(2) == 0;
            entry.tag = entry.dropped ? uint16_t{0x2000} : kInteropTags[below(5)];
            if (entry.dropped) entry.type = static_cast<uint16_t>(below(65536));
            entry.kind = kImageTagKindPlain;
            entry.parsed = {};
            directory.entries.push_back(std::move(entry));
        }
        return add(std::move(directory));
    }

    Directory makeDirectory(size_t slot) {
        Directory directory{slot, {}};
        for (uint32_t left = below(12); left > 0; --left)
            directory.entries.push_back(below(6) == 0 ? makeDate() : makeEntry());
        return directory;
    }

    Entry makeEntry() {
        Entry entry;
        entry.tag = static_cast<uint16_t>(256 + below(20));
        entry.type = static_cast<uint16_t>(1 + below(12));
        entry.count = below(10) == 0 ? below(400) : below(7);
        Bytes bytes(entry.count * kUnits[entry.type]);
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(m_random());
        if (bytes.size() <= 4 && entry.type != 5 && entry.type != 10) {
            std::copy(bytes.begin(), bytes.end(), entry.field.begin());
        } else {
            entry.value = std::move(bytes);
        }
        return entry;
    }

    Entry makeDate() {
        Entry entry;
        entry.tag = kDateTags[below(4)];
        entry.type = 2;
        entry.kind = kImageTagKindDate;
        std::string text;
        for (size_t i = 0; i < 6; ++i) {
            entry.parsed[i] = static_cast<uint16_t>(below(i == 0 ? 10'000 : 61));
            char digits[16];
            std::snprintf(digits, sizeof digits, i == 0 ? "%04u" : "%02u", unsigned{entry.parsed[i]});
            if (i > 0) text += ":/ "[below(3)];
            text += digits;
        }
        entry.value.assign(text.begin(), text.end());
        entry.value.push_back(0);
        entry.count = static_cast<uint32_t>(entry.value.size());
        return entry;
    }

    void point(Directory& directory, uint16_t tag, int inner) {
        Entry entry;
        entry.tag = tag;
        entry.type = 4;
        entry.count = 1;
        entry.directory = inner;
        const size_t at = below(static_cast<uint32_t>(directory.entries.size() + 1));
        directory.entries.insert(directory.entries.begin() + static_cast<ptrdiff_t>(at), std::move(entry));
    }

    int add(Directory directory) {
        m_directories.push_back(std::move(directory));
        return static_cast<int>(m_directories.size()) - 1;
    }

    /// Gives every directory and every value a place of its own.
    void place() {
        m_places.resize(m_directories.size());
        for (size_t i = 0; i < m_directories.size(); ++i) {
            m_places[i].values.resize(m_directories[i].entries.size());
            m_blocks.push_back(
                {&m_places[i].directory, directorySize(m_directories[i].entries.size()), true});
            for (size_t k = 0; k < m_places[i].values.size(); ++k) {
                const size_t size = m_directories[i].entries[k].value.size();
                m_blocks.push_back({&m_places[i].values[k], static_cast<uint32_t>(size), false});
            }
        }
        std::shuffle(m_blocks.begin(), m_blocks.end(), m_random);
        if (m_arrangement == Arrangement::DirectoriesFirst) {
            std::stable_partition(m_blocks.begin(), m_blocks.end(),
                                  [](const Block& b) { return b.directory; });
        }
        uint32_t at = 8;
        for (const Block& block : m_blocks) {
            at += below(5);
            *block.place = at;
            at += block.size;
            if (block.directory) m_endOfDirectories = std::max(m_endOfDirectories, at);
        }
        m_length = at;
    }

    RandomStructure write(int first) {
        TagBytes file(m_order, m_header);
        file.length(m_length).first(m_places[static_cast<size_t>(first)].directory);
        RandomStructure made;
        for (size_t i = 0; i < m_directories.size(); ++i) {
            const Directory& directory = m_directories[i];
            std::vector<TagEntry> entries;
            for (size_t k = 0; k < directory.entries.size(); ++k) {
                const Entry& entry = directory.entries[k];
                entries.push_back(written(entry, m_places[i].values[k]));
                file.text(m_places[i].values[k], std::string(entry.value.begin(), entry.value.end()));
                if (entry.directory < 0 && !entry.dropped) {
                    made.slots[directory.slot].push_back(expected(entry));
                }
            }
            const uint32_t next =
                directory.next < 0 ? 0 : m_places[static_cast<size_t>(directory.next)].directory;
            file.directory(m_places[i].directory, entries, next);
        }
        made.header = m_header;
        made.file = file.bytes();
        made.endOfDirectories = file.position(m_endOfDirectories);
        return made;
    }

    [[nodiscard]] TagEntry written(const Entry& entry, uint32_t place) const {
        if (entry.directory >= 0) {
            return longEntry(entry.tag, m_places[static_cast<size_t>(entry.directory)].directory);
        }
        if (isElsewhere(entry)) return entryAt(entry.tag, entry.type, entry.count, place);
        return {entry.tag, entry.type, entry.count, 1, {entry.field.begin(), entry.field.end()}};
    }

    [[nodiscard]] static bool isElsewhere(const Entry& entry) {
        return !entry.value.empty() || entry.type == 5 || entry.type == 10;
    }

    [[nodiscard]] ExpectedRecord expected(const Entry& entry) const {
        const bool big = m_order == ByteOrder::Big;
        Bytes value;
        if (isElsewhere(entry)) {
            value = big ? turnedValue(entry.type, entry.count, entry.value) : entry.value;
        } else {
            value = big ? turnedField(entry.type, entry.field) : entry.field;
            value.resize(entry.count * kUnits[entry.type]);
        }
        return {entry.tag, entry.type, entry.kind, static_cast<int32_t>(entry.count), value, entry.parsed};
    }

    struct Places {
        uint32_t directory = 0;
        std::vector<uint32_t> values = {};
    };
    struct Block {
        uint32_t* place;
        uint32_t size;
        bool directory;
    };

    std::mt19937& m_random;
    Arrangement m_arrangement;
    ByteOrder m_order;
    uint32_t m_header;
    std::vector<Directory> m_directories;
    std::vector<Places> m_places;
    std::vector<Block> m_blocks;
    uint32_t m_endOfDirectories = 0;
    uint32_t m_length = 0;
};

}  // namespace

RandomStructure randomStructure(std::mt19937& random, Arrangement arrangement) {
    return Generator(random, arrangement).generate();
}

ExpectedSlots slotsOf(const OpenTag& tag) {
    ExpectedSlots slots;
    for (size_t slot = 0; slot < slots.size(); ++slot) {
        for (int i = 0; i < tag.field(slot).count; ++i) {
            const IMAGETAG_INFO& record = tag.record(slot, static_cast<size_t>(i));
            slots[slot].push_back(
                {record.tag, record.type, record.kind, record.count, bytesOf(record), parsedOf(record)});
        }
    }
    return slots;
}

}  // namespace fi::test
