// SPDX-License-Identifier: Apache-2.0
// What is remembered of photos' Exif facts, by path and modification time.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "FileImporter/ExifInformation.h"
#include "PlatformKit/Array.h"
#include "PlatformKit/Geometry.h"
#include "PlatformKit/String.h"

namespace fi {

/// A record in a quarter of its size: hardly one names a maker.
class PackedExifInformation {
public:
    explicit PackedExifInformation(const ExifInformation& info);
    void unpack(ExifInformation& info) const;

    [[nodiscard]] double modificationTime() const;
    void setSize(uint16_t width, uint16_t height);
    void setResolution(NSPoint resolution);

private:
    static constexpr size_t kMaker = offsetof(ExifInformation, maker);
    static constexpr size_t kBehindMaker = kMaker + sizeof(ExifInformation::maker);

    template <typename Value>
    void store(size_t offset, Value value);

    alignas(double) uint8_t m_front[kMaker];
    alignas(double) uint8_t m_back[sizeof(ExifInformation) - kBehindMaker];
    std::unique_ptr<uint8_t[]> m_maker;  ///< null when all of it is zero
};

/// Grows by an entry for each file and each modification time of it; entries go by flush() alone. A file
/// matches the first entry of its path whose modification time is the file's now. An operation looks at the
/// file system only when the path has entries at all, and without holding the lock: a card that hangs stops
/// nobody else. Any thread. add() and copyEntries() throw std::bad_alloc without memory, with nothing
/// changed.
class ExifCache {
public:
    /// A path with its hash, for who asks more than once. Borrows the path; null is allowed and has no
    /// entries.
    class Key {
    public:
        explicit Key(CFStringRef path);

    private:
        friend class ExifCache;
        CFStringRef m_path;
        uint32_t m_hash;
    };

    /// Copies the matching entry's record. False, the record untouched, when none matches.
    [[nodiscard]] bool find(const Key& key, ExifInformation& info);
    /// Adds an entry, which retains the path, unless one matches. False when one does, and for a null path.
    bool add(const Key& key, const ExifInformation& info);
    /// Overwrites the matching entry's size (truncated, modulo 2^16), and its resolutions unless both given
    /// are zero.
    void replaceSize(const Key& key, NSSize size, NSPoint resolution);
    void flush();

    /// OWNED: an array of dictionaries, oldest first, each with the file's path under "path" and the bytes
    /// of its record under "exif".
    [[nodiscard]] Ref<const CFArray> copyEntries() const;

private:
    struct Entry {
        Entry(CFStringRef itsPath, const ExifInformation& record) : path(retain(itsPath)), info(record) {}
        Ref<const CFString> path;
        Entry* next = nullptr;   ///< the next younger one of the path
        Entry* youngest = this;  ///< of the path, if this is its oldest
        PackedExifInformation info;
    };
    /// Where a path's entries begin. Eight bytes: the table of a large card still lies in the processor's
    /// caches.
    struct Slot {
        uint32_t hash = 0;
        uint32_t number = 0;  ///< of the oldest entry, from 1; 0 in a free slot
    };
    /// A path's oldest entry (null: none), good until there is another flush.
    struct Place {
        Entry* oldest = nullptr;
        uint64_t flushes = 0;
    };

    [[nodiscard]] Place placeOf(const Key& key);
    [[nodiscard]] Entry* oldestOf(const Key& key);
    [[nodiscard]] Entry* matching(const Key& key, const Place& place, double modificationTime);
    [[nodiscard]] Slot& slotOf(const Key& key);
    void append(const Key& key, const ExifInformation& info);
    void makeRoom();

    mutable std::mutex m_lock;
    std::deque<Entry> m_entries;  ///< oldest first
    std::vector<Slot> m_slots;    ///< none, or a power of two of which half are taken at most
    size_t m_paths = 0;           ///< slots that are taken
    uint64_t m_flushes = 0;
};

/// The process's own; never destroyed. The first call throws std::bad_alloc without memory.
[[nodiscard]] ExifCache& sharedExifCache();

}  // namespace fi
