// SPDX-License-Identifier: Apache-2.0
// Every selector of the interface with the member function that stands for it. The table compiles only
// when all exist; Docs/api.md is printed from it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "FileImporter/FileImporter.h"
#include "Support/TemporaryFolder.h"

namespace fi {
namespace {

struct Row {
    std::string_view className;
    std::string_view selector;
    std::string_view method;
    std::string_view result;
    int arguments;
};

template <typename R, typename C, typename... A>
constexpr Row row(std::string_view className, std::string_view selector, std::string_view method,
                  R (C::*)(A...), std::string_view result = "") {
    return {className, selector, method, result, sizeof...(A)};
}
template <typename R, typename C, typename... A>
constexpr Row row(std::string_view className, std::string_view selector, std::string_view method,
                  R (C::*)(A...) const, std::string_view result = "") {
    return {className, selector, method, result, sizeof...(A)};
}

/// Of a method of the class itself.
template <typename R, typename... A>
constexpr Row row(std::string_view className, std::string_view selector, std::string_view method,
                  R (*)(A...), std::string_view result = "") {
    return {className, selector, method, result, sizeof...(A)};
}

const std::vector<Row>& table() {
    using F = FileSearchDC;
    using Z = ZebFileManager;
    using Data = const NSData**;
    static const std::vector<Row> rows = {
        row("FileSearchDC", "open:", "open", &F::open),
        row("FileSearchDC", "close", "close", &F::close),
        row("FileSearchDC", "searchStart:", "searchStart", &F::searchStart),
        row("FileSearchDC", "fileUpdate:", "fileUpdate", &F::fileUpdate),
        row("FileSearchDC", "searchFiles:currentDepth:setArray:", "searchFiles", &F::searchFiles),
        row("FileSearchDC", "CheckExclusionFolders:", "CheckExclusionFolders", &F::CheckExclusionFolders),
        row("FileSearchDC", "CheckJpgOrTif:", "CheckJpgOrTif", &F::CheckJpgOrTif),
        row("FileSearchDC", "fileSort:", "fileSort", &F::fileSort),
        row("FileSearchDC", "fileCompare:setArrayB:", "fileCompare", &F::fileCompare),
        row("FileSearchDC", "addFileFromPath:", "addFileFromPath", &F::addFileFromPath),
        row("FileSearchDC", "getFileNum", "getFileNum", &F::getFileNum),
        row("FileSearchDC", "getStringAt:", "getStringAt", &F::getStringAt, "BORROWED"),
        row("ZebFileManager", "defaultManager", "defaultManager", &Z::defaultManager, "BORROWED"),
        row("ZebFileManager", "terminateManager", "terminateManager", &Z::terminateManager),
        row<OSErr, Z, CFStringRef, Data>("ZebFileManager", "readDataHandle:handle:", "readDataHandle",
                                         &Z::readDataHandle, "AUTORELEASED through `handle`"),
        row<OSErr, Z, CFStringRef, Data, uint32_t*>("ZebFileManager",
                                                    "readDataHandle:handle:readSize:", "readDataHandle",
                                                    &Z::readDataHandle, "AUTORELEASED through `handle`"),
        row<OSErr, Z, CFStringRef, Data, uint32_t*, bool>(
            "ZebFileManager", "readDataHandle:handle:readSize:limit:", "readDataHandle", &Z::readDataHandle,
            "AUTORELEASED through `handle`"),
        row("ZebFileManager", "fileSize:", "fileSize", &Z::fileSize),
        row("ZebFileManager", "fileModDate:date:", "fileModDate", &Z::fileModDate),
        row("ZebFileManager", "fileManager:shouldProceedAfterError:", "fileManager", &Z::fileManager),
        row("ZebFileManager", "readExifTag:info:", "readExifTag", &Z::readExifTag),
        row("ZebFileManager", "exifFromCache:exif:", "exifFromCache", &Z::exifFromCache),
        row("ZebFileManager", "setExifToCahce:exif:", "setExifToCahce", &Z::setExifToCahce),
        row("ZebFileManager", "flushExifCache", "flushExifCache", &Z::flushExifCache),
        row("ZebFileManager", "sizeFromExif:resolution:", "sizeFromExif", &Z::sizeFromExif),
        row("ZebFileManager", "replaceSizeInCache:size:resolution:", "replaceSizeInCache",
            &Z::replaceSizeInCache),
    };
    return rows;
}

std::string printed() {
    std::ostringstream out;
    out << "# Selectors and their member functions\n\n"
           "A selector becomes a member function named by its first keyword; the other keywords name the\n"
           "parameters. Selectors with the same first keyword are overloads, told apart by their number "
           "of\n"
           "arguments. The last column says who owns an object that is returned: OWNED by the caller,\n"
           "AUTORELEASED (it lives until the thread's innermost pool drains) or BORROWED from its "
           "holder.\n\n"
           "| class | selector | member function | result |\n|---|---|---|---|\n";
    for (const Row& entry : table()) {
        out << "| `" << entry.className << "` | `" << entry.selector << "` | `" << entry.method << "` | "
            << entry.result << " |\n";
    }
    return out.str();
}

const std::string kDocument = std::string(FI_SOURCE_DIR) + "/Docs/api.md";

TEST(SelectorTableTest, EveryMemberIsNamedByTheFirstKeywordAndTakesOneArgumentAColon) {
    for (const Row& entry : table()) {
        SCOPED_TRACE(std::string(entry.selector));
        EXPECT_EQ(entry.selector.substr(0, entry.selector.find(':')), entry.method);
        EXPECT_EQ(std::count(entry.selector.begin(), entry.selector.end(), ':'), entry.arguments);
    }
}

TEST(SelectorTableTest, HeadersNameEverySelectorAboveItsDeclaration) {
    for (const Row& entry : table()) {
        const std::string header = test::readFile(std::string(FI_SOURCE_DIR) + "/Include/FileImporter/" +
                                                  std::string(entry.className) + ".h");
        const size_t at = header.find("/// selector: " + std::string(entry.selector) + "\n");
        ASSERT_NE(at, std::string::npos) << entry.selector;
        EXPECT_NE(header.find(" " + std::string(entry.method) + "(", at), std::string::npos)
            << entry.method;
    }
}

TEST(SelectorTableTest, TheTableHasEverySelectorThatAHeaderNames) {
    constexpr std::string_view kMark = "/// selector: ";
    for (const char* className : {"FileSearchDC", "ZebFileManager"}) {
        const std::string header =
            test::readFile(std::string(FI_SOURCE_DIR) + "/Include/FileImporter/" + className + ".h");
        for (size_t at = header.find(kMark); at != std::string::npos; at = header.find(kMark, at + 1)) {
            const size_t start = at + kMark.size();
            const std::string selector = header.substr(start, header.find('\n', start) - start);
            EXPECT_TRUE(std::any_of(table().begin(), table().end(),
                                    [&](const Row& entry) {
                                        return entry.className == className && entry.selector == selector;
                                    }))
                << className << " " << selector;
        }
    }
}

TEST(SelectorTableTest, ApiDocumentIsPrintedFromTheTable) {
    if (std::getenv("FILEIMPORTER_UPDATE_DOCS") != nullptr) std::ofstream(kDocument) << printed();
    EXPECT_EQ(test::readFile(kDocument), printed()) << "run again with FILEIMPORTER_UPDATE_DOCS=1";
}

}  // namespace
}  // namespace fi
