// SPDX-License-Identifier: Apache-2.0
// Conversions by tables: gray by one lookup, colours of three curves and a matrix by the sum of lights;
// and Lab, by its formula.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "PlatformKit/Drawing/ColorTask.h"

namespace fi {

/// Linear light that one sample gives to each component of the target; 1 is white.
using Light = std::array<float, 4>;

/// For each of R, G and B the lights at evenly spaced values from none to full.
using Lights = std::array<std::vector<Light>, 3>;

/// How many values of a sample are asked for: every one of a byte; of words the rest is interpolated.
[[nodiscard]] constexpr uint32_t lightNodes(bool words) {
    return words ? 4097 : 256;
}

/// Gray to what the table holds for each of its 256 values, or 65536 with `words`: gray, or R, G, B one
/// after the other for the target sRGB.
[[nodiscard]] std::unique_ptr<const RowConverter> makeToneConverter(std::span<const uint16_t> table,
                                                                    ColorTarget target, bool words);

/// RGB to the sum of the lights of its samples, encoded for the target.
[[nodiscard]] std::unique_ptr<const RowConverter> makeLightConverter(Lights lights, ColorTarget target,
                                                                     bool words);

/// Lab of D50, prepared by prepareLab(), to sRGB.
[[nodiscard]] std::unique_ptr<const RowConverter> makeLabConverter(bool words);

}  // namespace fi
