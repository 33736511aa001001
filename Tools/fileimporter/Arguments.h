// SPDX-License-Identifier: Apache-2.0
// The words of the command line on their way through the parser, which must not change a file's name.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace fi {

/// The words after the program's name, last one first as the parser wants them. The parser takes words in
/// brackets or braces for lists; such words are marked here and come out of addPath() and addPaths() as
/// they were.
[[nodiscard]] std::vector<std::string> parserArguments(int count, const char* const* words);

/// An option or operand that names one file.
CLI::Option* addPath(CLI::App& app, const char* name, std::string& path, const char* purpose);

/// Operands that name files.
CLI::Option* addPaths(CLI::App& app, const char* name, std::vector<std::string>& paths,
                      const char* purpose);

struct NumberRange {
    uint32_t least;
    uint32_t most;
};

/// An option that takes a number in decimal digits.
CLI::Option* addNumber(CLI::App& app, const char* name, uint32_t& number, NumberRange range,
                       const std::string& purpose);

}  // namespace fi
