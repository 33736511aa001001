// SPDX-License-Identifier: Apache-2.0
// fileimporter info: the facts of single files.
#pragma once

#include <string>
#include <vector>

#include "Command.h"
#include "PhotoFacts.h"

namespace fi {

class InfoCommand final : public Command {
public:
    explicit InfoCommand(CLI::App& tool);

    [[nodiscard]] ExitStatus run(Console& console) override;

private:
    [[nodiscard]] std::string answerOf(const PhotoFacts& facts) const;

    std::vector<std::string> m_files;
    bool m_tags = false;
    bool m_json = false;
};

}  // namespace fi
