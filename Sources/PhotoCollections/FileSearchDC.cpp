// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/FileSearchDC.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "PhotoCollections/FolderWalk.h"
#include "PhotoCollections/PathIndex.h"
#include "PlatformKit/Base/Boundary.h"

namespace fi {

FileSearchDC::FileSearchDC() = default;

FileSearchDC::~FileSearchDC() = default;

void FileSearchDC::open(CFURLRef folder) {
    m_searchDefaultDir = folder != nullptr ? fi::retain(folder->path()) : nullptr;
}

void FileSearchDC::close() {
    m_index.reset();
    if (m_filePathArray) {
        m_filePathArray->removeAll();
    } else {
        guarded([&] { m_filePathArray = NSMutableArray::create(); });
    }
}

void FileSearchDC::searchStart(int32_t depth) {
    m_searchDepth = depth;
    guarded([&] {
        if (!m_filePathArray) m_filePathArray = NSMutableArray::create();
        walk(m_searchDefaultDir.get(), 0, *m_filePathArray);
    });
}

bool FileSearchDC::fileUpdate(int32_t depth) {
    m_searchDepth = depth;
    return guarded(
        [&] {
            const auto fresh = NSMutableArray::create();
            walk(m_searchDefaultDir.get(), 0, *fresh);
            if (fresh->count() == getFileNum()) {
                fileSort(fresh.get());
                if (!fileCompare(fresh.get(), m_filePathArray.get())) return false;
            }
            auto copy = NSMutableArray::createCopy(*fresh);
            m_index.reset();
            m_filePathArray = std::move(copy);
            return true;
        },
        false);
}

void FileSearchDC::searchFiles(CFStringRef folder, int32_t currentDepth, NSMutableArray* array) {
    if (array == nullptr) return;
    guarded([&] { walk(folder, currentDepth, *array); });
}

void FileSearchDC::walk(CFStringRef folder, int32_t currentDepth, NSMutableArray& array) {
    m_unreadable = nullptr;
    if (folder == nullptr || m_searchDepth <= currentDepth) return;
    const int64_t levels = int64_t{m_searchDepth} - currentDepth;
    FolderWalk walk(array);
    walk.walk(std::string(folder->view()), static_cast<int32_t>(std::min<int64_t>(levels, INT32_MAX)));
    CFArray::Elements unreadable;
    for (const std::string& path : walk.unreadable())
        unreadable.push_back(CFString::create(path));
    m_unreadable = CFArray::create(std::move(unreadable));
}

uint32_t FileSearchDC::unreadableFolderCount() const {
    return m_unreadable ? static_cast<uint32_t>(m_unreadable->count()) : 0;
}

CFStringRef FileSearchDC::unreadableFolderAt(uint32_t index) const {
    return m_unreadable && index > 0 ? m_unreadable->at<CFString>(index - 1) : nullptr;
}

bool FileSearchDC::CheckExclusionFolders(CFStringRef name) const {
    return name == nullptr || guarded([&] { return mayEnterFolder(name->view()); }, false);
}

bool FileSearchDC::CheckJpgOrTif(CFStringRef path) const {
    return path != nullptr && guarded([&] { return isListedPhoto(path->view()); }, false);
}

void FileSearchDC::fileSort(NSMutableArray* /*array*/) {}

bool FileSearchDC::fileCompare(CFArrayRef a, CFArrayRef b) const {
    for (size_t i = 0; a != nullptr && i < a->count(); ++i) {
        if (b == nullptr || !CFEqual(a->at(i), b->at(i))) return true;
    }
    return false;
}

void FileSearchDC::addFileFromPath(CFStringRef path) {
    if (path == nullptr) return;
    guarded([&] {
        if (!m_filePathArray) m_filePathArray = NSMutableArray::create();
        if (!m_index) m_index = std::make_unique<PathIndex>(*m_filePathArray);
        m_index->add(path);
    });
}

uint32_t FileSearchDC::getFileNum() const {
    return m_filePathArray ? static_cast<uint32_t>(m_filePathArray->count()) : 0;
}

CFStringRef FileSearchDC::getStringAt(uint32_t index) const {
    return m_filePathArray && index > 0 ? m_filePathArray->at<CFString>(index - 1) : nullptr;
}

}  // namespace fi
