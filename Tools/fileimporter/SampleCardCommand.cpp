// SPDX-License-Identifier: Apache-2.0
#include "SampleCardCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <vector>

#include "Arguments.h"
#include "Console.h"
#include "SampleCardFolder.h"
#include "SampleCardWriter.h"
#include "Signals.h"

namespace fi {

namespace {

/// All or nothing: what was made is taken away again when a file fails or the user stops the run, for
/// which the answer is false.
bool writeAll(const SampleCardWriter& writer, const std::vector<SampleFile>& files, Progress& progress) {
    size_t begun = 0;
    const auto takeAway = [&] {
        for (size_t i = begun; i > 0; --i)
            writer.remove(files[i - 1]);
    };
    try {
        while (begun < files.size() && stopSignal() == 0) {
            const AutoreleasePool pool;
            writer.write(files[begun++]);
            progress.advance(begun, files.size());
        }
    } catch (...) {
        takeAway();
        throw;
    }
    if (begun < files.size()) takeAway();
    return begun == files.size();
}

std::string summary(const std::string& folder, const std::vector<SampleFile>& files) {
    const auto photos =
        std::count_if(files.begin(), files.end(), [](const auto& file) { return file.isListed; });
    const auto whole = std::count_if(files.begin(), files.end(), [](const auto& file) {
        return file.isListed && isWholePicture(file.kind);
    });
    return fmt::format("{}: {} photos to be found, {} of them damaged or unreadable", folder, photos,
                       photos - whole);
}

}  // namespace

SampleCardCommand::SampleCardCommand(CLI::App& tool)
    : Command(tool, "sample-card", "Make a small made-up card for trying everything") {
    addPath(app(), "DIR", m_folder, "A folder that is empty or not there yet")->required();
}

ExitStatus SampleCardCommand::run(Console& console) {
    SampleCardFolder folder(m_folder);
    if (const auto obstacle = folder.prepare()) {
        console.complain(m_folder, *obstacle);
        return ExitStatus::WrongUsage;
    }
    watchSignals();
    const std::vector<SampleFile> files = sampleCard();
    if (!writeAll(SampleCardWriter(m_folder), files, console.progress())) return ExitStatus::SomeFailed;
    folder.keep();
    console.out().line(summary(m_folder, files));
    return ExitStatus::AllDone;
}

}  // namespace fi
