// SPDX-License-Identifier: Apache-2.0
#include "SampleCardCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <vector>

#include "Arguments.h"
#include "Console.h"
#include "SampleCardWriter.h"
#include "Signals.h"

namespace fi {

namespace fs = std::filesystem;

namespace {

/// Why the card cannot be made there; nothing when the folder is there and empty.
std::optional<std::string> obstacleIn(const fs::path& folder) {
    std::error_code error;
    if (fs::exists(folder, error)) {
        if (!fs::is_directory(folder, error)) return "it is not a folder";
        const fs::directory_iterator entries(folder, error);
        if (!error && entries != fs::directory_iterator()) return "the folder is not empty";
    } else {
        fs::create_directories(folder, error);
    }
    if (error) return error.message();
    return std::nullopt;
}

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
    if (const auto obstacle = obstacleIn(m_folder)) {
        console.complain(m_folder, *obstacle);
        return ExitStatus::WrongUsage;
    }
    watchSignals();
    const std::vector<SampleFile> files = sampleCard();
    if (!writeAll(SampleCardWriter(m_folder), files, console.progress())) return ExitStatus::SomeFailed;
    console.out().line(summary(m_folder, files));
    return ExitStatus::AllDone;
}

}  // namespace fi
