// SPDX-License-Identifier: Apache-2.0
#include "PhotoLine.h"

#include <gtest/gtest.h>

namespace fi::test {
namespace {

PhotoFacts someFacts() {
    PhotoFacts facts;
    facts.path = "/card/DCIM/100ABCDE/ABCD0001.JPG";
    facts.bytes = 123456;
    facts.modified = DateTimeRec{2004, 5, 1, 6, 7, 8, 6};
    return facts;
}

TEST(PhotoLine, JsonHasEveryKeyInOrderAndNullWhereNothingIsKnown) {
    EXPECT_EQ(
        jsonLine(someFacts(), 12),
        R"({"index":12,"path":"/card/DCIM/100ABCDE/ABCD0001.JPG","name":"ABCD0001.JPG","type":"jpeg",)"
        R"("bytes":123456,"modified":"2004-05-01T06:07:08","date":null,"orientation":null,)"
        R"("width":null,"height":null,"exif":null})");
}

TEST(PhotoLine, JsonHasNoIndexForASingleFile) {
    PhotoFacts facts = someFacts();
    facts.date = DateTimeRec{2004, 5, 1, 1, 2, 3, 0};
    facts.orientation = 6;
    facts.width = 640;
    facts.height = 480;
    facts.exif = true;
    EXPECT_EQ(jsonLine(facts, std::nullopt),
              R"({"path":"/card/DCIM/100ABCDE/ABCD0001.JPG","name":"ABCD0001.JPG","type":"jpeg",)"
              R"("bytes":123456,"modified":"2004-05-01T06:07:08","date":"2004-05-01T01:02:03",)"
              R"("orientation":6,"width":640,"height":480,"exif":true})");
}

TEST(PhotoLine, JsonOfAFailureHasItsCodeAndText) {
    PhotoFacts facts;
    facts.path = "gone.tif";
    facts.error = PhotoError{kNotFoundErr, "there is no such file"};
    EXPECT_EQ(
        jsonLine(facts, 1),
        R"({"index":1,"path":"gone.tif","name":"gone.tif","type":"tiff","bytes":null,"modified":null,)"
        R"("date":null,"orientation":null,"width":null,"height":null,"exif":null,)"
        R"("error":{"code":-43,"text":"there is no such file"}})");
}

TEST(PhotoLine, JsonGivesTheExactBytesOfANameThatIsNoUtf8) {
    PhotoFacts facts;
    facts.path = "/c/\xFF.jpg";
    EXPECT_EQ(
        jsonLine(facts, 1).find("{\"index\":1,\"path\":\"/c/\uFFFD.jpg\",\"pathBytes\":\"L2Mv/y5qcGc=\","
                                "\"name\":\"\uFFFD.jpg\",\"type\":\"jpeg\","),
        0U);
}

TEST(PhotoLine, JsonWithTagsHasThemBeforeTheError) {
    PhotoFacts facts;
    facts.path = "a.tif";
    const std::string start =
        R"({"path":"a.tif","name":"a.tif","type":"tiff","bytes":null,"modified":null,"date":null,)"
        R"("orientation":null,"width":null,"height":null,"exif":null,)";
    EXPECT_EQ(jsonLineWithTags(facts, PhotoTags{}), start + R"("tags":{},"tagsIncomplete":false})");
    const PhotoTags tags = {{{"GPS", TagFamily::Gps, {{29, 2, "2004:05:01"}}}}, true};
    EXPECT_EQ(jsonLineWithTags(facts, tags),
              start + R"("tags":{"GPS":[{"tag":29,"name":"GPSDateStamp","type":"ASCII","count":10,)"
                      R"("value":"2004:05:01"}]},"tagsIncomplete":true})");
    facts.error = PhotoError{kNotFoundErr, "there is no such file"};
    EXPECT_EQ(jsonLineWithTags(facts, std::nullopt),
              start + R"("tags":null,"tagsIncomplete":null,)"
                      R"("error":{"code":-43,"text":"there is no such file"}})");
}

TEST(PhotoLine, TheParagraphEndsWithTheTags) {
    PhotoFacts facts;
    facts.path = "a.tif";
    EXPECT_EQ(factsParagraphWithTags(facts, std::nullopt), "a.tif\n  type        tiff");
    EXPECT_EQ(factsParagraphWithTags(facts, PhotoTags{}), "a.tif\n  type        tiff\n  no tags");
}

TEST(PhotoLine, TableAlignsItsColumns) {
    const PhotoTable table({"/a/ABCD0001.JPG", "/a/b.tif"});
    PhotoFacts facts = someFacts();
    facts.date = DateTimeRec{2004, 5, 1, 1, 2, 3, 0};
    facts.orientation = 6;
    facts.width = 4000;
    facts.height = 3000;
    facts.exif = true;
    EXPECT_EQ(table.row(facts, 1),
              "1  ABCD0001.JPG  jpeg   123.5 kB  4000 x 3000  6  exif  2004-05-01 01:02:03");
    PhotoFacts nothing;
    nothing.path = "/a/b.tif";
    facts.exif = false;
    facts.orientation.reset();
    EXPECT_EQ(table.row(facts, 1),
              "1  ABCD0001.JPG  jpeg   123.5 kB  4000 x 3000  -  -     2004-05-01 01:02:03");
    EXPECT_EQ(table.row(nothing, 2), "2  b.tif         tiff          -            -  -  -     -");
}

TEST(PhotoLine, TableKeepsALineToALine) {
    const PhotoTable table({"/a/x\ny.jpg"});
    PhotoFacts facts;
    facts.path = "/a/x\ny.jpg";
    EXPECT_EQ(table.row(facts, 1), "1  x\\ny.jpg  jpeg          -            -  -  -     -");
}

TEST(PhotoFacts, TypeComesFromTheName) {
    EXPECT_EQ(photoType("/a.b/c.JPG"), "jpeg");
    EXPECT_EQ(photoType("c.jpeg"), "jpeg");
    EXPECT_EQ(photoType("c.Tif"), "tiff");
    EXPECT_EQ(photoType("c.tiff"), "tiff");
    EXPECT_EQ(photoType("c.pct"), "pict");
    EXPECT_EQ(photoType("c.PIC"), "pict");
    EXPECT_EQ(photoType("c.bmp"), "bmp");
    EXPECT_EQ(photoType("c.pdf"), "pdf");
    EXPECT_EQ(photoType("c.qal"), "qal");
    EXPECT_EQ(photoType("c.png"), "image");
    EXPECT_EQ(photoType("/a.jpg/c"), "image");
}

}  // namespace
}  // namespace fi::test
