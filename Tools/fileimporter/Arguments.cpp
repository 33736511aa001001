// SPDX-License-Identifier: Apache-2.0
#include "Arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

namespace fi {

namespace {

constexpr char kMark = '\x01';
constexpr std::string_view kMarkedStarts = "[{%\x01";  // the mark too, so that marking can be undone

std::string marked(std::string_view word) {
    const bool mark = !word.empty() && kMarkedStarts.find(word.front()) != std::string_view::npos;
    return (mark ? std::string(1, kMark) : std::string()) + std::string(word);
}

std::string unmark(std::string& word) {
    if (!word.empty() && word.front() == kMark) word.erase(0, 1);
    return {};  // no complaint
}

/// The parser would take 010 for eight and 0x10 for sixteen.
std::string readDecimal(std::string& word) {
    if (word.empty() || word.find_first_not_of("0123456789") != std::string::npos)
        return "'" + word + "' is not a number in decimal digits";
    word.erase(0, std::min(word.find_first_not_of('0'), word.size() - 1));
    return {};
}

}  // namespace

std::vector<std::string> parserArguments(int count, const char* const* words) {
    std::vector<std::string> arguments;
    for (int i = count - 1; i > 0; --i)
        arguments.push_back(marked(words[i]));
    return arguments;
}

CLI::Option* addPath(CLI::App& app, const char* name, std::string& path, const char* purpose) {
    return app.add_option(name, path, purpose)->transform(CLI::Validator(unmark, ""))->type_name("");
}

CLI::Option* addPaths(CLI::App& app, const char* name, std::vector<std::string>& paths,
                      const char* purpose) {
    return app.add_option(name, paths, purpose)->transform(CLI::Validator(unmark, ""))->type_name("");
}

CLI::Option* addNumber(CLI::App& app, const char* name, uint32_t& number, NumberRange range,
                       const std::string& purpose) {
    return app.add_option(name, number, purpose)
        ->check(CLI::Range(range.least, range.most).description(""))
        ->transform(CLI::Validator(readDecimal, ""))
        ->option_text("N");
}

}  // namespace fi
