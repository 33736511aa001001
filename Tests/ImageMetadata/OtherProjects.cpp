// SPDX-License-Identifier: Apache-2.0
// The expectations that other projects keep beside the photos of their own test suites: listings, each in
// the words of its program.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "ImageMetadata/PhotoFacts.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;

/// How a project's listing tells one of the facts.
struct Phrase {
    const char* project;
    const char* fact;
    const char* beginning;  ///< of the line, spaces in front left out
    int valueLinesLater;    ///< 0: the value follows in the line; else after "Value: " some lines later
};

constexpr const char* kWidth = "width";
constexpr const char* kHeight = "height";
constexpr const char* kDigitized = "digitized";

constexpr Phrase kPhrases[] = {
    {"exif-py", kDate, "EXIF DateTimeOriginal (ASCII): ", 0},
    {"exif-py", kDigitized, "EXIF DateTimeDigitized (ASCII): ", 0},
    {"exif-py", kOrientation, "Image Orientation (Short): ", 0},
    {"exiftool", kDate, "[EXIF, ExifIFD, Time] 36867 - Date/Time Original: ", 0},
    {"exiftool", kDigitized, "[EXIF, ExifIFD, Time] 36868 - Create Date: ", 0},
    {"exiftool", kOrientation, "[EXIF, IFD0, Image] 274 - Orientation: ", 0},
    {"exiftool", kWidth, "[File, File, Image] ImageWidth - Image Width: ", 0},
    {"exiftool", kHeight, "[File, File, Image] ImageHeight - Image Height: ", 0},
    {"libexif", kDate, ": DateTimeOriginal (ASCII)", 2},
    {"libexif", kDigitized, ": DateTimeDigitized (ASCII)", 2},
    {"libexif", kOrientation, ": Orientation (Short)", 2},
    {"metadata-extractor", kDate, "[Exif SubIFD - 0x9003] Date/Time Original = ", 0},
    {"metadata-extractor", kDigitized, "[Exif SubIFD - 0x9004] Date/Time Digitized = ", 0},
    {"metadata-extractor", kOrientation, "[Exif IFD0 - 0x0112] Orientation = ", 0},
    {"metadata-extractor", kWidth, "[JPEG - 0x0003] Image Width = ", 0},
    {"metadata-extractor", kHeight, "[JPEG - 0x0001] Image Height = ", 0},
};

/// What the projects call the orientations of their photos; the longer wording first.
constexpr std::pair<const char*, const char*> kOrientations[] = {
    {"Horizontal", "1"},    {"Top-left", "1"},  {"Rotate 180", "3"}, {"Rotate 90 CW", "6"},
    {"Rotated 90 CW", "6"}, {"Right-top", "6"}, {"Rotate 270", "8"}, {"Rotated 90 CCW", "8"},
};

std::vector<std::string> linesOf(const fs::path& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        if (line.ends_with('\r')) line.pop_back();
        lines.push_back(std::move(line));
    }
    return lines;
}

/// The value that a line has for the phrase; a line of numbered entries may have the number in front.
std::optional<std::string> valueAt(const std::vector<std::string>& lines, size_t index,
                                   const Phrase& phrase) {
    const size_t found = lines[index].find(phrase.beginning);
    if (phrase.valueLinesLater == 0) {
        if (found != 0) return std::nullopt;
        return lines[index].substr(std::string_view(phrase.beginning).size());
    }
    if (found == std::string::npos) return std::nullopt;
    constexpr std::string_view kValue = "Value: ";
    const std::string& line = lines.at(index + static_cast<size_t>(phrase.valueLinesLater));
    return line.substr(line.find(kValue) + kValue.size());
}

std::string orientationNumber(const std::string& words) {
    if (words.size() == 1) return words;
    for (const auto& [beginning, number] : kOrientations) {
        if (words.find(beginning) != std::string::npos) return number;
    }
    return words;
}

/// The facts of a listing by the names of the phrases; the first mention counts.
PhotoFacts mentioned(const std::vector<std::string>& lines, const std::string& project) {
    PhotoFacts facts;
    for (size_t i = 0; i < lines.size(); ++i) {
        for (const Phrase& phrase : kPhrases) {
            if (project != phrase.project) continue;
            if (const auto value = valueAt(lines, i, phrase)) facts.try_emplace(phrase.fact, *value);
        }
    }
    return facts;
}

PhotoFacts comparable(PhotoFacts facts) {
    const auto take = [&](const char* name) { return facts.extract(name); };
    const auto digitized = take(kDigitized);
    const auto width = take(kWidth);
    const auto height = take(kHeight);
    if (digitized) facts.try_emplace(kDate, digitized.mapped());
    if (width && height) {
        const auto digits = [](const std::string& text) { return text.substr(0, text.find(' ')); };
        facts[kSize] = digits(width.mapped()) + "x" + digits(height.mapped());
    }
    const auto orientation = facts.find(kOrientation);
    if (orientation != facts.end()) orientation->second = orientationNumber(orientation->second);
    return facts;
}

/// exiftool's listings are numbered and name their photo inside; the others have its name themselves.
std::string photoOf(const fs::path& listing, const std::vector<std::string>& lines) {
    constexpr std::string_view kName = "[File, System, Other] FileName - File Name: ";
    for (const std::string& line : lines) {
        if (line.starts_with(kName)) return "exiftool_" + line.substr(kName.size());
    }
    std::string name = listing.filename().string();
    for (const std::string_view ending : {".java.txt", ".txt", ".parsed", ".out"}) {
        if (!name.ends_with(ending)) continue;
        name.resize(name.size() - ending.size());
        break;
    }
    return name;
}

}  // namespace

std::map<std::string, Statement> factsOfOtherProjects(const std::string& folder) {
    std::map<std::string, Statement> all;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        const auto lines = linesOf(entry.path());
        const std::string project = entry.path().parent_path().filename().string();
        all[fs::relative(entry.path(), folder).string()] = {photoOf(entry.path(), lines),
                                                            comparable(mentioned(lines, project))};
    }
    return all;
}

}  // namespace fi::test
