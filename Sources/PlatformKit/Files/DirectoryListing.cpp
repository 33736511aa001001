// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Files/DirectoryListing.h"

#include <dirent.h>
#include <errno.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "PlatformKit/Base/Faults.h"
#include "PlatformKit/Files/Visibility.h"
#include "PlatformKit/Text/Unicode.h"

namespace fi {

namespace {

EntryKind kindOf(unsigned char type) {
    switch (type) {
        case DT_REG:
            return EntryKind::File;
        case DT_DIR:
            return EntryKind::Folder;
        case DT_LNK:
            return EntryKind::Link;
        case DT_UNKNOWN:
            return EntryKind::Unknown;
        default:
            return EntryKind::Other;
    }
}

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

unsigned char folded(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
}

/// What a name is sorted by. The first eight folded bytes, as one big-endian number, decide nearly always.
struct SortKey {
    uint64_t prefix = 0;
    uint32_t entry = 0;
    std::string beyondASCII;  ///< the folded name where it is not ASCII
};

SortKey sortKey(std::string_view name, uint32_t entry) {
    SortKey key;
    key.entry = entry;
    if (!isASCII(name)) key.beyondASCII = caseFolded(name);
    const std::string_view text = key.beyondASCII.empty() ? name : std::string_view(key.beyondASCII);
    for (size_t i = 0; i < sizeof key.prefix; ++i) {
        const uint64_t byte = i < text.size() ? folded(text[i]) : 0;
        key.prefix = key.prefix << 8U | byte;
    }
    return key;
}

/// -1, 0 or 1 by the folded bytes. Texts that were folded before are not changed by folding ASCII again.
int compareFolded(std::string_view a, std::string_view b) {
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        const unsigned char x = folded(a[i]);
        const unsigned char y = folded(b[i]);
        if (x != y) return x < y ? -1 : 1;
    }
    if (a.size() == b.size()) return 0;
    return a.size() < b.size() ? -1 : 1;
}

void sortEntries(std::vector<DirectoryEntry>& entries) {
    std::vector<SortKey> keys;
    keys.reserve(entries.size());
    for (uint32_t i = 0; i < entries.size(); ++i)
        keys.push_back(sortKey(entries[i].view(), i));
    const auto text = [&entries](const SortKey& key) {
        return key.beyondASCII.empty() ? entries[key.entry].view() : std::string_view(key.beyondASCII);
    };
    std::sort(keys.begin(), keys.end(), [&](const SortKey& a, const SortKey& b) {
        if (a.prefix != b.prefix) return a.prefix < b.prefix;
        const int order = compareFolded(text(a), text(b));
        return order != 0 ? order < 0 : entries[a.entry].view() < entries[b.entry].view();
    });
    std::vector<DirectoryEntry> sorted;
    sorted.reserve(entries.size());
    for (const SortKey& key : keys)
        sorted.push_back(entries[key.entry]);
    entries.swap(sorted);
}

/// The next entry; null at the end, and with errno set when reading broke off.
const dirent* nextEntry(DIR* folder) {
    errno = 0;
    const dirent* entry = readdir(folder);
    if (entry == nullptr || !faultHappens(Fault::Listing, entry->d_name)) return entry;
    errno = EIO;
    return nullptr;
}

}  // namespace

std::optional<DirectoryListing> DirectoryListing::read(const char* path) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path), &closedir);
    if (!folder) return std::nullopt;
    DirectoryListing listing;
    listing.m_onFAT = isOnFAT(path);
    std::vector<size_t> offsets;
    while (const dirent* entry = nextEntry(folder.get())) {
        if (isDotOrDotDot(entry->d_name)) continue;
        const size_t length = std::strlen(entry->d_name);
        offsets.push_back(listing.m_names.size());
        listing.m_names.insert(listing.m_names.end(), entry->d_name, entry->d_name + length + 1);
        listing.m_entries.push_back({nullptr, static_cast<uint32_t>(length), kindOf(entry->d_type)});
    }
    if (errno != 0) return std::nullopt;  // a part of a folder is not a folder
    for (size_t i = 0; i < offsets.size(); ++i)
        listing.m_entries[i].name = listing.m_names.data() + offsets[i];
    sortEntries(listing.m_entries);
    return listing;
}

}  // namespace fi
