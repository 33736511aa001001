// SPDX-License-Identifier: Apache-2.0
// One of the tool's commands: its words on the command line, and what it does.
#pragma once

#include "ExitStatus.h"

namespace CLI {
class App;
}

namespace fi {

class Console;

class Command {
public:
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    /// True when the command line names this command.
    [[nodiscard]] bool isChosen() const;
    [[nodiscard]] bool isQuiet() const { return m_quiet; }

    /// Does what the command line says.
    [[nodiscard]] virtual ExitStatus run(Console& console) = 0;

protected:
    Command(CLI::App& tool, const char* name, const char* purpose);

    [[nodiscard]] CLI::App& app() { return m_app; }

private:
    CLI::App& m_app;
    bool m_quiet = false;
};

}  // namespace fi
