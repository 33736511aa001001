// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagWalk.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "ImageMetadata/TagFormat.h"

namespace fi {

namespace {

constexpr uint32_t kExifHeaderPosition = 12;
constexpr uint32_t kExifBehindJfifHeaderPosition = 30;
constexpr uint64_t kExifBehindJfifIdentifier = 24;
constexpr uint64_t kHeaderSize = 8;
constexpr uint32_t kCountSize = 2;
constexpr uint32_t kLinkSize = 4;
constexpr uint32_t kMostEntries = 2730;
constexpr uint32_t kInteropEntries = 5;
constexpr uint32_t kSlotsOfMainIFD = 4;
/// What the values of one walk may take beside the length of the data. Entries can share bytes of the file,
/// so that a few of them would otherwise become gigabytes of records.
constexpr uint64_t kSpareValueBytes = 16 << 20;

/// Slots of a main directory, counted from its own.
enum Relation : uint32_t { kMain = 0, kExif = 1, kGPS = 2, kInterop = 3 };

constexpr uint32_t toField(uint64_t position) {
    return static_cast<uint32_t>(std::min<uint64_t>(position, UINT32_MAX));
}

/// The relation that a pointer tag opens, kMain when it is no pointer.
constexpr Relation relationOf(uint16_t tag) {
    switch (tag) {
        case kExifPointer:
            return kExif;
        case kGPSPointer:
            return kGPS;
        case kInteropPointer:
            return kInterop;
        default:
            return kMain;
    }
}

constexpr uint64_t kPointerBits =
    TagFilter::bitOf(kExifPointer) | TagFilter::bitOf(kGPSPointer) | TagFilter::bitOf(kInteropPointer);

constexpr bool isKeptOfInterop(uint16_t tag) {
    return tag == 1 || tag == 2 || (tag >= 0x1000 && tag <= 0x1002);
}

/// The test that every tag must pass, with all that it needs at hand.
struct ValueTest {
    uint64_t header;  ///< position of the header in the file
    uint64_t start;   ///< of the data in hand
    uint64_t length;

    /// True when the value lies in the data, or in its entry, and takes no more than `bytesLeft`, which it
    /// is taken off. False says nothing.
    [[nodiscard]] bool passes(const TagEntry& entry, uint64_t& bytesLeft) const {
        const uint64_t size = uint64_t{entry.count & 0x7FFFU} * unitSizeOfType(entry.type);
        const bool fractions = entry.type == kTagRational || entry.type == kTagSRational;
        if ((entry.count & 0x8000U) != 0 || unitSizeOfType(entry.type) == 0 || size > bytesLeft)
            return false;
        if (size > sizeof(entry.value) || fractions) {
            const uint64_t position = header + entry.value;
            if (position < start || position - start + size > length) return false;
        }
        bytesLeft -= size;
        return true;
    }
};

class Walk {
public:
    Walk(IMAGETAG_POSITION& position, TagData& data, CMEMCARDFILE* reader, TagSink& sink)
        : m_place{position, data, reader},
          m_position(position),
          m_data(data),
          m_sink(sink),
          m_filter(sink.filter()),
          m_bigEndian(position.bigEndian != 0),
          m_resumed(position.currentMainIFD != 0),
          m_valueBytesLeft(data.length() + kSpareValueBytes) {}

    uint32_t run(uint64_t directory);

private:
    uint32_t mainChain(uint64_t directory);
    std::optional<uint64_t> linkBehind(uint64_t offset, uint32_t entries);
    uint32_t subDirectories();
    uint32_t subDirectory(uint32_t slot, uint64_t offset);
    uint32_t takeEntries(uint32_t slot, uint64_t offset, uint32_t entries);
    uint32_t takeEntry(uint32_t slot, TagEntry entry);
    bool rememberPointer(uint32_t slot, const TagEntry& entry);
    uint32_t stopForMore();
    uint32_t needMore(uint32_t mainIFD) {
        m_incompleteMain = std::min(m_incompleteMain, mainIFD);
        return kTagMoreNeeded;
    }

