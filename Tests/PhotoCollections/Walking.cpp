// SPDX-License-Identifier: Apache-2.0
#include "PhotoCollections/Walking.h"

#include <sys/xattr.h>

#include <algorithm>
#include <array>

#include "PlatformKit/Files/MountTable.h"

namespace fi::test {

namespace {

BrokenReferences* s_broken = nullptr;

/// A path as the mount table spells it.
std::string escaped(std::string_view path) {
    std::string out;
    for (const char c : path)
        out += c == ' ' ? std::string("\\040") : std::string(1, c);
    return out;
}

}  // namespace

Ref<const CFString> text(std::string_view bytes) {
    return CFString::create(bytes);
}

Ref<const CFURL> fileURL(std::string_view path) {
    return CFURL::createFromPath(path);
}

std::string numbered(std::string_view before, size_t number, std::string_view after) {
    return std::string(before).append(std::to_string(number)).append(after);
}

Paths paths(const CFArray& array) {
    Paths found;
    for (size_t i = 0; i < array.count(); ++i)
        found.emplace_back(array.at<CFString>(i)->view());
    return found;
}

Paths paths(const FileSearchDC& search) {
    Paths found;
    for (uint32_t i = 1; i <= search.getFileNum(); ++i)
        found.emplace_back(search.getStringAt(i)->view());
    return found;
}

Paths paths(const CFileSearchDC& search) {
    Paths found;
    for (uint32_t i = 1; i <= search.GetListNum(); ++i) {
        CFURLRef url = nullptr;
        if (search.GetURLAt(&url, i)) found.emplace_back(adopt(url)->path()->view());
    }
    return found;
}

Paths walked(const std::string& folder, int32_t depth) {
    const auto search = make<FileSearchDC>();
    search->open(fileURL(folder).get());
    search->searchStart(depth);
    return paths(*search);
}

Paths walkedBelow(const TemporaryFolder& folder, int32_t depth) {
    Paths found = walked(folder.path(), depth);
    for (std::string& path : found) {
        if (path.starts_with(folder.path() + "/")) path.erase(0, folder.path().size() + 1);
    }
    return found;
}

BrokenReferences::BrokenReferences(Paths paths) : m_paths(std::move(paths)) {
    s_broken = this;
    g_faultInjector = &happens;
}

BrokenReferences::~BrokenReferences() {
    g_faultInjector = nullptr;
    s_broken = nullptr;
}

bool BrokenReferences::happens(Fault fault, std::string_view detail) {
    if (fault != Fault::FileReference) return false;
    s_broken->m_asked.emplace_back(detail);
    return std::find(s_broken->m_paths.begin(), s_broken->m_paths.end(), detail) != s_broken->m_paths.end();
}

MountTableOf::MountTableOf(const Paths& mountPoints) {
    std::string table;
    size_t number = 40;
    for (const std::string& point : mountPoints) {
        table += numbered({}, number++, " 20 8:1 / ") + escaped(point) +
                 " rw,relatime shared:1 - ext4 /dev/sdx1 rw\n";
    }
    m_file = m_folder.write("mountinfo", table);
    setMountTableFile(m_file.c_str());
}

MountTableOf::~MountTableOf() {
    setMountTableFile(nullptr);
}

bool setFinderFlags(const std::string& path, unsigned flags) {
    std::array<unsigned char, 32> info{};
    info[8] = static_cast<unsigned char>(flags >> 8U);
    info[9] = static_cast<unsigned char>(flags & 0xFFU);
    return setxattr(path.c_str(), "user.com.apple.FinderInfo", info.data(), info.size(), 0) == 0;
}

}  // namespace fi::test
