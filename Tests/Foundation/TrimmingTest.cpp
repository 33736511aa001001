// SPDX-License-Identifier: Apache-2.0
// The part of a photo that is printed: its pixels, and where they come to lie when the photo is turned.
#include "Foundation/Trimming.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <random>
#include <utility>
#include <vector>

#include "FileImporter/Trimming.h"
#include "Foundation/HeaderBytes.h"
#include "Foundation/TestText.h"
#include "Support/TemporaryFolder.h"

namespace fi {

/// How a rectangle appears in the message of a test that fails.
void PrintTo(const Rect& rect, std::ostream* out) {
    *out << "top " << rect.top << ", left " << rect.left << ", bottom " << rect.bottom << ", right "
         << rect.right;
}

namespace test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr TrimRatio kWhole = {{0, 0}, {1, 1}};

struct TrimmingCase {
    const char* why;
    Rect bounds;
    TrimRatio ratio;
    Rect expected;
};

void expectTrimming(const std::vector<TrimmingCase>& cases) {
    for (const TrimmingCase& c : cases)
        EXPECT_EQ(makeTrimmingRect(c.bounds, c.ratio), c.expected) << c.why;
}

TEST(TrimmingTest, FractionsCountFromTheBottomLeft) {
    const Rect photo = {0, 0, 3000, 4000};
    expectTrimming({
        {"the whole photo", photo, kWhole, {0, 0, 3000, 4000}},
        {"its middle", photo, {{0.25, 0.25}, {0.5, 0.5}}, {750, 1000, 2250, 3000}},
        {"y from below", {0, 0, 1000, 1000}, {{0, 0.1}, {1, 0.2}}, {700, 0, 900, 1000}},
        {"the lower left quarter", photo, {{0, 0}, {0.5, 0.5}}, {1500, 0, 3000, 2000}},
        {"the upper right quarter", photo, {{0.5, 0.5}, {0.5, 0.5}}, {0, 2000, 1500, 4000}},
        {"nothing", photo, {}, {3000, 0, 3000, 0}},
    });
}

TEST(TrimmingTest, SidesOutsideOfThePhotoEndAtIt) {
    const Rect photo = {0, 0, 3000, 4000};
    expectTrimming({
        {"left", photo, {{-0.25, 0}, {0.5, 1}}, {0, 0, 3000, 1000}},
        {"right", photo, {{0.75, 0}, {0.5, 1}}, {0, 3000, 3000, 4000}},
        {"top", photo, {{0, 0.75}, {1, 0.5}}, {0, 0, 750, 4000}},
        {"bottom", photo, {{0, -0.25}, {1, 0.5}}, {2250, 0, 3000, 4000}},
        {"all", photo, {{-1, -1}, {3, 3}}, {0, 0, 3000, 4000}},
    });
}

TEST(TrimmingTest, NothingElseIsPutRight) {
    const Rect photo = {0, 0, 3000, 4000};
    expectTrimming({
        {"right below left", photo, {{0.5, 0}, {-0.25, 1}}, {0, 2000, 3000, 1000}},
        {"bottom above top", photo, {{0, 0.5}, {1, -0.25}}, {2250, 0, 1500, 4000}},
        {"all of it left of the photo", photo, {{-0.75, 0}, {0.5, 1}}, {0, 0, 3000, -1000}},
        {"all of it right of the photo", photo, {{1.25, 0}, {0.5, 1}}, {0, 5000, 3000, 4000}},
        {"all of it above the photo", photo, {{0, 1.25}, {1, 0.5}}, {0, 0, -750, 4000}},
        {"all of it below the photo", photo, {{0, -0.75}, {1, 0.5}}, {3750, 0, 3000, 4000}},
        {"a top above the bounds' own", {100, 50, 300, 250}, {{-0.125, 0}, {1, 1.25}}, {50, 25, 300, 225}},
    });
}

TEST(TrimmingTest, TheBoundsOriginIsAdded) {
    expectTrimming({
        {"whole", {100, 200, 1100, 2200}, kWhole, {100, 200, 1100, 2200}},
        {"middle", {100, 200, 1100, 2200}, {{0.25, 0.25}, {0.5, 0.25}}, {600, 700, 850, 1700}},
        {"negative", {-100, -200, 900, 1800}, {{0.25, 0.25}, {0.5, 0.25}}, {400, 300, 650, 1300}},
    });
}

TEST(TrimmingTest, SidesAreTruncatedTowardZero) {
    expectTrimming({
        {"every side between two pixels", {0, 0, 10, 10}, {{0.19, 0.21}, {0.7, 0.6}}, {1, 1, 7, 8}},
        {"left just above -1", {0, 0, 10, 10}, {{-0.09, 0}, {0.05, 1}}, {0, 0, 10, 0}},
        {"right above -2", {0, 0, 10, 10}, {{-0.35, 0}, {0.2, 1}}, {0, 0, 10, -1}},
        {"bottom above -2", {0, 0, 10, 10}, {{0, 1.15}, {1, 0}}, {0, 0, -1, 10}},
        {"top above -1 before an origin", {5, 0, 15, 10}, {{0, 0}, {1, 1.09}}, {5, 0, 15, 10}},
        {"left above -1 before an origin", {0, 5, 10, 15}, {{-0.09, 0}, {1, 1}}, {0, 5, 10, 14}},
    });
}

TEST(TrimmingTest, SumsAreMadeBeforeProducts) {
    // Hundredths are rounded as binary fractions. Products first would give a right of 70 and of 29; 1 - y
    // - height a top of 929, H - (y + height) x H one of 931, and H - y x H a bottom of 72.
    expectTrimming({
        {"thousands", {0, 0, 1000, 1000}, {{0.01, 0.01}, {0.06, 0.06}}, {930, 10, 990, 69}},
        {"hundreds", {0, 0, 100, 100}, {{0.01, 0.29}, {0.29, 0.01}}, {70, 1, 71, 30}},
    });
}

TEST(TrimmingTest, SidesAreTakenModulo16Bits) {
    const Rect photo = {0, 0, 1000, 1000};
    expectTrimming({
        {"right 32,768 is -32,768", photo, {{0, 0}, {32.768, 1}}, {0, 0, 1000, -32768}},
        {"right 65,536 is 0", photo, {{0, 0}, {65.536, 1}}, {0, 0, 1000, 0}},
        {"left 65,600 is 64", photo, {{65.6, 0}, {0, 1}}, {0, 64, 1000, 64}},
        {"left -65,500 is 36", photo, {{-65.5, 0}, {0, 1}}, {0, 36, 1000, 36}},
        {"bottom 70,000 is 4,464, and ends at the photo", photo, {{0, -69}, {1, 70}}, {0, 0, 1000, 1000}},
        {"bottom -64,536 is 1,000", photo, {{0, 65.536}, {1, -64.536}}, {0, 0, 1000, 1000}},
        {"the origin is added modulo 2^16",
         {0, 32000, 10, 32767},
         {{1, 0}, {1, 1}},
         {0, 32767, 10, -32002}},
    });
}

TEST(TrimmingTest, AWidthBeyond16BitsIsNotCut) {
    expectTrimming({{"40,000 wide and high",
                     {-20000, -20000, 20000, 20000},
                     {{0.75, 0.125}, {0.125, 0.125}},
                     {10000, 10000, 15000, 15000}}});
}

TEST(TrimmingTest, NumbersWithoutBoundAreNotUndefined) {
    const Rect photo = {0, 0, 1000, 1000};
    const double huge = std::ldexp(1.0, 900);  // times 1,000 still a multiple of 65,536
    expectTrimming({
        {"x is no number", photo, {{kNotANumber, 0}, {0.5, 1}}, {0, 0, 1000, 0}},
        {"y is no number", photo, {{0, kNotANumber}, {0.5, 1}}, {0, 0, 0, 500}},
        {"width is no number", photo, {{0.25, 0}, {kNotANumber, 1}}, {0, 250, 1000, 0}},
        {"height is no number", photo, {{0, 0.25}, {1, kNotANumber}}, {0, 0, 750, 1000}},
        {"endless", photo, {{0.25, 0.25}, {kInfinity, kInfinity}}, {0, 250, 750, 0}},
        {"endless the other way", photo, {{-kInfinity, kInfinity}, {0.5, 0.5}}, {0, 0, 0, 0}},
        {"huge", photo, {{0.25, 0.25}, {huge, huge}}, {0, 250, 750, 0}},
        {"huge the other way", photo, {{-huge, -huge}, {0.5, 0.5}}, {0, 0, 0, 0}},
        {"2^63 and 4,096 pixels", {0, 0, 2, 2}, {{0x1p62 + 2048, 0}, {0, 1}}, {0, 4096, 2, 2}},
    });
}

/// Toward zero, which is what division does, and modulo 2^16.
int16_t quotient(int64_t a, int64_t b) {
    const int64_t rest = ((a / b) % 65536 + 65536) % 65536;
    return static_cast<int16_t>(rest < 32768 ? rest : rest - 65536);
}

int16_t wrapped(int64_t a) {
    return quotient(a, 1);
}

TEST(TrimmingTest, AgreesWithIntegersWhereBinaryFractionsAreExact) {
    constexpr int64_t kParts = 1024;
    std::mt19937 random(5);
    std::uniform_int_distribution<int> sides(-32768, 32767);
    const auto pick = [&random](int64_t most) {
        return std::uniform_int_distribution<int64_t>(-most, most)(random);
    };
    for (int i = 0; i < 200000; ++i) {
        const int64_t most = i % 3 == 0 ? kParts : (i % 3 == 1 ? 4 * kParts : int64_t{1} << 30);
        const int64_t x = pick(most);
        const int64_t y = pick(most);
        const int64_t width = pick(most);
        const int64_t height = pick(most);
        const auto at = [&] { return static_cast<int16_t>(sides(random)); };
        const Rect bounds = i % 2 == 0 ? Rect{0, 0, at(), at()} : Rect{at(), at(), at(), at()};
        const int64_t w = int64_t{bounds.right} - bounds.left;
        const int64_t h = int64_t{bounds.bottom} - bounds.top;
        const int64_t left = wrapped(quotient(x * w, kParts) + bounds.left);
        const int64_t right = wrapped(quotient((x + width) * w, kParts) + bounds.left);
        const int64_t top = wrapped(quotient((kParts - y - height) * h, kParts) + bounds.top);
        const int64_t bottom = wrapped(quotient((kParts - y) * h, kParts) + bounds.top);
        const auto part = [](int64_t count) { return static_cast<double>(count) / kParts; };
        const Rect expected = {wrapped(top < 0 ? 0 : top), wrapped(left < 0 ? 0 : left),
                               wrapped(bottom > bounds.bottom ? bounds.bottom : bottom),
                               wrapped(right > bounds.right ? bounds.right : right)};
        ASSERT_EQ(makeTrimmingRect(bounds, {{part(x), part(y)}, {part(width), part(height)}}), expected)
            << testing::PrintToString(bounds) << "; " << x << ' ' << y << ' ' << width << ' ' << height;
    }
}

TEST(TrimmingTest, MakingItLeavesTheBoundsAsTheyWere) {
    Rect bounds = {-3, 20, 3000, 4000};
    const Rect before = bounds;
    for (const TrimRatio& ratio : {kWhole, TrimRatio{{-1, -1}, {3, 3}}, TrimRatio{{0.5, 0.5}, {-0.25, 9}}})
        (void)makeTrimmingRect(bounds, ratio);
    EXPECT_EQ(bounds, before);
}

struct TurningCase {
    const char* why;
    Turning turning;
    Rect expected;
    Rect boundsAfterwards;
};

constexpr Rect kPicture = {0, 0, 100, 200};
constexpr Rect kExchanged = {0, 0, 200, 100};
constexpr Rect kTrimming = {10, 20, 30, 40};

void expectTurned(const std::vector<TurningCase>& cases) {
    for (const TurningCase& c : cases) {
        Rect bounds = kPicture;
        EXPECT_EQ(convertTrimmingRect(bounds, kTrimming, c.turning), c.expected) << c.why;
        EXPECT_EQ(bounds, c.boundsAfterwards) << c.why;
    }
}

TEST(TrimmingTest, TurnsWithThePicture) {
    expectTurned({
        {"not at all", {0}, kTrimming, kPicture},
        {"a quarter clockwise", {1}, {20, 70, 40, 90}, kExchanged},
        {"half", {2}, {70, 160, 90, 180}, kPicture},
        {"a quarter back", {3}, {160, 10, 180, 30}, kExchanged},
    });
}

TEST(TrimmingTest, IsMirroredWithThePicture) {
    expectTurned({
        {"horizontally", {0, true, false}, {10, 160, 30, 180}, kPicture},
        {"vertically", {0, false, true}, {70, 20, 90, 40}, kPicture},
        {"both ways, as by a half turn", {0, true, true}, {70, 160, 90, 180}, kPicture},
    });
}

TEST(TrimmingTest, IsMirroredBeforeItIsTurned) {
    expectTurned({
        {"horizontally, a quarter", {1, true, false}, {160, 70, 180, 90}, kExchanged},
        {"vertically, a quarter", {1, false, true}, {20, 10, 40, 30}, kExchanged},
        {"both ways, a quarter", {1, true, true}, {160, 10, 180, 30}, kExchanged},
        {"horizontally, half", {2, true, false}, {70, 20, 90, 40}, kPicture},
        {"vertically, half", {2, false, true}, {10, 160, 30, 180}, kPicture},
        {"horizontally, a quarter back", {3, true, false}, {20, 10, 40, 30}, kExchanged},
        {"vertically, a quarter back", {3, false, true}, {160, 70, 180, 90}, kExchanged},
        {"both ways, a quarter back", {3, true, true}, {20, 70, 40, 90}, kExchanged},
    });
}

TEST(TrimmingTest, OtherRotationsAreNone) {
    for (const int32_t rotation : {-1, -3, 4, 5, 90, 65537, INT32_MIN, INT32_MAX}) {
        SCOPED_TRACE(rotation);
        expectTurned({{"plain", {rotation}, kTrimming, kPicture},
                      {"mirrored", {rotation, true, false}, {10, 160, 30, 180}, kPicture}});
    }
}

TEST(TrimmingTest, TheBoundsTopAndLeftAreNeitherUsedNorTouched) {
    for (int32_t rotation = 0; rotation < 4; ++rotation) {
        Rect plain = kPicture;
        Rect moved = {7, -9, 100, 200};
        const Turning turning = {rotation, true, true};
        EXPECT_EQ(convertTrimmingRect(moved, kTrimming, turning),
                  convertTrimmingRect(plain, kTrimming, turning));
        EXPECT_EQ(moved, (Rect{7, -9, plain.bottom, plain.right}));
    }
}

TEST(TrimmingTest, IsTurnedModulo16Bits) {
    const Rect far = {-32768, 32767, -1, -32000};
    const auto turnedBy = [&](const Turning& turning) {
        Rect bounds = {0, 0, 1000, -2000};
        return convertTrimmingRect(bounds, far, turning);
    };
    EXPECT_EQ(turnedBy({0, true, false}), (Rect{-32768, 30000, -1, 30769}));
    EXPECT_EQ(turnedBy({0, false, true}), (Rect{1001, 32767, -31768, -32000}));
    EXPECT_EQ(turnedBy({1}), (Rect{32767, 1001, -32000, -31768}));
    EXPECT_EQ(turnedBy({2}), (Rect{1001, 30000, -31768, 30769}));
    EXPECT_EQ(turnedBy({3}), (Rect{30000, -32768, 30769, -1}));
}

/// A picture of marked pixels, which is mirrored and turned one pixel at a time.
class Marks {
public:
    Marks(int width, int height) : m_width(width), m_height(height) {}

