// SPDX-License-Identifier: Apache-2.0
// Date, orientation and stored size of real photos, against what exiftool and the test suites of other
// projects say. Where the library's own rules ask for another answer, exif-differences.tsv says so, with
// the rule and the bytes.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>

#include "ImageMetadata/ListedDifferences.h"
#include "ImageMetadata/PhotoFacts.h"
#include "ImageMetadata/TabbedLines.h"
#include "Support/Corpus.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {
namespace {

constexpr const char* kMissing = "the collection of photos is not beside the checkout";

const std::set<std::string> kFolders = {"jpeg-camera",    "jpeg-metadata", "jpeg-orientation",
                                        "jpeg-structure", "tiff",          "tiff-orientation"};

std::string folderOf(const std::string& photo) {
    return photo.substr(0, photo.find('/'));
}

/// Photos of the folders for sound files, by their paths inside the collection: all that the collection's
/// manifest describes as a JPEG or TIFF file, also those whose pictures are odd.
std::vector<std::string> soundPhotos(const std::string& top) {
    std::ifstream manifest(top + "/MANIFEST.tsv");
    std::vector<std::string> photos;
    for (std::string line; std::getline(manifest, line);) {
        const auto cells = splitAtTabs(line);
        if (cells.size() < 5 || !kFolders.contains(folderOf(cells[0]))) continue;
        if (cells[4].find("not recognised as an image") == std::string::npos) photos.push_back(cells[0]);
    }
    return photos;
}

std::string hexAt(const std::string& path, uint64_t offset, size_t length) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(offset));
    std::string hex;
    for (size_t i = 0; i < length; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(file.get()) & 0xFFU);
        hex += digits;
    }
    return hex;
}

/// A line of the table for a difference that is not in it; the last two cells are a person's to find.
std::string unlisted(const std::string& photo, const std::string& fact, const std::string& ours,
                     const std::string& theirs) {
    return "not listed: " + photo + "\t" + fact + "\t" + ours + "\t" + theirs + "\toffset\tbytes\treason";
}

TEST(ExiftoolComparison, FactsAreExiftoolsButForListedRules) {
    const auto top = corpusFolder();
    if (!top) GTEST_SKIP() << kMissing;
    const auto listed = listedDifferences();
    const auto theirs = factsOfExiftool(*top + "/expected/open.exiftool.json");
    const auto photos = soundPhotos(*top);
    EXPECT_GE(photos.size(), 460u);
    std::set<std::pair<std::string, std::string>> seen;
    std::map<std::string, size_t> agreed;
    for (const std::string& photo : photos) {
        ASSERT_TRUE(theirs.contains(photo)) << photo;
        const PhotoFacts ours = factsOfLibrary(*top + "/" + photo);
        for (const auto& [fact, their] : theirs.at(photo)) {
            const std::string& our = ours.at(fact);
            if (our == their) {
                if (our != kNoFact) ++agreed[fact];
                continue;
            }
            const auto entry = listed.find({photo, fact});
            if (entry == listed.end()) {
                ADD_FAILURE() << unlisted(photo, fact, our, their);
                continue;
            }
            seen.insert(entry->first);
            EXPECT_EQ(our, entry->second.ours) << photo << " " << fact;
            EXPECT_EQ(their, entry->second.exiftools) << photo << " " << fact;
        }
    }
    for (const auto& [key, difference] : listed)
        EXPECT_TRUE(seen.contains(key)) << "listed, but no difference: " << key.first << " " << key.second;
    EXPECT_GE(agreed[kDate], 95u);
    EXPECT_GE(agreed[kOrientation], 90u);
    EXPECT_GE(agreed[kSize], 450u);
}

TEST(ExiftoolComparison, ListedBytesStandInTheFiles) {
    const auto top = corpusFolder();
    if (!top) GTEST_SKIP() << kMissing;
    for (const auto& [key, difference] : listedDifferences()) {
        ASSERT_FALSE(difference.hex.empty()) << key.first;
        EXPECT_EQ(hexAt(*top + "/" + key.first, difference.offset, difference.hex.size() / 2),
                  difference.hex)
            << key.first << " " << key.second << " at " << difference.offset;
    }
}

TEST(ExiftoolComparison, OtherProjectsExpectTheSame) {
    const auto top = corpusFolder();
    if (!top) GTEST_SKIP() << kMissing;
    const auto listed = listedDifferences();
    std::map<std::string, std::string> photoOfName;
    for (const std::string& photo : soundPhotos(*top))
        photoOfName[std::filesystem::path(photo).filename().string()] = photo;
    size_t facts = 0;
    for (const auto& [listing, statement] : factsOfOtherProjects(*top + "/upstream-expected")) {
        const auto photo = photoOfName.find(statement.photo);
        if (photo == photoOfName.end()) continue;
        const PhotoFacts ours = factsOfLibrary(*top + "/" + photo->second);
        for (const auto& [fact, their] : statement.facts) {
            const auto entry = listed.find({photo->second, fact});
            ++facts;
            EXPECT_EQ(entry == listed.end() ? ours.at(fact) : entry->second.exiftools, their)
                << listing << " " << fact;
        }
    }
    EXPECT_GE(facts, 250u);
}

}  // namespace
}  // namespace fi::test
