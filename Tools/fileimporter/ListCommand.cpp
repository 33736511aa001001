// SPDX-License-Identifier: Apache-2.0
#include "ListCommand.h"

#include <CLI/CLI.hpp>

#include "Arguments.h"
#include "Console.h"
#include "PhotoLine.h"
#include "PictureFacts.h"

namespace fi {

namespace {

/// Of a kind that is listed though it cannot be read. What calls itself JPEG or TIFF must be a picture.
bool isListedUnread(const PhotoFacts& facts) {
    const auto type = photoType(facts.path);
    return facts.ofUnknownKind && type != "jpeg" && type != "tiff";
}

PhotoFacts factsForList(const std::string& path) {
    PhotoFacts facts = readPhotoFacts(path);
    if (isListedUnread(facts)) facts.error.reset();
    return facts;
}

}  // namespace

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
    // On a terminal the list itself shows how far it has come.
    const bool showsProgress = !Output::isTerminal();
    size_t index = 0;
    for (const std::string& path : found.photos) {
        const PhotoFacts facts = factsForList(path);
        ++index;
        if (!console.out().line(m_json ? jsonLine(facts, index) : table.row(facts, index))) break;
        if (facts.error) {
            console.complain(path, facts.error->text);
            status = ExitStatus::SomeFailed;
        }
        if (showsProgress) console.progress().advance(index, found.photos.size());
    }
    return status;
}

}  // namespace fi
