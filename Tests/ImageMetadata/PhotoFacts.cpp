// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/PhotoFacts.h"

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "Foundation/FileServices.h"
#include "Foundation/ImageFacts.h"
#include "ImageMetadata/ExifFacts.h"

namespace fi::test {

namespace {

using nlohmann::json;

std::string dateText(const DateTimeRec& date) {
    char text[64];
    std::snprintf(text, sizeof text, "%04d:%02d:%02d %02d:%02d:%02d", date.year, date.month, date.day,
                  date.hour, date.minute, date.second);
    return text;
}

std::string numberText(int64_t number) {
    return number == 0 ? std::string(kNoFact) : std::to_string(number);
}

std::string sizeText(int64_t width, int64_t height) {
    if (width == 0 && height == 0) return std::string(kNoFact);
    return std::to_string(width) + "x" + std::to_string(height);
}

int64_t number(const json& record, const char* key) {
    const auto found = record.find(key);
    return found != record.end() && found->is_number_integer() ? found->get<int64_t>() : 0;
}

std::string dateOf(const json& record) {
    for (const char* key : {"ExifIFD:DateTimeOriginal", "ExifIFD:CreateDate"}) {
        const auto found = record.find(key);
        if (found != record.end() && found->is_string()) return found->get<std::string>();
    }
    return std::string(kNoFact);
}

}  // namespace

PhotoFacts factsOfLibrary(const std::string& path) {
    PhotoFacts facts{{kDate, "not read"}, {kOrientation, "not read"}, {kSize, "not read"}};
    ExifInformation info{};
    if (readExifTag(CFString::create(path).get(), info) == kNoErr) {
        DateTimeRec ofTheFile{};
        const bool isOfTheFile =
            modificationDate(path.c_str(), &ofTheFile) == kNoErr && info.date == ofTheFile;
        facts[kDate] = isOfTheFile ? std::string(kNoFact) : dateText(info.date);
        facts[kOrientation] = numberText(info.orientation);
    }
    const Rect bounds = imageBoundsAt(CFURL::createFromPath(path).get());
    facts[kSize] = sizeText(static_cast<uint16_t>(bounds.right), static_cast<uint16_t>(bounds.bottom));
    return facts;
}

std::map<std::string, PhotoFacts> factsOfExiftool(const std::string& jsonPath) {
    std::ifstream file(jsonPath);
    std::map<std::string, PhotoFacts> all;
    for (const json& record : json::parse(file, nullptr, false)) {
        const bool isTiff = !record.contains("File:ImageWidth");
        const char* width = isTiff ? "IFD0:ImageWidth" : "File:ImageWidth";
        const char* height = isTiff ? "IFD0:ImageHeight" : "File:ImageHeight";
        all[record.at("SourceFile").get<std::string>()] = {
            {kDate, dateOf(record)},
            {kOrientation, numberText(number(record, "IFD0:Orientation"))},
            {kSize, sizeText(number(record, width), number(record, height))},
        };
    }
    return all;
}

}  // namespace fi::test
