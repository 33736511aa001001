// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/CFileSearchDC.h"

#include <string_view>

#include "Foundation/FileServices.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Dictionary.h"

namespace fi {

namespace {

constexpr std::string_view kTypeKey = "historyDataSourceTypeKey";
constexpr std::string_view kChildrenKey = "historyDataSourceChildrenKey";
constexpr std::string_view kSourceKey = "historyDataSourceSourceKey";

/// The text under a key; empty when it is missing or of another type.
std::string_view textOf(const CFDictionary& dictionary, std::string_view key) {
    const auto* text = dictionary.value<CFString>(key);
    return text != nullptr ? text->view() : std::string_view();
}

const CFArray* childrenOf(const CFDictionary& dictionary) {
    return dictionary.value<CFArray>(kChildrenKey);
}

}  // namespace

CFileSearchDC::CFileSearchDC() : m_search(new FileSearchDC()) {}

CFileSearchDC::~CFileSearchDC() {
    m_search->release();
    m_search = nullptr;
}

void CFileSearchDC::followList() {
    m_listCount = m_search->getFileNum();
}

bool CFileSearchDC::Open(CFURLRef folder) {
    if (!existsAt(folder)) return false;
    m_search->open(folder);
    return true;
}

void CFileSearchDC::Close() {
    m_search->close();
    followList();
}

int16_t CFileSearchDC::FileSearch(int depth) {
    m_search->searchStart(depth);
    followList();
    return 0;
}

int16_t CFileSearchDC::FileSearchByPList(CFArrayRef history) {
    if (history == nullptr) return 0;
    for (size_t i = 0; i < history->count(); ++i) {
        const auto* group = history->at<CFDictionary>(i);
        if (group == nullptr) continue;
        const std::string_view type = textOf(*group, kTypeKey);
        if (type == "mailHistory" || type == "sendAppHistory") FileAddFromCFArray(childrenOf(*group));
        if (type == "readHistory") addReadHistory(childrenOf(*group));
    }
    followList();
    return static_cast<int16_t>(GetListNum());
}

void CFileSearchDC::addReadHistory(CFArrayRef children) {
    if (children == nullptr) return;
    for (size_t i = 0; i < children->count(); ++i) {
        const auto* child = children->at<CFDictionary>(i);
        if (child == nullptr) continue;
        const std::string_view source = textOf(*child, kSourceKey);
        if (source == "scanHistory" || source == "memcardHistory") FileAddFromCFArray(childrenOf(*child));
    }
}

void CFileSearchDC::FileAddFromCFArray(CFArrayRef items) {
    if (items == nullptr) return;
    for (size_t i = 0; i < items->count(); ++i) {
        const auto* item = items->at<CFDictionary>(i);
        const CFArray* paths = item != nullptr ? childrenOf(*item) : nullptr;
        for (size_t k = 0; paths != nullptr && k < paths->count(); ++k)
            addIfPath(paths->at<CFString>(k));
    }
    followList();
}

void CFileSearchDC::addIfPath(CFStringRef path) {
    if (path == nullptr) return;
    guarded([&] {
        if (CFURL::createFromPath(path->view())) m_search->addFileFromPath(path);
    });
}

int16_t CFileSearchDC::FileAddFromPath(CFStringRef path) {
    m_search->addFileFromPath(path);
    followList();
    return 1;
}

int16_t CFileSearchDC::FileUpdate(int depth, unsigned char* changed) {
    *changed = m_search->fileUpdate(depth) ? 1 : 0;
    followList();
    return 0;
}

void CFileSearchDC::Sort(_FILEARRAY* /*files*/) {
    m_search->fileSort(nullptr);
}

uint32_t CFileSearchDC::unreadableFolderCount() const {
    return m_search->unreadableFolderCount();
}

bool CFileSearchDC::copyUnreadableFolder(CFStringRef* out, uint32_t index) const {
    const CFStringRef path = m_search->unreadableFolderAt(index);
    if (path == nullptr) return false;
    *out = CFRetain(path);
    return true;
}

uint32_t CFileSearchDC::GetListNum() const {
    return m_search->getFileNum();
}

uint32_t CFileSearchDC::GetNowListPos() const {
    return m_nowListPos;
}

bool CFileSearchDC::SetNowListPos(uint32_t position) {
    if (position == 0 || position > m_listCount) return false;
    m_nowListPos = position;
    return true;
}

bool CFileSearchDC::GetURLAt(CFURLRef* out, uint32_t index) const {
    return guarded(
        [&] {
            const CFStringRef path = m_search->getStringAt(index);
            auto url = path != nullptr ? CFURL::createFromPath(path->view()) : nullptr;
            if (!url) return false;
            *out = url.handOver();
            return true;
        },
        false);
}

bool CFileSearchDC::GetURLFirst(CFURLRef* out) {
    m_nowListPos = 1;
    return GetURLAt(out, 1);
}

bool CFileSearchDC::GetURLLast(CFURLRef* out) {
    m_nowListPos = m_listCount;
    return GetURLAt(out, m_listCount);
}

bool CFileSearchDC::GetURLNext(CFURLRef* out) {
    if (m_nowListPos >= m_listCount) return false;
    return GetURLAt(out, ++m_nowListPos);
}

bool CFileSearchDC::GetURLPrev(CFURLRef* out) {
    if (m_nowListPos <= 1) return false;
    return GetURLAt(out, --m_nowListPos);
}

}  // namespace fi