    void mark(int x, int y) { m_places.emplace_back(x, y); }

    void mirrorHorizontally() {
        for (auto& [x, y] : m_places)
            x = m_width - 1 - x;
    }
    void mirrorVertically() {
        for (auto& [x, y] : m_places)
            y = m_height - 1 - y;
    }
    /// What was at the top comes to the right.
    void turnClockwise() {
        for (auto& place : m_places)
            place = {m_height - 1 - place.second, place.first};
        std::swap(m_width, m_height);
    }

    [[nodiscard]] Rect bounds() const { return {0, 0, side(m_height), side(m_width)}; }
    [[nodiscard]] Rect extent() const {
        Rect found = {side(m_height), side(m_width), 0, 0};
        for (const auto& [x, y] : m_places) {
            found = {std::min(found.top, side(y)), std::min(found.left, side(x)),
                     std::max(found.bottom, side(y + 1)), std::max(found.right, side(x + 1))};
        }
        return found;
    }

private:
    static int16_t side(int value) { return static_cast<int16_t>(value); }

    int m_width;
    int m_height;
    std::vector<std::pair<int, int>> m_places;
};

TEST(TrimmingTest, GoesWhereThePixelsGoInEveryOrientation) {
    std::mt19937 random(7);
    const auto pick = [&random](int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(random);
    };
    for (int i = 0; i < 4000; ++i) {
        Marks marks(pick(1, 24), pick(1, 24));
        Rect bounds = marks.bounds();
        const int left = pick(0, bounds.right - 1);
        const int top = pick(0, bounds.bottom - 1);
        const int right = pick(left + 1, bounds.right);
        const int bottom = pick(top + 1, bounds.bottom);
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x)
                marks.mark(x, y);
        }
        const Rect trimming = marks.extent();
        const Turning turning = {i % 4, (i & 4) != 0, (i & 8) != 0};
        if (turning.mirrorsHorizontally) marks.mirrorHorizontally();
        if (turning.mirrorsVertically) marks.mirrorVertically();
        for (int32_t turn = 0; turn < turning.rotation; ++turn)
            marks.turnClockwise();
        ASSERT_EQ(convertTrimmingRect(bounds, trimming, turning), marks.extent()) << i;
        ASSERT_EQ(bounds, marks.bounds()) << i;
    }
}

