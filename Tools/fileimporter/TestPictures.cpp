// SPDX-License-Identifier: Apache-2.0
#include "TestPictures.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "TurnedCanvas.h"

namespace fi {

namespace {

struct Light {
    double hour;
    CGContextColor sky;      ///< at the top
    CGContextColor horizon;  ///< where it meets the hills
    double brightness;       ///< of everything below
};

constexpr Light kDay[] = {
    {0, {12, 16, 44}, {30, 38, 78}, 0.22},       {5, {22, 30, 76}, {96, 84, 124}, 0.32},
    {6.5, {74, 104, 170}, {250, 170, 120}, 0.6}, {9, {72, 142, 220}, {206, 226, 240}, 0.92},
    {13, {48, 128, 222}, {190, 222, 246}, 1},    {17, {82, 142, 206}, {236, 222, 190}, 0.9},
    {19.5, {90, 84, 150}, {250, 140, 84}, 0.6},  {21, {34, 36, 92}, {120, 76, 118}, 0.34},
    {24, {12, 16, 44}, {30, 38, 78}, 0.22},
};

constexpr CGContextColor kSun = {255, 244, 196};
constexpr CGContextColor kMoon = {214, 220, 232};
constexpr CGContextColor kFarHills = {118, 150, 152};
constexpr CGContextColor kNearHills = {74, 132, 72};
constexpr CGContextColor kPlate = {250, 250, 246};
constexpr CGContextColor kInk = {36, 38, 44};
constexpr CGContextColor kArrow = {206, 54, 44};

uint8_t mixed(uint8_t a, uint8_t b, double part) {
    return static_cast<uint8_t>(std::lround(a + (b - a) * part));
}

CGContextColor mixed(CGContextColor a, CGContextColor b, double part) {
    return {mixed(a.red, b.red, part), mixed(a.green, b.green, part), mixed(a.blue, b.blue, part)};
}

CGContextColor dimmed(CGContextColor color, double brightness) {
    return mixed({}, color, brightness);
}

Light lightAt(double hour) {
    const double time = std::clamp(hour, 0.0, 24.0);
    const auto* const next = std::find_if(std::begin(kDay) + 1, std::end(kDay) - 1,
                                          [&](const Light& light) { return time < light.hour; });
    const Light& from = *std::prev(next);
    const double part = (time - from.hour) / (next->hour - from.hour);
    return {time, mixed(from.sky, next->sky, part), mixed(from.horizon, next->horizon, part),
            from.brightness + (next->brightness - from.brightness) * part};
}

/// One drawing, with the sizes that follow from its canvas.
class Scene {
public:
    Scene(TurnedCanvas& canvas, const TestPicture& picture)
        : m_canvas(canvas),
          m_light(lightAt(picture.hour)),
          m_frame(picture.frame),
          m_width(static_cast<int>(canvas.width())),
          m_height(static_cast<int>(canvas.height())) {}

    void draw() {
        drawSky();
        drawSun();
        drawHills(kFarHills, 0.56, 0.07, 1.3);
        drawHills(kNearHills, 0.70, 0.05, 2.1);
        drawArrow();
        drawNumber();
    }

private:
    void drawSky() {
        for (int y = 0; y < m_height; ++y) {
            const double part = std::min(1.0, y / (0.66 * m_height));
            m_canvas.fill(0, y, m_width, 1, mixed(m_light.sky, m_light.horizon, part));
        }
    }

    /// The sun crosses the picture from six to twenty, the moon in the rest of the day.
    void drawSun() {
        const bool isDay = m_light.hour >= 6 && m_light.hour < 20;
        const double night = m_light.hour >= 20 ? m_light.hour - 20 : m_light.hour + 4;
        const double way = isDay ? (m_light.hour - 6) / 14 : night / 10;
        const double x = (0.08 + 0.84 * way) * m_width;
        const double y = (0.55 - 0.42 * std::sin(way * 3.14159265)) * m_height;
        drawDisc(x, y, m_width / 20.0, isDay ? kSun : kMoon);
    }