    const TagPlace m_place;
    IMAGETAG_POSITION& m_position;
    TagData& m_data;
    TagSink& m_sink;
    const TagFilter& m_filter;
    const bool m_bigEndian;
    const bool m_resumed;  ///< at IFD1
    uint64_t m_valueBytesLeft;
    std::optional<uint32_t> m_pointers[2 * kSlotsOfMainIFD];
    uint64_t m_secondIFD = 0;
    uint32_t m_incompleteMain = 2;  ///< the first main directory that is not, with those below it; 2: none
};

/// Directories below are walked also when the main chain broke off: whether IFD0 is complete decides where
/// to go on.
uint32_t Walk::run(uint64_t directory) {
    const uint32_t chain = mainChain(directory);
    if (chain != kTagNoError && chain != kTagMoreNeeded) return chain;
    const uint32_t below = subDirectories();
    if (below != kTagNoError && below != kTagMoreNeeded) return below;
    return chain == kTagNoError && below == kTagNoError ? kTagNoError : stopForMore();
}

uint32_t Walk::mainChain(uint64_t directory) {
    for (uint32_t main = m_resumed ? 1 : 0;; ++main) {
        if (directory < m_data.start()) return needMore(main);
        const uint64_t offset = directory - m_data.start();
        const auto entries = entriesThatFit(m_data, offset, m_bigEndian);
        if (!entries) return needMore(main);
        const uint32_t code = takeEntries(main * kSlotsOfMainIFD, offset + kCountSize, *entries);
        if (code != kTagNoError || main != 0) return code;
        const auto next = linkBehind(offset, *entries);
        if (!next) return kTagNoError;
        directory = m_secondIFD = *next;
    }
}

/// The position of the next directory. The size test leaves room for half of a link: one that is not all
/// there ends the chain.
std::optional<uint64_t> Walk::linkBehind(uint64_t offset, uint32_t entries) {
    const uint8_t* link = m_data.at(offset + kCountSize + uint64_t{entries} * kTagEntrySize, kLinkSize);
    const uint32_t next = link == nullptr ? 0 : readU32(link, m_bigEndian);
    if (next == 0) return std::nullopt;
    const uint64_t directory = uint64_t{m_position.headerPosition} + next;
    if (directory < m_data.start()) return std::nullopt;
    return directory;
}

/// In the order of the slots: an Interoperability directory that the Exif directory names comes after GPS.
uint32_t Walk::subDirectories() {
    for (uint32_t slot = 0; slot < std::size(m_pointers); ++slot) {
        if (!m_pointers[slot]) continue;
        const uint64_t directory = uint64_t{m_position.headerPosition} + *m_pointers[slot];
        if (directory < m_data.start()) return kTagNoError;
        const uint32_t code = subDirectory(slot, directory - m_data.start());
        if (code != kTagNoError) return code;
    }
    return kTagNoError;
}

uint32_t Walk::subDirectory(uint32_t slot, uint64_t offset) {
    const uint32_t main = slot / kSlotsOfMainIFD;
    if (slot % kSlotsOfMainIFD == kInterop) {
        // Five entries, whatever its count says, as far as there are data.
        if (!m_data.contains(offset + kCountSize, 1)) return needMore(main);
        return takeEntries(slot, offset + kCountSize, kInteropEntries);
    }
    const auto entries = entriesThatFit(m_data, offset, m_bigEndian);
    return entries ? takeEntries(slot, offset + kCountSize, *entries) : needMore(main);
}

/// Most tags are none that anybody wants: these are tested on the spot. All others, and those that fail,
/// go the long way.
uint32_t Walk::takeEntries(uint32_t slot, uint64_t offset, uint32_t entries) {
    const bool isInterop = slot % kSlotsOfMainIFD == kInterop;
    const uint64_t ofInterest = isInterop ? UINT64_MAX : m_filter.bitsOf(slot) | kPointerBits;
    const ValueTest test{m_position.headerPosition, m_data.start(), m_data.length()};
    const bool bigEndian = m_bigEndian;
    uint64_t bytesLeft = m_valueBytesLeft;
    for (; entries > 0; --entries, offset += kTagEntrySize) {
        const uint8_t* bytes = m_data.at(offset, kTagEntrySize);
        if (bytes == nullptr) break;
        const TagEntry entry = readEntry(bytes, bigEndian);
        if ((ofInterest & TagFilter::bitOf(entry.tag)) == 0 && test.passes(entry, bytesLeft)) continue;
        m_valueBytesLeft = bytesLeft;
        const uint32_t code = takeEntry(slot, entry);
        if (code != kTagNoError) return code;
        bytesLeft = m_valueBytesLeft;
    }
    m_valueBytesLeft = bytesLeft;
    return kTagNoError;
}

uint32_t Walk::takeEntry(uint32_t slot, TagEntry entry) {
    // What is not kept is not looked at either: its type may be none.
    if (slot % kSlotsOfMainIFD == kInterop && !isKeptOfInterop(entry.tag)) return kTagNoError;
    if (rememberPointer(slot, entry)) return kTagNoError;
    const FoundTag found(entry, m_place);
    const uint32_t code = found.check();
    if (code != kTagNoError) return code;
    if (found.size() > m_valueBytesLeft) return kTagNoMemory;
    m_valueBytesLeft -= found.size();
    if (!m_filter.lets(slot, entry.tag)) return kTagNoError;
    return m_sink.take(static_cast<uint16_t>(slot), found);
}

/// Pointers are followed later, the last one of a kind. A main directory may hold all three, an Exif
/// directory one; elsewhere they are tags like others.
bool Walk::rememberPointer(uint32_t slot, const TagEntry& entry) {
    const Relation opened = relationOf(entry.tag);
    const uint32_t here = slot % kSlotsOfMainIFD;
    if (opened == kMain || !(here == kMain || (here == kExif && opened == kInterop))) return false;
    m_pointers[slot - here + opened] = entry.value;
    if (opened == kExif) m_position.hasExifIFD = 1;
    return true;
}

/// A complete IFD0 is kept, but for the directories below it.
uint32_t Walk::stopForMore() {
    if (m_incompleteMain == 0) {
        m_sink.release(0);
        return kTagMoreNeeded;
    }
    m_sink.release(1);
    m_position.currentMainIFD = 1;
    if (!m_resumed) m_position.nextIFDPosition = toField(m_secondIFD);
    return kTagMoreNeeded;
}

}  // namespace

uint32_t recogniseFile(IMAGETAG_POSITION& position, TagData& data) {
    int16_t format = 0;
    const uint32_t code = checkFormat(data, format);
    if (code != kTagNoError) return code;
    position.format = static_cast<uint16_t>(format);
    position.headerPosition = format == kImageTagFormatExif ? kExifHeaderPosition : 0;
    if (format != kImageTagFormatJFIF) return kTagNoError;
    const uint8_t* identifier = data.at(kExifBehindJfifIdentifier, 4);
    if (identifier != nullptr && std::memcmp(identifier, "Exif", 4) == 0)
        position.headerPosition = kExifBehindJfifHeaderPosition;
    return kTagNoError;
}

bool isPlainJfif(const IMAGETAG_POSITION& position) {
    return position.format == kImageTagFormatJFIF && position.headerPosition == 0;
}

uint32_t searchFirstIFD(IMAGETAG_POSITION& position, TagData& data) {
    const uint8_t* header = data.at(position.headerPosition, kHeaderSize);
    if (header == nullptr) return kTagNotRecognised;
    if (header[0] != header[1] || (header[0] != 'I' && header[0] != 'M')) return kTagNotRecognised;
    position.bigEndian = header[0] == 'M' ? 1 : 0;
    const bool bigEndian = position.bigEndian != 0;
    const uint64_t first = uint64_t{position.headerPosition} + readU32(header + 4, bigEndian);
    position.nextIFDPosition = toField(first);
    return entriesThatFit(data, first, bigEndian) ? kTagNoError : kTagMoreNeeded;
}

std::optional<uint32_t> entriesThatFit(TagData& data, uint64_t offset, bool bigEndian) {
    const uint8_t* bytes = data.at(offset, kCountSize);
    if (bytes == nullptr) return std::nullopt;
    const uint32_t entries = readU16(bytes, bigEndian);
    // One more was once a negative size of the directory, and so too large for any data.
    if (entries > kMostEntries) return std::nullopt;
    if (!data.contains(offset, uint64_t{entries} * kTagEntrySize + kLinkSize)) return std::nullopt;
    return entries;
}

uint32_t walkDirectories(IMAGETAG_POSITION& position, TagData& data, CMEMCARDFILE* reader, TagSink& sink,
                         uint64_t directory) {
    return Walk(position, data, reader, sink).run(directory);
}

uint32_t walkHead(IMAGETAG_POSITION& position, TagData& data, TagSink& sink) {
    position = IMAGETAG_POSITION{};
    const uint32_t unknown = recogniseFile(position, data);
    if (unknown != kTagNoError) return unknown;
    if (isPlainJfif(position)) return kTagMoreNeeded;
    const uint32_t code = searchFirstIFD(position, data);
    if (code != kTagNoError) return code;
    return walkDirectories(position, data, nullptr, sink, position.nextIFDPosition);
}

}  // namespace fi
