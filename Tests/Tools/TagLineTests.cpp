// SPDX-License-Identifier: Apache-2.0
// The tags of a photo as the tool writes them.
#include "TagLine.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace fi::test {
namespace {

/// Values as they stand in little-endian memory.
PhotoTags someTags() {
    return {{{"IFD0",
              TagFamily::Image,
              {{0x010F, 2, std::string("Canon\0", 6)}, {0x0112, 3, std::string("\x06\0", 2)}}},
             {"GPS", TagFamily::Gps, {{0x0001, 2, std::string("N\0", 2)}, {0x00FF, 7, "xyz"}}}},
            false};
}

TEST(TagLine, JsonHasAListForEachDirectoryInTheOrderOfTheFile) {
    EXPECT_EQ(tagsJson(someTags()).dump(),
              R"({"IFD0":[{"tag":271,"name":"Make","type":"ASCII","count":6,"value":"Canon"},)"
              R"({"tag":274,"name":"Orientation","type":"SHORT","count":1,"value":6}],)"
              R"("GPS":[{"tag":1,"name":"GPSLatitudeRef","type":"ASCII","count":2,"value":"N"},)"
              R"({"tag":255,"name":null,"type":"UNDEFINED","count":3,"value":"eHl6"}]})");
}

TEST(TagLine, JsonOfAFileWithoutTagsIsAnEmptyObject) {
    EXPECT_EQ(tagsJson({}).dump(), "{}");
}

TEST(TagLine, JsonGivesTheExactBytesOfATextThatIsNoUtf8) {
    const PhotoTags tags = {{{"IFD0", TagFamily::Image, {{0x8298, 2, std::string("\xA9 me\0", 5)}}}},
                            false};
    EXPECT_EQ(tagsJson(tags).dump(),
              "{\"IFD0\":[{\"tag\":33432,\"name\":\"Copyright\",\"type\":\"ASCII\","
              "\"count\":5,\"value\":\"\uFFFD me\",\"valueBytes\":\"qSBtZQ==\"}]}");
}

TEST(TagLine, AsTextEachTagHasAnAlignedLineUnderItsDirectory) {
    EXPECT_EQ(tagLines(someTags()),
              "\n  IFD0"
              "\n    0x010f  Make            ASCII      Canon"
              "\n    0x0112  Orientation     SHORT      6"
              "\n  GPS"
              "\n    0x0001  GPSLatitudeRef  ASCII      N"
              "\n    0x00ff  -               UNDEFINED  \"xyz\"");
}

TEST(TagLine, TheTextSaysWhenTagsAreMissing) {
    PhotoTags tags = someTags();
    tags.incomplete = true;
    EXPECT_TRUE(tagLines(tags).ends_with("\"xyz\"\n  there may be more tags, which cannot be read"));
    EXPECT_EQ(tagLines({{}, true}), "\n  there may be more tags, which cannot be read");
    EXPECT_EQ(tagLines({}), "\n  no tags");
}

TEST(TagNames, AreThoseOfTheStandardsByDirectory) {
    EXPECT_EQ(tagName(TagFamily::Image, 254), "NewSubfileType");
    EXPECT_EQ(tagName(TagFamily::Image, 274), "Orientation");
    EXPECT_EQ(tagName(TagFamily::Image, 33434), "ExposureTime");
    EXPECT_EQ(tagName(TagFamily::Image, 42240), "Gamma");
    EXPECT_EQ(tagName(TagFamily::Gps, 0), "GPSVersionID");
    EXPECT_EQ(tagName(TagFamily::Gps, 31), "GPSHPositioningError");
    EXPECT_EQ(tagName(TagFamily::Interoperability, 1), "InteroperabilityIndex");
    EXPECT_EQ(tagName(TagFamily::Interoperability, 0x1002), "RelatedImageLength");
    EXPECT_EQ(tagName(TagFamily::Image, 1), std::nullopt);
    EXPECT_EQ(tagName(TagFamily::Gps, 32), std::nullopt);
    EXPECT_EQ(tagName(TagFamily::Interoperability, 0xFFFF), std::nullopt);
}

}  // namespace
}  // namespace fi::test
