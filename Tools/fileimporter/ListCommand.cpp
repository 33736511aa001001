// SPDX-License-Identifier: Apache-2.0
#include "ListCommand.h"

#include <CLI/CLI.hpp>

#include "Arguments.h"
#include "Console.h"
#include "PhotoLine.h"

namespace fi {

ListCommand::ListCommand(CLI::App& tool)
    : Command(tool, "list", "List the photos of a card, a folder or a list") {
    addPath(app(), "--plist", m_order.historyList, "Also the photos of this history list")
        ->option_text("FILE");
    addNumber(app(), "--depth", m_order.depth, {1, SearchOrder::kDeepest},
              "Levels of folders to search, 1 to 256");
    app().add_flag("--json", m_json, "One JSON object a line");
    addPaths(app(), "PATH", m_order.paths, "Cards, folders or single photos")->option_text("...");
    app().final_callback([this] {
        if (m_order.paths.empty() && m_order.historyList.empty()) throw CLI::RequiredError("PATH");
    });
}

ExitStatus ListCommand::run(Console& console) {
    const SearchResult found = findPhotos(m_order, console);
    if (found.photos.empty()) {
        console.complain("no photos were found");
        return ExitStatus::NothingFound;
    }
    const PhotoTable table(found.photos);
    auto status = found.complete ? ExitStatus::AllDone : ExitStatus::SomeFailed;
    size_t index = 0;
    for (const std::string& path : found.photos) {
        const PhotoFacts facts = readFileFacts(path);
        ++index;
        if (!console.out().line(m_json ? jsonLine(facts, index) : table.row(facts, index))) break;
        if (!facts.error) continue;
        console.complain(path, facts.error->text);
        status = ExitStatus::SomeFailed;
    }
    return status;
}

}  // namespace fi