    void drawDisc(double centerX, double centerY, double radius, CGContextColor color) {
        for (int y = static_cast<int>(centerY - radius); y <= static_cast<int>(centerY + radius); ++y) {
            const double away = y + 0.5 - centerY;
            if (std::abs(away) >= radius) continue;
            const double half = std::sqrt(radius * radius - away * away);
            const int left = static_cast<int>(std::lround(centerX - half));
            m_canvas.fill(left, y, static_cast<int>(std::lround(centerX + half)) - left, 1, color);
        }
    }

    void drawHills(CGContextColor color, double level, double swing, double waves) {
        const CGContextColor lit = dimmed(color, m_light.brightness);
        const double shift = m_frame * 0.37 * waves;
        for (int x = 0; x < m_width; ++x) {
            const double angle = 6.2831853 * waves * x / m_width + shift;
            const double wave = 0.7 * std::sin(angle) + 0.3 * std::sin(2.3 * angle + 1);
            const int top = static_cast<int>(std::lround((level - swing * wave) * m_height));
            m_canvas.fill(x, top, 1, m_height - top, lit);
        }
    }

    void drawArrow() {
        const int unit = std::min(m_width, m_height) / 48;
        const int middle = m_width / 2;
        const int top = m_height / 12;
        drawDisc(middle, top + 5.5 * unit, 8.0 * unit, kPlate);
        for (int row = 0; row < 5 * unit; ++row)
            m_canvas.fill(middle - row, top + row, 2 * row + 1, 1, kArrow);
        m_canvas.fill(middle - 2 * unit, top + 5 * unit, 4 * unit + 1, 6 * unit, kArrow);
    }

    void drawNumber() {
        const int unit = std::min(m_width, m_height) / 48;
        const int plateWidth = 29 * unit;
        const int plateHeight = 16 * unit;
        const int left = (m_width - plateWidth) / 2;
        const int top = m_height - plateHeight - m_height / 12;
        m_canvas.fill(left, top, plateWidth, plateHeight, kPlate);
        for (int place = 0; place < 3; ++place) {
            const uint32_t digit = m_frame / (place == 0 ? 100 : place == 1 ? 10 : 1) % 10;
            drawDigit(digit, left + (2 + 9 * place) * unit, top + 2 * unit, unit);
        }
    }

    /// Seven bars in 7 by 12 units.
    void drawDigit(uint32_t digit, int left, int top, int unit) {
        struct Bar {
            int x, y, width, height;
        };
        constexpr Bar kBars[7] = {{0, 0, 7, 2}, {5, 0, 2, 7}, {5, 5, 2, 7}, {0, 10, 7, 2},
                                  {0, 5, 2, 7}, {0, 0, 2, 7}, {0, 5, 7, 2}};
        constexpr uint8_t kLit[10] = {0x3F, 0x06, 0x5B, 0x4F, 0x66, 0x6D, 0x7D, 0x07, 0x7F, 0x6F};
        for (uint32_t bar = 0; bar < 7; ++bar) {
            const Bar& b = kBars[bar];
            if ((kLit[digit] >> bar & 1U) != 0)
                m_canvas.fill(left + b.x * unit, top + b.y * unit, b.width * unit, b.height * unit, kInk);
        }
    }

    TurnedCanvas& m_canvas;
    Light m_light;
    uint32_t m_frame;
    int m_width;
    int m_height;
};

}  // namespace

Ref<const CGImage> drawTestPicture(const TestPicture& picture) {
    TurnedCanvas canvas(kTestPictureWidth, kTestPictureHeight, picture.orientation);
    if (!canvas.isValid()) return nullptr;
    Scene(canvas, picture).draw();
    return canvas.createImage();
}

}  // namespace fi