TEST(TrimmingTest, OnlyARectangleInvertedBothWaysIsEmpty) {
    struct Case {
        Rect rect;
        bool expected;
    };
    for (const Case& c : {Case{{0, 0, 0, 0}, false}, Case{{0, 0, 10, 10}, false}, Case{{5, 5, 5, 9}, false},
                          Case{{5, 5, 9, 5}, false}, Case{{5, 0, 4, 9}, false}, Case{{0, 5, 9, 4}, false},
                          Case{{5, 5, 4, 5}, false}, Case{{5, 5, 5, 4}, false}, Case{{5, 5, 4, 4}, true},
                          Case{{32767, 32767, -32768, -32768}, true}})
        EXPECT_EQ(EmptyRect(c.rect), c.expected) << testing::PrintToString(c.rect);
}

TEST(TrimmingTest, ShiftsMoveAllFourSides) {
    struct Case {
        Rect rect;
        int16_t dx;
        int16_t dy;
        Rect expected;
    };
    for (const Case& c :
         {Case{{1, 2, 3, 4}, 0, 0, {1, 2, 3, 4}}, Case{{1, 2, 3, 4}, 10, 0, {1, 12, 3, 14}},
          Case{{1, 2, 3, 4}, 0, 10, {11, 2, 13, 4}}, Case{{1, 2, 3, 4}, -5, -100, {-99, -3, -97, -1}},
          Case{{0, 0, 32767, 32767}, 1, 2, {2, 1, -32767, -32768}},
          Case{{-32768, -32768, 0, 0}, -32768, -1, {32767, 0, -1, -32768}}}) {
        Rect rect = c.rect;
        offsetRect(rect, c.dx, c.dy);
        EXPECT_EQ(rect, c.expected) << testing::PrintToString(c.rect);
    }
}

