// SPDX-License-Identifier: Apache-2.0
#include "InfoCommand.h"

#include <CLI/CLI.hpp>

#include "Arguments.h"
#include "Console.h"
#include "PhotoLine.h"
#include "PictureFacts.h"

namespace fi {

InfoCommand::InfoCommand(CLI::App& tool) : Command(tool, "info", "Tell the facts of single files") {
    app().add_flag("--json", m_json, "One JSON object a line");
    addPaths(app(), "FILE", m_files, "Photos")->required()->option_text("...");
}

ExitStatus InfoCommand::run(Console& console) {
    size_t failed = 0;
    size_t missing = 0;
    for (const std::string& file : m_files) {
        const PhotoFacts facts = readPhotoFacts(file);
        if (!console.out().line(m_json ? jsonLine(facts, std::nullopt) : factsParagraph(facts))) break;
        if (!facts.error) continue;
        console.complain(file, facts.error->text);
        ++failed;
        if (facts.error->code == kNotFoundErr) ++missing;
    }
    if (missing == m_files.size()) return ExitStatus::NothingFound;
    return failed > 0 ? ExitStatus::SomeFailed : ExitStatus::AllDone;
}

}  // namespace fi
