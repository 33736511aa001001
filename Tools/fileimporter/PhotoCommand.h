// SPDX-License-Identifier: Apache-2.0
// fileimporter photo: one photo, upright, as a file of its own.
#pragma once

#include <cstdint>
#include <string>

#include "Command.h"
#include "PhotoResult.h"

namespace fi {

class PhotoCommand final : public Command {
public:
    explicit PhotoCommand(CLI::App& tool);

    [[nodiscard]] ExitStatus run(Console& console) override;

private:
    [[nodiscard]] PhotoResult makePhoto() const;

    std::string m_file;
    std::string m_out;
    uint32_t m_limit = 0;  // pixels of the shorter side; 0 without --limit
    bool m_json = false;
};

}  // namespace fi
