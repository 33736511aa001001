// SPDX-License-Identifier: Apache-2.0
// The guard that measures nesting before anything is built.
#include "PlatformKit/Files/PropertyListDepth.h"

#include <gtest/gtest.h>

#include <string>

namespace fi::test {

namespace {

constexpr std::string_view kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

std::string nested(int levels, const std::string& open = "<array>", const std::string& close = "</array>") {
    std::string text(kHead);
    for (int i = 0; i < levels; ++i)
        text += open;
    for (int i = 0; i < levels; ++i)
        text += close;
    return text + "</plist>";
}

TEST(PropertyListDepth, CountsOpenContainers) {
    EXPECT_TRUE(nestsAtMost(nested(8), 8));
    EXPECT_FALSE(nestsAtMost(nested(9), 8));
    EXPECT_TRUE(nestsAtMost(nested(4, "<array><dict><key>a</key>", "</dict></array>"), 8));
    EXPECT_FALSE(nestsAtMost(nested(5, "<array><dict><key>a</key>", "</dict></array>"), 8));
    EXPECT_FALSE(nestsAtMost(nested(9, "<array\n a=\"/\">", "</array >"), 8));
    EXPECT_TRUE(nestsAtMost("", 0));
}

TEST(PropertyListDepth, SiblingsAndEmptyContainersDoNotNest) {
    std::string text(kHead);
    for (int i = 0; i < 1000; ++i)
        text += "<array></array><dict/><array /><dict\n/>";
    EXPECT_TRUE(nestsAtMost(text, 1));
}

TEST(PropertyListDepth, ClosingTagsInCommentsAndPlainTextDoNotCount) {
    for (const char* hidden : {"<!--</array>-->", "<![CDATA[</array>]]>", "<!-- > --><!--</array>-->"})
        EXPECT_FALSE(nestsAtMost(nested(100, std::string("<array>") + hidden), 64)) << hidden;
}

TEST(PropertyListDepth, OpeningTagsInCommentsDoNotCount) {
    std::string comment = "<!--";
    for (int i = 0; i < 100; ++i)
        comment += "<array>";
    EXPECT_TRUE(nestsAtMost(std::string(kHead) + comment + "--><array></array></plist>", 1));
}

TEST(PropertyListDepth, TextWhoseTagsAreUncertainIsRefused) {
    for (const char* uncertain :
         {"<array", "<array a=\"</array>\">", "<?x \"?></array>\" ?>",
          "<!DOCTYPE plist [ <!ENTITY a \"b\"> ]>", "<!DOCTYPE plist \"[\">", "<!-- never closed",
          "<![CDATA[ never closed", "<array <dict>", "</array>"}) {
        EXPECT_FALSE(nestsAtMost(uncertain, 64)) << uncertain;
    }
}

}  // namespace

}  // namespace fi::test
