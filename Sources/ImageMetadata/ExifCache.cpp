// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/ExifCache.h"

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
    : m_path(path), m_hash(path != nullptr ? std::hash<std::string_view>{}(path->view()) : 0) {}

bool ExifCache::find(const Key& key, ExifInformation& info) const {
    if (!knows(key)) return false;
    const auto time = modificationTimeAt(key.m_path->c_str());
    if (!time) return false;
    const std::lock_guard lock(m_lock);
    const Entry* entry = matching(key, *time);
    if (entry != nullptr) entry->info.unpack(info);
    return entry != nullptr;
}

bool ExifCache::add(const Key& key, const ExifInformation& info) {
    if (key.m_path == nullptr) return false;
    {
        // No entry, no match: the file need not be asked.
        const std::lock_guard lock(m_lock);
        const auto [chain, isNew] = m_chains.try_emplace(key);
        if (isNew) {
            append(chain, info);
            return true;
        }
    }
    const auto time = modificationTimeAt(key.m_path->c_str());
    const std::lock_guard lock(m_lock);
    const auto chain = m_chains.try_emplace(key).first;
    if (time && matching(chain->second, *time) != nullptr) return false;
    append(chain, info);
    return true;
}

void ExifCache::replaceSize(const Key& key, NSSize size, NSPoint resolution) {
    if (!knows(key)) return;
    const auto time = modificationTimeAt(key.m_path->c_str());
    if (!time) return;
    const std::lock_guard lock(m_lock);
    Entry* entry = matching(key, *time);
    if (entry == nullptr) return;
    entry->info.setSize(truncated(size.width), truncated(size.height));
    if (resolution != NSPoint{}) entry->info.setResolution(resolution);
}

void ExifCache::flush() {
    const std::lock_guard lock(m_lock);
    m_chains.clear();
    m_entries.clear();
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

bool ExifCache::knows(const Key& key) const {
    if (key.m_path == nullptr) return false;
    const std::lock_guard lock(m_lock);
    return m_chains.contains(key);
}

ExifCache::Entry* ExifCache::matching(const Key& key, double modificationTime) const {
    const auto chain = m_chains.find(key);
    return chain != m_chains.end() ? matching(chain->second, modificationTime) : nullptr;
}

ExifCache::Entry* ExifCache::matching(const Chain& chain, double modificationTime) {
    Entry* entry = chain.first;
    while (entry != nullptr && entry->info.modificationTime() != modificationTime)
        entry = entry->next;
    return entry;
}

void ExifCache::append(Chains::iterator place, const ExifInformation& info) {
    auto& [key, chain] = *place;
    try {
        // The path that the key borrows is the first entry's, which retains it.
        Entry& entry = m_entries.emplace_back(key.m_path, info);
        (chain.first == nullptr ? chain.first : chain.last->next) = &entry;
        chain.last = &entry;
    } catch (...) {
        if (chain.first == nullptr) m_chains.erase(place);
        throw;
    }
}

ExifCache& sharedExifCache() {
    static ExifCache& cache = *new ExifCache;  // outlives every thread
    return cache;
}

}  // namespace fi
