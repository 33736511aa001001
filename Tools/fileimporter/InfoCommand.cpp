// SPDX-License-Identifier: Apache-2.0
#include "InfoCommand.h"

#include <CLI/CLI.hpp>

#include "Arguments.h"
#include "Console.h"
#include "PhotoLine.h"
#include "PhotoTags.h"
#include "PictureFacts.h"

namespace fi {

InfoCommand::InfoCommand(CLI::App& tool) : Command(tool, "info", "Tell the facts of single files") {
    app().add_flag("--tags", m_tags, "Also every tag of JPEG and TIFF files");
    app().add_flag("--json", m_json, "One JSON object a line");
    addPaths(app(), "FILE", m_files, "Photos")->required()->option_text("...");
}

std::string InfoCommand::answerOf(const PhotoFacts& facts) const {
    if (!m_tags) return m_json ? jsonLine(facts, std::nullopt) : factsParagraph(facts);
    const auto tags = readPhotoTags(facts);
    return m_json ? jsonLineWithTags(facts, tags) : factsParagraphWithTags(facts, tags);
}

ExitStatus InfoCommand::run(Console& console) {
    size_t failed = 0;
    size_t missing = 0;
    for (const std::string& file : m_files) {
        const PhotoFacts facts = readPhotoFacts(file);
        if (!console.out().line(answerOf(facts))) break;
        if (!facts.error) continue;
        console.complain(file, facts.error->text);
        ++failed;
        if (facts.error->code == kNotFoundErr) ++missing;
    }
    if (missing == m_files.size()) return ExitStatus::NothingFound;
    return failed > 0 ? ExitStatus::SomeFailed : ExitStatus::AllDone;
}

}  // namespace fi
