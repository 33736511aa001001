// SPDX-License-Identifier: Apache-2.0
// fileimporter sheet: all photos of a card on one page.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Command.h"

namespace fi {

class SheetCommand final : public Command {
public:
    explicit SheetCommand(CLI::App& tool);

    [[nodiscard]] ExitStatus run(Console& console) override;

private:
    [[nodiscard]] ExitStatus makeSheet(const std::vector<std::string>& photos, Console& console) const;

    std::vector<std::string> m_paths;
    std::string m_out;
    uint32_t m_columns = 0;
};

}  // namespace fi
