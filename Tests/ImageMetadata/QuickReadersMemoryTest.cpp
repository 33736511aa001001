// SPDX-License-Identifier: Apache-2.0
// The quick readers while memory runs out: each answers with one of its codes, and nothing is thrown.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <iterator>
#include <string>

#include "Foundation/HeaderBytes.h"
#include "Foundation/TestText.h"
#include "ImageMetadata/QuickReaders.h"
#include "Support/FailingAllocations.h"
#include "Support/MakePictures.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

size_t openDescriptors() {
    const auto listing = std::filesystem::directory_iterator("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(listing), end(listing)));
}

class QuickReadersMemoryTest : public ::testing::Test {
protected:
    /// Calls `read` once for each of its allocations, which is refused with all that follow, and then
    /// `check`. No file stays open. Returns how often that was.
    static int refuseEach(const std::function<void()>& read, const std::function<void()>& check) {
        for (int successes = 0; successes < 1000; ++successes) {
            SCOPED_TRACE(successes);
            const size_t descriptors = openDescriptors();
            bool thrown = false;
            bool refused = false;
            {
                const FailingAllocations failing(successes);
                try {
                    read();
                } catch (...) {
                    thrown = true;
                }
                refused = failing.happened();
            }
            EXPECT_FALSE(thrown);
            EXPECT_EQ(openDescriptors(), descriptors);
            if (!refused) return successes;
            check();
        }
        return -1;
    }

    const TemporaryFolder m_folder;
    const std::string m_path = m_folder.write(
        "a.jpg", withExif(jpegWith({}), ExifFacts{.orientation = 6, .date = "2019:05:06 07:08:09"}));
    const Ref<const CFURL> m_url = urlAt(m_path);
};

}  // namespace

TEST_F(QuickReadersMemoryTest, AHandleIsAMemoryFailure) {
    Handle handle = nullptr;
    OSErr code = 1;
    const auto expectNone = [&] {
        EXPECT_EQ(code, -108);
        EXPECT_EQ(handle, nullptr);
    };
    EXPECT_GT(refuseEach([&] { code = readDataHandle(m_url.get(), &handle); }, expectNone), 0);
    EXPECT_EQ(code, 0);
    DisposeHandle(handle);
    int32_t got = 1;
    EXPECT_GT(refuseEach([&] { code = readDataHandleOffset(m_url.get(), &handle, 0, 5, &got); },
                         [&] {
                             expectNone();
                             EXPECT_EQ(got, 0);
                         }),
              0);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(got, 5);
    DisposeHandle(handle);
}

TEST_F(QuickReadersMemoryTest, ADateIsAMemoryFailureOrReadFromWhatThereIs) {
    CIMAGETAG tags;
    DateTimeRec date{};
    OSErr code = 1;
    EXPECT_GT(refuseEach([&] { code = readDateFromExifFast(m_url.get(), tags, date); },
                         [&] { EXPECT_TRUE(code == -108 || code == 0) << code; }),
              0);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(date, (DateTimeRec{2019, 5, 6, 7, 8, 9, 0}));
    EXPECT_GT(refuseEach([&] { code = readDate(m_url.get(), 0, tags, date); }, [&] { EXPECT_EQ(code, 0); }),
              0);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(date, (DateTimeRec{2019, 5, 6, 7, 8, 9, 0}));
}

TEST_F(QuickReadersMemoryTest, AnOrientationIsAMemoryFailureOrNone) {
    CIMAGETAG tags;
    int16_t orientation = -1;
    OSErr code = 1;
    EXPECT_GT(refuseEach([&] { code = readOrientationFromExifFast(m_url.get(), tags, orientation); },
                         [&] { EXPECT_TRUE(code == -108 || code == 0) << code; }),
              0);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(orientation, 6);
    EXPECT_GT(refuseEach(
                  [&] {
                      orientation = 4711;
                      code = readExifOrientation(m_url.get(), &orientation);
                  },
                  [&] {
                      EXPECT_EQ(code, 0);
                      EXPECT_EQ(orientation, 4711);
                  }),
              0);
    EXPECT_EQ(orientation, 6);
}

TEST_F(QuickReadersMemoryTest, ASizeIsNone) {
    Rect bounds{-1, -1, -1, -1};
    bool found = true;
    EXPECT_GT(refuseEach([&] { found = checkPhotoSize(nullptr, m_url.get(), &bounds); },
                         [&] {
                             EXPECT_FALSE(found);
                             EXPECT_EQ(bounds, (Rect{-1, -1, -1, -1}));
                         }),
              0);
    EXPECT_TRUE(found);
}

}  // namespace fi::test
