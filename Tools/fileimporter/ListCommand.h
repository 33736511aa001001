// SPDX-License-Identifier: Apache-2.0
// fileimporter list: the photos of cards, folders and lists.
#pragma once

#include "Command.h"
#include "Finder.h"

namespace fi {

class ListCommand final : public Command {
public:
    explicit ListCommand(CLI::App& tool);

    [[nodiscard]] ExitStatus run(Console& console) override;

private:
    SearchOrder m_order;
    bool m_json = false;
};

}  // namespace fi
