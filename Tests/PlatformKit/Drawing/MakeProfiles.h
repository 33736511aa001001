// SPDX-License-Identifier: Apache-2.0
// ICC profiles for the tests of colours, made by the colour library or byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace fi::test {

using ProfileBytes = std::vector<uint8_t>;

/// sRGB as the library makes it.
[[nodiscard]] ProfileBytes makeSRGBProfile();

/// Curves of gamma 563/256 and primaries far beyond those of sRGB, white of D65.
[[nodiscard]] ProfileBytes makeWideProfile();

/// Gray of a gamma, white of D50.
[[nodiscard]] ProfileBytes makeGrayProfile(double gamma);

/// Inks of a press that does not exist: dull primaries, and a black that is dark gray.
[[nodiscard]] ProfileBytes makeInkProfile();

/// RGB by a grid of colours instead of curves, with the colours of makeWideProfile().
[[nodiscard]] ProfileBytes makeGridProfile();

/// A profile whose only way to the colours is a pipeline of floating-point elements.
[[nodiscard]] ProfileBytes makeFloatingProfile();

}  // namespace fi::test
