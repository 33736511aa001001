// SPDX-License-Identifier: Apache-2.0
#include "TagLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "TagValue.h"

namespace fi {

namespace {

constexpr size_t kWidestValue = 64;  // columns
constexpr std::string_view kUnnamed = "-";

using Json = nlohmann::ordered_json;

Json tagJson(const PhotoTag& tag, TagFamily family) {
    const auto name = tagName(family, tag.number);
    Json object;
    object["tag"] = tag.number;
    object["name"] = name ? Json(*name) : Json(nullptr);
    object["type"] = tagTypeName(tag.type);
    object["count"] = tagCount(tag);
    object["value"] = tagJsonValue(tag);
    if (const auto bytes = tagExactText(tag)) object["valueBytes"] = *bytes;
    return object;
}

std::string_view nameOf(const PhotoTag& tag, TagFamily family) {
    return tagName(family, tag.number).value_or(kUnnamed);
}

size_t widestName(const PhotoTags& tags) {
    size_t width = 0;
    for (const TagDirectory& directory : tags.directories) {
        for (const PhotoTag& tag : directory.tags)
            width = std::max(width, nameOf(tag, directory.family).size());
    }
    return width;
}

}  // namespace

Json tagsJson(const PhotoTags& tags) {
    Json object = Json::object();
    for (const TagDirectory& directory : tags.directories) {
        Json& list = object[std::string(directory.name)] = Json::array();
        for (const PhotoTag& tag : directory.tags)
            list.push_back(tagJson(tag, directory.family));
    }
    return object;
}

std::string tagLines(const PhotoTags& tags) {
    std::string text;
    const size_t width = widestName(tags);
    for (const TagDirectory& directory : tags.directories) {
        text += fmt::format("\n  {}", directory.name);
        for (const PhotoTag& tag : directory.tags)
            text +=
                fmt::format("\n    0x{:04x}  {:<{}}  {:<9}  {}", tag.number, nameOf(tag, directory.family),
                            width, tagTypeName(tag.type), tagWords(tag, kWidestValue));
    }
    if (tags.incomplete) {
        text += "\n  there may be more tags, which cannot be read";
    } else if (tags.directories.empty()) {
        text += "\n  no tags";
    }
    return text;
}

}  // namespace fi
