// SPDX-License-Identifier: Apache-2.0
#include "PhotoCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "Arguments.h"
#include "Console.h"
#include "OutputFile.h"
#include "PhotoLine.h"
#include "PictureFacts.h"
#include "PlatformKit/AutoreleasePool.h"
#include "PlatformKit/ImageSource.h"
#include "PlatformKit/UprightImage.h"
#include "Signals.h"

namespace fi {

namespace {

constexpr uint32_t kLargestLimit = 65535;  // the longest side of a JPEG file

/// Side of the square into which a picture fits best when its shorter side becomes `limit` pixels: the
/// square does not ask which side that is when the picture is upright. 0, which is no bound, for pictures
/// that are not larger.
uint32_t boxSide(const PhotoFacts& facts, uint32_t limit) {
    const auto width = static_cast<uint64_t>(facts.width.value_or(0));
    const auto height = static_cast<uint64_t>(facts.height.value_or(0));
    const auto [shorter, longer] = std::minmax(width, height);
    if (shorter <= limit) return 0;
    return static_cast<uint32_t>((longer * limit + shorter / 2) / shorter);
}

/// Null when it cannot be read: `failure` then tells why.
Ref<const CGImage> readUpright(const std::string& path, uint32_t limit, ImageFailure* failure) {
    const auto source = ImageSource::open(CFURL::createFromPath(path).get(), failure);
    if (!source) return nullptr;
    if (limit == 0) return createUprightImage(*source, 0, 0, 0, failure);
    const auto properties = source->copyProperties(0, failure);
    if (!properties) return nullptr;
    PhotoFacts facts;
    addPictureFacts(facts, *properties);
    const uint32_t side = boxSide(facts, limit);
    return createUprightImage(*source, 0, side, side, failure);
}

/// Complains about what went wrong. Only a photo that is not there is "nothing found".
ExitStatus statusOf(const PhotoResult& result, Console& console) {
    if (result.readError) console.complain(result.path, result.readError->text);
    if (result.writeError) console.complain(result.output, result.writeError->text);
    if (result.readError && result.readError->code == kNotFoundErr) return ExitStatus::NothingFound;
    return result.readError || result.writeError ? ExitStatus::SomeFailed : ExitStatus::AllDone;
}

}  // namespace

PhotoCommand::PhotoCommand(CLI::App& tool) : Command(tool, "photo", "Make one upright picture of a photo") {
    addPath(app(), "FILE", m_file, "The photo")->required();
    addPath(
        app(), "-o,--out", m_out,
        fmt::format("The picture: a name in {}; an earlier file is replaced", kWritableExtensions).c_str())
        ->required()
        ->option_text("OUT");
    addNumber(app(), "--limit", m_limit, {1, kLargestLimit},
              "Pixels of the shorter side; smaller photos are not enlarged");
    app().add_flag("--json", m_json, "Tell the result as one JSON object");
    app().final_callback([this] {
        if (writableType(m_out) == nullptr)
            throw CLI::ValidationError("--out",
                                       fmt::format("the name must end in {}", kWritableExtensions));
    });
}

ExitStatus PhotoCommand::run(Console& console) {
    if (const auto obstacle = obstacleTo(m_out, {m_file})) {
        console.complain(m_out, *obstacle);
        return ExitStatus::WrongUsage;
    }
    watchSignals();
    const PhotoResult result = makePhoto();
    if (stopSignal() != 0) return ExitStatus::SomeFailed;
    if (m_json) console.out().line(jsonLine(result));
    return statusOf(result, console);
}

PhotoResult PhotoCommand::makePhoto() const {
    const AutoreleasePool pool;
    PhotoResult result;
    result.path = m_file;
    result.output = m_out;
    result.readError = readFileFacts(m_file).error;
    if (result.readError) return result;
    if (const auto fault = faultOfPlace(m_out)) {
        result.writeError = PhotoError{kGenericErr, *fault};
        return result;
    }
    ImageFailure failure;
    const auto picture = readUpright(m_file, m_limit, &failure);
    if (!picture) {
        result.readError = readError(m_file, failure);
        return result;
    }
    if (picture->isDamaged()) result.readError = incompleteError();
    if (stopSignal() != 0) return result;
    result.writeError = writePicture(*picture, m_out);
    if (result.writeError) return result;
    result.width = picture->width();
    result.height = picture->height();
    return result;
}

}  // namespace fi
