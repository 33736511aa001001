// SPDX-License-Identifier: Apache-2.0
#include "SheetCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "Arguments.h"
#include "Console.h"
#include "Finder.h"
#include "OutputFile.h"
#include "PictureFacts.h"
#include "PlatformKit/ImageSource.h"
#include "ResolvedPath.h"
#include "SheetPainter.h"
#include "Signals.h"

namespace fi {

namespace {

/// Draws them all, or as many as there is time for. The number of those that failed.
size_t paintPhotos(SheetPainter& painter, const std::vector<std::string>& photos, Console& console) {
    size_t failed = 0;
    for (size_t i = 0; i < photos.size() && stopSignal() == 0; ++i) {
        if (const auto error = painter.paint(i, photos[i])) {
            console.complain(photos[i], error->text);
            ++failed;
        }
        console.progress().advance(i + 1, photos.size());
    }
    return failed;
}

/// Sheets have sizes of their own and no Exif data. A photo must not be taken for one: it would be lost.
bool isEarlierSheet(const std::string& path) {
    const AutoreleasePool pool;
    const auto source = ImageSource::open(CFURL::createFromPath(path).get());
    const auto properties = source ? source->copyProperties(0) : nullptr;
    if (!properties) return false;
    PhotoFacts facts;
    addPictureFacts(facts, *properties);
    return facts.exif == false &&
           SheetLayout::isPageSize(facts.width.value_or(0), facts.height.value_or(0));
}

}  // namespace

SheetCommand::SheetCommand(CLI::App& tool) : Command(tool, "sheet", "Make a contact sheet of all photos") {
    addPaths(app(), "PATH", m_paths, "Cards, folders or single photos")->required()->option_text("...");
    addPath(app(), "-o,--out", m_out,
            fmt::format("The sheet: a name in {}; an earlier one is replaced, and is no photo",
                        kWritableExtensions)
                .c_str())
        ->required()
        ->option_text("OUT");
    addNumber(app(), "--columns", m_columns, {1, SheetLayout::kMostColumns},
              fmt::format("Photos side by side, 1 to {}", SheetLayout::kMostColumns));
    app().final_callback([this] {
        if (writableType(m_out) == nullptr)
            throw CLI::ValidationError("--out",
                                       fmt::format("the name must end in {}", kWritableExtensions));
    });
}

ExitStatus SheetCommand::run(Console& console) {
    if (const auto fault = faultOfPlace(m_out)) {
        console.complain(m_out, *fault);
        return ExitStatus::SomeFailed;
    }
    SearchOrder order;
    order.paths = m_paths;
    SearchResult found = findPhotos(order, console);
    if (isEarlierSheet(m_out)) std::erase(found.photos, resolvedPath(m_out));
    if (found.photos.empty()) {
        console.complain("no photos were found");
        return ExitStatus::NothingFound;
    }
    if (const auto obstacle = obstacleTo(m_out, found.photos)) {
        console.complain(m_out, *obstacle);
        return ExitStatus::WrongUsage;
    }
    const ExitStatus status = makeSheet(found.photos, console);
    return status == ExitStatus::AllDone && !found.complete ? ExitStatus::SomeFailed : status;
}

ExitStatus SheetCommand::makeSheet(const std::vector<std::string>& photos, Console& console) const {
    const auto layout = SheetLayout::forPhotos(photos.size(), m_columns);
    if (!layout) {
        console.complain(fmt::format("{} photos are too many for one sheet", photos.size()));
        return ExitStatus::WrongUsage;
    }
    auto page = SheetPage::create(*layout);
    if (!page) throw std::bad_alloc();
    watchSignals();
    SheetPainter painter(*page, layout->pictureSide());
    const size_t failed = paintPhotos(painter, photos, console);
    if (stopSignal() != 0) return ExitStatus::SomeFailed;
    const auto picture = page->createImage();
    page.reset();
    if (!picture) throw std::bad_alloc();
    if (const auto problem = writePicture(*picture, m_out)) {
        console.complain(m_out, problem->text);
        return ExitStatus::SomeFailed;
    }
    return failed > 0 ? ExitStatus::SomeFailed : ExitStatus::AllDone;
}

}  // namespace fi
