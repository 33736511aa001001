// SPDX-License-Identifier: Apache-2.0
#include "PhotoCollections/PathIndex.h"

#include <functional>
#include <string>
#include <utility>

#include "PlatformKit/Text/Unicode.h"

namespace fi {

namespace {

constexpr size_t kFewestSlots = 64;

/// The canonical decomposition of a path. ASCII is its own, and no copy is made of it.
class Form {
public:
    explicit Form(std::string_view path)
        : m_decomposed(isASCII(path) ? std::string() : canonicallyDecomposed(path)),
          m_view(m_decomposed.empty() ? path : m_decomposed) {}
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    [[nodiscard]] std::string_view view() const { return m_view; }
    [[nodiscard]] uint32_t hash() const {
        const uint64_t hash = std::hash<std::string_view>{}(m_view);
        return static_cast<uint32_t>(hash ^ (hash >> 32U));
    }

private:
    std::string m_decomposed;
    std::string_view m_view;
};

}  // namespace

PathIndex::PathIndex(NSMutableArray& list) : m_list(list) {}

void PathIndex::add(CFStringRef path) {
    followList();
    const Form form(path->view());
    const uint32_t hash = form.hash();
    if (contains(hash, form.view())) return;
    makeRoom();
    m_list.append(fi::retain<const NSObject>(path));
    insert({hash, static_cast<uint32_t>(++m_followed)});
}

/// Takes in what others have appended.
void PathIndex::followList() {
    for (; m_followed < m_list.count(); ++m_followed) {
        const auto* path = m_list.at<CFString>(m_followed);
        if (path == nullptr) continue;
        makeRoom();
        insert({Form(path->view()).hash(), static_cast<uint32_t>(m_followed + 1)});
    }
}

/// At most half of the slots are used.
void PathIndex::makeRoom() {
    if (m_slots.empty()) m_slots.resize(kFewestSlots);
    if (m_used * 2 < m_slots.size()) return;
    std::vector<Slot> before(m_slots.size() * 2);
    before.swap(m_slots);
    m_used = 0;
    for (const Slot& slot : before) {
        if (slot.position != 0) insert(slot);
    }
}

void PathIndex::insert(Slot entry) {
    const size_t mask = m_slots.size() - 1;
    size_t at = entry.hash & mask;
    while (m_slots[at].position != 0)
        at = (at + 1) & mask;
    m_slots[at] = entry;
    ++m_used;
}

bool PathIndex::contains(uint32_t hash, std::string_view form) const {
    if (m_slots.empty()) return false;
    const size_t mask = m_slots.size() - 1;
    for (size_t at = hash & mask; m_slots[at].position != 0; at = (at + 1) & mask) {
        if (m_slots[at].hash != hash) continue;
        const auto* path = m_list.at<CFString>(m_slots[at].position - 1);
        if (Form(path->view()).view() == form) return true;
    }
    return false;
}

}  // namespace fi
