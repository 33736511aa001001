// SPDX-License-Identifier: Apache-2.0
#include "Command.h"

#include <CLI/CLI.hpp>

namespace fi {

Command::Command(CLI::App& tool, const char* name, const char* purpose)
    : m_app(*tool.add_subcommand(name, purpose)) {
    m_app.add_flag("-q,--quiet", m_quiet, "No progress on the terminal");
}

bool Command::isChosen() const {
    return m_app.parsed();
}

}  // namespace fi
