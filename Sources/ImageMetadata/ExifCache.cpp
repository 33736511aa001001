// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/ExifCache.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

#include "ImageMetadata/FileStamp.h"
#include "PlatformKit/Data.h"
#include "PlatformKit/Dictionary.h"

namespace fi {

namespace {

constinit StringConstant kPath("path");
constinit StringConstant kExif("exif");

/// The low 16 bits of the whole part; 0 for what no integer can hold.
uint16_t truncated(CGFloat side) {
    constexpr CGFloat kLimit = 9.2e18;
    return std::abs(side) < kLimit ? static_cast<uint16_t>(static_cast<int64_t>(side)) : uint16_t{0};
}

}  // namespace

PackedExifInformation::PackedExifInformation(const ExifInformation& info) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&info);
    std::memcpy(m_front, bytes, sizeof m_front);
    std::memcpy(m_back, bytes + kBehindMaker, sizeof m_back);
    static constexpr char kNoMaker[sizeof info.maker] = {};
    if (std::memcmp(info.maker, kNoMaker, sizeof kNoMaker) != 0) {
        m_maker = std::make_unique<uint8_t[]>(sizeof info.maker);
        std::memcpy(m_maker.get(), info.maker, sizeof info.maker);
    }
}

void PackedExifInformation::unpack(ExifInformation& info) const {
    auto* bytes = reinterpret_cast<uint8_t*>(&info);
    std::memcpy(bytes, m_front, sizeof m_front);
    std::memcpy(bytes + kBehindMaker, m_back, sizeof m_back);
    if (m_maker) {
        std::memcpy(info.maker, m_maker.get(), sizeof info.maker);
    } else {
        std::memset(info.maker, 0, sizeof info.maker);
    }
}

double PackedExifInformation::modificationTime() const {
    double time = 0;
    std::memcpy(&time, m_back + offsetof(ExifInformation, modificationTime) - kBehindMaker, sizeof time);
    return time;
}

template <typename Value>
void PackedExifInformation::store(size_t offset, Value value) {
    std::memcpy(m_front + offset, &value, sizeof value);
}

void PackedExifInformation::setSize(uint16_t width, uint16_t height) {
    store(offsetof(ExifInformation, width), width);
    store(offsetof(ExifInformation, height), height);
}

void PackedExifInformation::setResolution(NSPoint resolution) {
    store(offsetof(ExifInformation, xResolution), resolution.x);
    store(offsetof(ExifInformation, yResolution), resolution.y);
}

ExifCache::Key::Key(CFStringRef path)
    : m_path(path),
      m_hash(path != nullptr ? static_cast<uint32_t>(std::hash<std::string_view>{}(path->view())) : 0) {}

bool ExifCache::find(const Key& key, ExifInformation& info) {
    const Place place = placeOf(key);
    if (place.oldest == nullptr) return false;
    const auto time = modificationTimeAt(key.m_path->c_str());
    if (!time) return false;
    const std::lock_guard lock(m_lock);
    const Entry* entry = matching(key, place, *time);
    if (entry != nullptr) entry->info.unpack(info);
    return entry != nullptr;
}

bool ExifCache::add(const Key& key, const ExifInformation& info) {
    if (key.m_path == nullptr) return false;
    Place place;
    {
        const std::lock_guard lock(m_lock);
        place = {oldestOf(key), m_flushes};
        if (place.oldest == nullptr) {
            // No entry, no match: the file need not be asked.
            append(key, info);
            return true;
        }
    }
    const auto time = modificationTimeAt(key.m_path->c_str());
    const std::lock_guard lock(m_lock);
    if (time && matching(key, place, *time) != nullptr) return false;
    append(key, info);
    return true;
}

void ExifCache::replaceSize(const Key& key, NSSize size, NSPoint resolution) {
    const Place place = placeOf(key);
    if (place.oldest == nullptr) return;
    const auto time = modificationTimeAt(key.m_path->c_str());
    if (!time) return;
    const std::lock_guard lock(m_lock);
    Entry* entry = matching(key, place, *time);
    if (entry == nullptr) return;
    entry->info.setSize(truncated(size.width), truncated(size.height));
    if (resolution != NSPoint{}) entry->info.setResolution(resolution);
}

void ExifCache::flush() {
    const std::lock_guard lock(m_lock);
    m_slots.clear();
    m_paths = 0;
    m_entries.clear();
    ++m_flushes;
}

Ref<const CFArray> ExifCache::copyEntries() const {
    const std::lock_guard lock(m_lock);
    CFArray::Elements elements;
    elements.reserve(m_entries.size());
    for (const Entry& entry : m_entries) {
        ExifInformation info;
        entry.info.unpack(info);
        const auto* bytes = reinterpret_cast<const uint8_t*>(&info);
        elements.push_back(
            CFDictionary::create({{retain(kPath.ref()), entry.path},
                                  {retain(kExif.ref()), CFData::create({bytes, sizeof info})}}));
    }
    return CFArray::create(std::move(elements));
}

ExifCache::Place ExifCache::placeOf(const Key& key) {
    if (key.m_path == nullptr) return {};
    const std::lock_guard lock(m_lock);
    return {oldestOf(key), m_flushes};
}

ExifCache::Entry* ExifCache::oldestOf(const Key& key) {
    if (m_slots.empty()) return nullptr;
    const uint32_t number = slotOf(key).number;
    return number != 0 ? &m_entries[number - 1] : nullptr;
}

ExifCache::Entry* ExifCache::matching(const Key& key, const Place& place, double modificationTime) {
    Entry* entry = place.flushes == m_flushes ? place.oldest : oldestOf(key);
    while (entry != nullptr && entry->info.modificationTime() != modificationTime)
        entry = entry->next;
    return entry;
}

/// The path's slot, or the free one where it belongs.
ExifCache::Slot& ExifCache::slotOf(const Key& key) {
    const auto isOfPath = [&](const Slot& slot) {
        if (slot.hash != key.m_hash) return false;
        const CFString* path = m_entries[slot.number - 1].path.get();
        return path == key.m_path || path->view() == key.m_path->view();
    };
    size_t at = key.m_hash & (m_slots.size() - 1);
    while (m_slots[at].number != 0 && !isOfPath(m_slots[at]))
        at = (at + 1) & (m_slots.size() - 1);
    return m_slots[at];
}

void ExifCache::append(const Key& key, const ExifInformation& info) {
    makeRoom();
    Entry& entry = m_entries.emplace_back(key.m_path, info);
    Slot& slot = slotOf(key);
    if (slot.number == 0) {
        slot = {key.m_hash, static_cast<uint32_t>(m_entries.size())};
        ++m_paths;
    } else {
        Entry& oldest = m_entries[slot.number - 1];
        oldest.youngest->next = &entry;
        oldest.youngest = &entry;
    }
}

/// For one more path.
void ExifCache::makeRoom() {
    constexpr size_t kFewestSlots = 64;
    if (2 * (m_paths + 1) <= m_slots.size()) return;
    std::vector<Slot> larger(std::max(kFewestSlots, 2 * m_slots.size()));
    for (const Slot& slot : m_slots) {
        size_t at = slot.hash & (larger.size() - 1);
        while (slot.number != 0 && larger[at].number != 0)
            at = (at + 1) & (larger.size() - 1);
        if (slot.number != 0) larger[at] = slot;
    }
    m_slots.swap(larger);
}

ExifCache& sharedExifCache() {
    static ExifCache& cache = *new ExifCache;  // outlives every thread
    return cache;
}

}  // namespace fi
