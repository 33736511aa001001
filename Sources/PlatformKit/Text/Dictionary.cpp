// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Dictionary.h"

namespace fi {

Ref<const CFDictionary> CFDictionary::create(Entries entries) {
    return adopt(new CFDictionary(std::move(entries)));
}

size_t CFDictionary::count() const {
    return m_entries.size();
}

const NSObject* CFDictionary::value(std::string_view key) const {
    const auto found = m_entries.find(key);
    return found == m_entries.end() ? nullptr : found->second.get();
}

Ref<const NSObject> CFDictionary::copyValue(std::string_view key) const {
    return fi::retain(CFDictionary::value(key));
}

CFDictionary::Entries CFDictionary::copyEntries() const {
    return m_entries;
}

bool CFDictionary::isEqual(const NSObject* other) const {
    const auto* dictionary = dynamic_cast<const CFDictionary*>(other);
    if (dictionary == nullptr) return false;
    const Entries mine = copyEntries();
    const Entries theirs = dictionary->copyEntries();
    if (mine.size() != theirs.size()) return false;
    for (const auto& [key, value] : mine) {
        const auto found = theirs.find(key);
        if (found == theirs.end() || !CFEqual(value.get(), found->second.get())) return false;
    }
    return true;
}

size_t CFDictionary::hash() const {
    return count();
}

Ref<NSMutableDictionary> NSMutableDictionary::create() {
    return adopt(new NSMutableDictionary());
}

Ref<NSMutableDictionary> NSMutableDictionary::createCopy(const CFDictionary& other) {
    return adopt(new NSMutableDictionary(other.copyEntries()));
}

size_t NSMutableDictionary::count() const {
    const std::lock_guard lock(m_mutex);
    return m_entries.size();
}

Ref<const NSObject> NSMutableDictionary::copyValue(std::string_view key) const {
    const std::lock_guard lock(m_mutex);
    return CFDictionary::copyValue(key);
}

const NSObject* NSMutableDictionary::value(std::string_view key) const {
    const std::lock_guard lock(m_mutex);
    return CFDictionary::value(key);
}

CFDictionary::Entries NSMutableDictionary::copyEntries() const {
    const std::lock_guard lock(m_mutex);
    return m_entries;
}

void NSMutableDictionary::set(CFStringRef key, Ref<const NSObject> value) {
    if (!value) {
        remove(key->view());
        return;
    }
    const std::lock_guard lock(m_mutex);
    // The replaced value is released after the lock: its destructor may look at this dictionary.
    auto [entry, added] = m_entries.try_emplace(fi::retain(key), value);
    if (!added) std::swap(entry->second, value);
}

void NSMutableDictionary::set(std::string_view key, Ref<const NSObject> value) {
    set(CFString::create(key).get(), std::move(value));
}

void NSMutableDictionary::remove(std::string_view key) {
    Entries::node_type removed;
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(key);
    if (found != m_entries.end()) removed = m_entries.extract(found);
}

void NSMutableDictionary::removeAll() {
    Entries removed;
    const std::lock_guard lock(m_mutex);
    m_entries.swap(removed);
}

}  // namespace fi
