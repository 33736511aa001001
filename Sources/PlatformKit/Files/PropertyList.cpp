// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/PropertyList.h"

#include <plist/plist.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "PlatformKit/Array.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Data.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/Files/FileSource.h"
#include "PlatformKit/Files/PropertyListDepth.h"
#include "PlatformKit/Number.h"

namespace fi {

namespace {

constexpr uint64_t kMostBytes = uint64_t{64} << 20;
constexpr int kMostLevels = 64;

struct Free {
    void operator()(void* block) const { std::free(block); }
};
using Text = std::unique_ptr<char, Free>;
using Iterator = std::unique_ptr<void, Free>;

Ref<const NSObject> objectOf(plist_t node);

Ref<const NSObject> arrayOf(plist_t node) {
    CFArray::Elements elements;
    const uint32_t count = plist_array_get_size(node);
    elements.reserve(count);
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    const Iterator owned(iterator);
    for (uint32_t i = 0; i < count; ++i) {
        plist_t item = nullptr;
        plist_array_next_item(node, iterator, &item);
        if (auto object = objectOf(item)) elements.push_back(std::move(object));
    }
    return CFArray::create(std::move(elements));
}

Ref<const NSObject> dictionaryOf(plist_t node) {
    CFDictionary::Entries entries;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const Iterator ownedIterator(iterator);
    while (iterator != nullptr) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        const Text ownedKey(key);
        if (item == nullptr || key == nullptr) break;
        if (auto object = objectOf(item))
            entries.insert_or_assign(CFString::create(key), std::move(object));
    }
    return CFDictionary::create(std::move(entries));
}

Ref<const NSObject> stringOf(plist_t node) {
    char* text = nullptr;
    plist_get_string_val(node, &text);
    const Text owned(text);
    return text == nullptr ? nullptr : CFString::create(text);
}

Ref<const NSObject> dataOf(plist_t node) {
    char* bytes = nullptr;
    uint64_t size = 0;
    plist_get_data_val(node, &bytes, &size);
    const Text owned(bytes);
    return CFData::create({reinterpret_cast<const uint8_t*>(bytes), static_cast<size_t>(size)});
}

Ref<const NSObject> objectOf(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_ARRAY:
            return arrayOf(node);
        case PLIST_DICT:
            return dictionaryOf(node);
        case PLIST_STRING:
            return stringOf(node);
        case PLIST_DATA:
            return dataOf(node);
        case PLIST_BOOLEAN: {
            uint8_t value = 0;
            plist_get_bool_val(node, &value);
            return CFNumber::createBoolean(value != 0);
        }
        case PLIST_UINT: {
            uint64_t value = 0;
            plist_get_uint_val(node, &value);
            return CFNumber::create(static_cast<int64_t>(value));
        }
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(node, &value);
            return CFNumber::create(value);
        }
        default:
            return nullptr;
    }
}

/// All bytes of a regular file; nothing when they are more than kMostBytes, also when the file only grew
/// beyond them while it was read.
std::optional<std::vector<uint8_t>> boundedContents(const char* path) {
    const auto source = openFileSource(path);
    if (!source || source->size() > kMostBytes) return std::nullopt;
    // One byte more than there should be tells a file that grew.
    std::vector<uint8_t> bytes(static_cast<size_t>(source->size()) + 1);
    size_t count = source->read(0, bytes);
    if (count == bytes.size()) {
        bytes.resize(static_cast<size_t>(kMostBytes) + 1);
        count += source->read(count, std::span(bytes).subspan(count));
    }
    if (source->failed() || count > kMostBytes) return std::nullopt;
    bytes.resize(count);
    return bytes;
}

Ref<const NSObject> listOf(std::string_view xml) {
    if (xml.substr(0, 1024).find('<') == std::string_view::npos) return nullptr;
    // The parser's library frees nested nodes by recursion, so depth is bounded before it sees the text.
    if (!nestsAtMost(xml, kMostLevels)) return nullptr;
    plist_t root = nullptr;
    plist_from_xml(xml.data(), static_cast<uint32_t>(xml.size()), &root);
    const std::unique_ptr<void, void (*)(plist_t)> owned(root, &plist_free);
    return root == nullptr ? nullptr : objectOf(root);
}

}  // namespace

Ref<const NSObject> readPropertyList(CFURLRef file) {
    return guarded(
        [&]() -> Ref<const NSObject> {
            if (file == nullptr || file->path() == nullptr) return nullptr;
            const auto bytes = boundedContents(file->path()->c_str());
            if (!bytes) return nullptr;
            return listOf({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
        },
        Ref<const NSObject>());
}

}  // namespace fi
