// SPDX-License-Identifier: Apache-2.0
#include "Console.h"

#include <fmt/format.h>

#include <cstdio>

#include "Text.h"

namespace fi {

namespace {

/// As fmt::print, but a standard error that is gone is no reason to stop.
void writeError(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace

void Console::complain(std::string_view subject, std::string_view reason) {
    m_progress.clear();
    writeError(fmt::format("fileimporter: {}: {}\n", printable(subject), printable(reason)));
}

void Console::complain(std::string_view reason) {
    m_progress.clear();
    writeError(fmt::format("fileimporter: {}\n", printable(reason)));
}

}  // namespace fi
