// SPDX-License-Identifier: Apache-2.0
// fileimporter info: the facts of single files.
#pragma once

#include <string>
#include <vector>

#include "Command.h"

namespace fi {

class InfoCommand final : public Command {
public:
    explicit InfoCommand(CLI::App& tool);

    [[nodiscard]] ExitStatus run(Console& console) override;

private:
    std::vector<std::string> m_files;
    bool m_json = false;
};

}  // namespace fi
