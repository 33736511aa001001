// SPDX-License-Identifier: Apache-2.0
#include "PhotoLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "TagLine.h"
#include "Text.h"

namespace fi {

namespace {

constexpr size_t kWidestName = 48;
constexpr std::string_view kUnknown = "-";

using Json = nlohmann::ordered_json;

template <typename T>
Json orNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json orNull(const std::optional<DateTimeRec>& date) {
    return date ? Json(isoDate(*date)) : Json(nullptr);
}

std::string dateOr(const std::optional<DateTimeRec>& date, std::string_view otherwise) {
    return date ? readableDate(*date) : std::string(otherwise);
}

std::string padded(const std::string& text, size_t width) {
    const size_t taken = displayWidth(text);
    return text + std::string(taken < width ? width - taken : 0, ' ');
}

std::string dateBetween(const DateTimeRec& date, char separator) {
    return fmt::format("{:04}-{:02}-{:02}{}{:02}:{:02}:{:02}", date.year, date.month, date.day, separator,
                       date.hour, date.minute, date.second);
}

std::string sizeWords(uint64_t bytes) {
    return bytes < 1000 ? fmt::format("{} bytes", bytes)
                        : fmt::format("{} ({} bytes)", readableSize(bytes), bytes);
}

std::string pixelWords(const PhotoFacts& facts) {
    if (!facts.width || !facts.height) return std::string(kUnknown);
    return fmt::format("{} x {}", *facts.width, *facts.height);
}

void addPathAs(Json& object, const std::string& key, const std::string& path) {
    object[key] = asUtf8(path);
    if (!isUtf8(path)) object[key + "Bytes"] = base64(path);
}

void addFacts(Json& object, const PhotoFacts& facts) {
    addPathAs(object, "path", facts.path);
    object["name"] = asUtf8(fileName(facts.path));
    object["type"] = photoType(facts.path);
    object["bytes"] = orNull(facts.bytes);
    object["modified"] = orNull(facts.modified);
    object["date"] = orNull(facts.date);
    object["orientation"] = orNull(facts.orientation);
    object["width"] = orNull(facts.width);
    object["height"] = orNull(facts.height);
    object["exif"] = orNull(facts.exif);
}

void addError(Json& object, const std::optional<PhotoError>& error) {
    if (error) object["error"] = {{"code", error->code}, {"text", asUtf8(error->text)}};
}

}  // namespace

std::string isoDate(const DateTimeRec& date) {
    return dateBetween(date, 'T');
}

std::string readableDate(const DateTimeRec& date) {
    return dateBetween(date, ' ');
}

std::string jsonLine(const PhotoFacts& facts, std::optional<size_t> index) {
    Json object;
    if (index) object["index"] = *index;
    addFacts(object, facts);
    addError(object, facts.error);
    return object.dump();
}

std::string jsonLineWithTags(const PhotoFacts& facts, const std::optional<PhotoTags>& tags) {
    Json object;
    addFacts(object, facts);
    object["tags"] = tags ? tagsJson(*tags) : Json(nullptr);
    object["tagsIncomplete"] = tags ? Json(tags->incomplete) : Json(nullptr);
    addError(object, facts.error);
    return object.dump();
}

std::string jsonLine(const PhotoResult& result) {
    Json object;
    addPathAs(object, "path", result.path);
    addPathAs(object, "output", result.output);
    object["width"] = orNull(result.width);
    object["height"] = orNull(result.height);
    addError(object, result.writeError ? result.writeError : result.readError);
    return object.dump();
}

std::string factsParagraph(const PhotoFacts& facts) {
    std::string text = printable(facts.path);
    const auto add = [&text](std::string_view what, const std::string& value) {
        text += fmt::format("\n  {:<12}{}", what, value);
    };
    add("type", std::string(photoType(facts.path)));
    if (facts.bytes) add("size", sizeWords(*facts.bytes));
    if (facts.modified) add("modified", readableDate(*facts.modified));
    if (facts.date) add("date", readableDate(*facts.date));
    if (facts.width && facts.height) add("pixels", pixelWords(facts));
    if (facts.orientation) add("orientation", fmt::format("{}", *facts.orientation));
    if (facts.exif) add("exif", *facts.exif ? "yes" : "no");
    if (facts.error) add("error", facts.error->text);
    return text;
}

std::string factsParagraphWithTags(const PhotoFacts& facts, const std::optional<PhotoTags>& tags) {
    return factsParagraph(facts) + (tags ? tagLines(*tags) : std::string());
}

PhotoTable::PhotoTable(const std::vector<std::string>& paths)
    : m_indexWidth(fmt::formatted_size("{}", paths.size())) {
    for (const std::string& path : paths)
        m_nameWidth = std::max(m_nameWidth, displayWidth(printable(fileName(path))));
    m_nameWidth = std::min(m_nameWidth, kWidestName);
}

std::string PhotoTable::row(const PhotoFacts& facts, size_t index) const {
    const std::string bytes = facts.bytes ? readableSize(*facts.bytes) : std::string(kUnknown);
    const std::string orientation =
        facts.orientation ? fmt::format("{}", *facts.orientation) : std::string(kUnknown);
    return fmt::format("{:>{}}  {}  {:<5}  {:>8}  {:>11}  {}  {:<4}  {}", index, m_indexWidth,
                       padded(printable(fileName(facts.path)), m_nameWidth), photoType(facts.path), bytes,
                       pixelWords(facts), orientation, facts.exif == true ? "exif" : kUnknown,
                       dateOr(facts.date, kUnknown));
}

}  // namespace fi
