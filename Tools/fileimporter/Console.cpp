// SPDX-License-Identifier: Apache-2.0
#include "Console.h"

#include <fmt/format.h>

#include "ErrorOutput.h"
#include "Text.h"

namespace fi {

void Console::complain(std::string_view subject, std::string_view reason) {
    m_progress.clear();
    writeError(fmt::format("fileimporter: {}: {}\n", printable(subject), printable(reason)));
}

void Console::complain(std::string_view reason) {
    m_progress.clear();
    writeError(fmt::format("fileimporter: {}\n", printable(reason)));
}

}  // namespace fi
