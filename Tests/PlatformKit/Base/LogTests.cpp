// SPDX-License-Identifier: Apache-2.0
// Where lines for the system log go.
#include "PlatformKit/Base/Log.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PlatformKit/Log.h"

namespace fi::test {

namespace {

using Lines = std::vector<std::string>;

void keep(const char* message, void* context) {
    static_cast<Lines*>(context)->emplace_back(message);
}

class Log : public testing::Test {
protected:
    ~Log() override { setLogSink(nullptr, nullptr); }
};

TEST_F(Log, SinkReceivesEachLineAsItIs) {
    Lines lines;
    setLogSink(keep, &lines);
    writeLog("one");
    writeLog("100 %s %n");
    EXPECT_EQ(lines, Lines({"one", "100 %s %n"}));
}

TEST_F(Log, NewSinkReplacesTheOldOne) {
    Lines first;
    Lines second;
    setLogSink(keep, &first);
    setLogSink(keep, &second);
    writeLog("line");
    EXPECT_TRUE(first.empty());
    EXPECT_EQ(second, Lines({"line"}));
}

TEST_F(Log, SinkMayWriteToTheLogItself) {
    static Lines lines;
    lines.clear();
    setLogSink(
        [](const char* message, void*) {
            lines.emplace_back(message);
            if (lines.size() < 3) writeLog("again");
        },
        nullptr);
    writeLog("first");
    EXPECT_EQ(lines, Lines({"first", "again", "again"}));
}

}  // namespace

}  // namespace fi::test
