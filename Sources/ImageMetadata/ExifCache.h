// SPDX-License-Identifier: Apache-2.0
// What is remembered of photos' Exif facts, by path and modification time.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "FileImporter/ExifInformation.h"
#include "PlatformKit/Array.h"
#include "PlatformKit/Geometry.h"
#include "PlatformKit/String.h"

namespace fi {

/// A record in a third of its size: hardly one names a maker.
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
        size_t m_hash;
    };

    /// Copies the matching entry's record. False, the record untouched, when none matches.
    [[nodiscard]] bool find(const Key& key, ExifInformation& info) const;
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
        PackedExifInformation info;
        Entry* next = nullptr;  ///< the next younger one of the path
    };
    /// The entries of one path.
    struct Chain {
        Entry* first = nullptr;
        Entry* last = nullptr;
    };
    struct KeyHash {
        size_t operator()(const Key& key) const noexcept { return key.m_hash; }
    };
    struct KeyEqual {
        bool operator()(const Key& a, const Key& b) const noexcept {
            return a.m_path == b.m_path || (a.m_hash == b.m_hash && a.m_path->view() == b.m_path->view());
        }
    };

    using Chains = std::unordered_map<Key, Chain, KeyHash, KeyEqual>;

    [[nodiscard]] bool knows(const Key& key) const;
    [[nodiscard]] Entry* matching(const Key& key, double modificationTime) const;
    [[nodiscard]] static Entry* matching(const Chain& chain, double modificationTime);
    void append(Chains::iterator place, const ExifInformation& info);

    mutable std::mutex m_lock;
    std::deque<Entry> m_entries;  ///< oldest first
    Chains m_chains;              ///< keys borrow the first entry's path
};

/// The process's own; never destroyed.
[[nodiscard]] ExifCache& sharedExifCache();

}  // namespace fi
