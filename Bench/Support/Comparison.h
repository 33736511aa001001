// SPDX-License-Identifier: Apache-2.0
// Two ways to do the same work, timed in turns so that both meet the same disturbances.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace fi::bench {

enum class Size : unsigned char {
    Tiny,  ///< once and small, to see that it runs
    Full,
};

/// The size that the program's arguments ask for: "--tiny" or full.
[[nodiscard]] Size sizeFromArguments(int argc, char** argv);

struct Comparison {
    std::string_view name;
    double bound;  ///< the ratio that is to be kept
    int rounds;    ///< turns of each side; the medians count
    std::function<void()> ours;
    std::function<void()> reference;
    std::function<void()> beforeOurs = {};  ///< unmeasured, before each turn
    std::function<void()> beforeReference = {};
    bool elapsed = false;  ///< timed by the clock instead of processor time, for work of several threads
};

/// Runs the comparison and prints its row: name, ratio, ours, reference (milliseconds), bound. Each side
/// runs once before, unmeasured. Returns whether the bound was kept.
bool printRow(const Comparison& comparison);

/// Prints a row for the most memory that a program took. Returns whether the bound was kept.
bool printMemoryRow(std::string_view name, double megabytes, double bound);

}  // namespace fi::bench
