// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/ListedDifferences.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "ImageMetadata/TabbedLines.h"

namespace fi::test {

ListedDifferences listedDifferences() {
    ListedDifferences all;
    std::ifstream table(FI_EXIF_DIFFERENCES);
    EXPECT_TRUE(table) << FI_EXIF_DIFFERENCES;
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line.starts_with('#')) continue;
        const auto cells = splitAtTabs(line);
        if (cells.size() != 7 || cells[6].empty()) {
            ADD_FAILURE() << "not seven cells: " << line;
            continue;
        }
        const uint64_t offset = std::strtoull(cells[4].c_str(), nullptr, 10);
        const bool isNew = all.try_emplace({cells[0], cells[1]},
                                           ListedDifference{cells[2], cells[3], offset, cells[5], cells[6]})
                               .second;
        EXPECT_TRUE(isNew) << "listed twice: " << line;
    }
    return all;
}

}  // namespace fi::test
