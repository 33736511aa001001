// SPDX-License-Identifier: Apache-2.0
// fileimporter sample-card: a made-up card for trying everything.
#pragma once

#include <string>

#include "Command.h"

namespace fi {

class SampleCardCommand final : public Command {
public:
    explicit SampleCardCommand(CLI::App& tool);

    [[nodiscard]] ExitStatus run(Console& console) override;

private:
    std::string m_folder;
};

}  // namespace fi