class TrimmingAt : public testing::Test {
protected:
    static constexpr Rect kUntouched = {11, 22, 33, 44};

    [[nodiscard]] OSErr trim(CFURLRef url, const TrimRatio& ratio) {
        return trimmingRectAt(url, ratio, &m_trimming);
    }
    [[nodiscard]] Ref<const CFURL> photo(uint16_t width, uint16_t height) const {
        return urlAt(m_folder.write("photo.jpg", jpegWith({.width = width, .height = height})));
    }

    TemporaryFolder m_folder;
    Rect m_trimming = kUntouched;
};

TEST_F(TrimmingAt, IsThatOfTheStoredPixels) {
    EXPECT_EQ(trim(photo(640, 480).get(), {{0.25, 0.25}, {0.5, 0.5}}), 0);
    EXPECT_EQ(m_trimming, (Rect{120, 160, 360, 480}));
    EXPECT_EQ(trim(photo(640, 480).get(), {{0, 0}, {0.5, 0.25}}), 0);
    EXPECT_EQ(m_trimming, (Rect{360, 0, 480, 320}));
    EXPECT_EQ(trimmingRectAt(photo(640, 480).get(), kWhole, nullptr), 0);
}

TEST_F(TrimmingAt, WithoutAFileIsACode) {
    EXPECT_EQ(trim(urlAt(m_folder.at("missing.jpg")).get(), kWhole), -43);
    EXPECT_EQ(trim(urlWithoutPath().get(), kWhole), -43);
    EXPECT_EQ(trim(nullptr, kWhole), -43);
    EXPECT_EQ(m_trimming, kUntouched);
}

TEST_F(TrimmingAt, OfWhatIsNoImageIsAllZero) {
    EXPECT_EQ(trim(urlAt(m_folder.write("note.jpg", "a text")).get(), kWhole), 0);
    EXPECT_EQ(m_trimming, (Rect{0, 0, 0, 0}));
}

TEST_F(TrimmingAt, OfAPhotoWhoseSidesAreBothTooLongIsLeftAlone) {
    EXPECT_EQ(trim(photo(40000, 32768).get(), kWhole), 0);
    EXPECT_EQ(m_trimming, kUntouched);
}

TEST_F(TrimmingAt, OfAPhotoWithOneSideTooLongIsComputedModulo16Bits) {
    EXPECT_EQ(trim(photo(40000, 1000).get(), kWhole), 0);
    EXPECT_EQ(m_trimming, (Rect{0, 0, 1000, -25536}));
    EXPECT_EQ(trim(photo(1000, 40000).get(), {{0.25, 0.25}, {0.5, 0.5}}), 0);
    EXPECT_EQ(m_trimming, (Rect{0, 250, -25536, 750}));
}

}  // namespace
}  // namespace test
}  // namespace fi
