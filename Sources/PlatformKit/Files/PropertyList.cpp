// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/PropertyList.h"

#include <plist/plist.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "PlatformKit/Array.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Dictionary.h"
#include "PlatformKit/Files/FileSystem.h"
#include "PlatformKit/Files/PropertyListDepth.h"
#include "PlatformKit/Number.h"

namespace fi {

namespace {

constexpr uint64_t kMostBytes = uint64_t{64} << 20;
constexpr int kMostLevels = 64;

using Text = std::unique_ptr<char, decltype(&std::free)>;

Ref<const NSObject> objectOf(plist_t node);

Ref<const NSObject> arrayOf(plist_t node) {
    CFArray::Elements elements;
    const uint32_t count = plist_array_get_size(node);
    elements.reserve(count);
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    for (uint32_t i = 0; i < count; ++i) {
        plist_t item = nullptr;
        plist_array_next_item(node, iterator, &item);
        if (auto object = objectOf(item)) elements.push_back(std::move(object));
    }
    std::free(iterator);
    return CFArray::create(std::move(elements));
}

Ref<const NSObject> dictionaryOf(plist_t node) {
    CFDictionary::Entries entries;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    while (iterator != nullptr) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        const Text owned(key, &std::free);
        if (item == nullptr || key == nullptr) break;
        if (auto object = objectOf(item))
            entries.insert_or_assign(CFString::create(key), std::move(object));
    }
    std::free(iterator);
    return CFDictionary::create(std::move(entries));
}

Ref<const NSObject> stringOf(plist_t node) {
    char* text = nullptr;
    plist_get_string_val(node, &text);
    const Text owned(text, &std::free);
    return text == nullptr ? nullptr : CFString::create(text);
}

Ref<const NSObject> dataOf(plist_t node) {
    char* bytes = nullptr;
    uint64_t size = 0;
    plist_get_data_val(node, &bytes, &size);
    const Text owned(bytes, &std::free);
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

Ref<const NSObject> read(CFURLRef file) {
    if (file == nullptr || file->path() == nullptr) return nullptr;
    const auto facts = fileFacts(file->path()->c_str(), Links::Follow);
    if (!facts || !facts->isRegular || facts->size > kMostBytes) return nullptr;
    const auto data = contentsOfFile(file->path()->c_str());
    if (!data) return nullptr;
    const std::string_view xml(reinterpret_cast<const char*>(data->bytes().data()), data->length());
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
    return guarded([&] { return read(file); }, Ref<const NSObject>());
}

}  // namespace fi
