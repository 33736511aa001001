// SPDX-License-Identifier: Apache-2.0
// The tool's entry: reads the command line, runs the command and tells the shell how it went.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <clocale>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <sstream>
#include <string_view>
#include <vector>

#include "Arguments.h"
#include "Console.h"
#include "InfoCommand.h"
#include "ListCommand.h"
#include "PhotoCommand.h"
#include "SampleCardCommand.h"
#include "SheetCommand.h"
#include "Signals.h"
#include "Text.h"

namespace fi {

namespace {

constexpr const char* kPurpose =
    "Finds photos on cards and in folders, tells their facts and shows them upright";

constexpr const char* kStatuses =
    "Exit status: 0 all done, 1 some photos failed (each is named), 2 wrong usage, 3 nothing found.";

using Commands = std::vector<std::unique_ptr<Command>>;

Commands makeCommands(CLI::App& tool) {
    Commands commands;
    commands.push_back(std::make_unique<ListCommand>(tool));
    commands.push_back(std::make_unique<InfoCommand>(tool));
    commands.push_back(std::make_unique<SheetCommand>(tool));
    commands.push_back(std::make_unique<PhotoCommand>(tool));
    commands.push_back(std::make_unique<SampleCardCommand>(tool));
    return commands;
}

/// A file opened later must not get the number of a closed standard stream and be written into. Writing
/// to an output that was closed fails, as it would have.
void fillStandardStreams() {
    constexpr int kModes[] = {O_RDONLY, O_RDONLY, O_WRONLY};
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        // The lowest free number is the one that is given.
        if (fcntl(stream, F_GETFD) < 0) static_cast<void>(open("/dev/null", kModes[stream]));
}

void prepareProcess() {
    fillStandardStreams();
    // A reader of standard output that has gone is told by the write.
    signal(SIGPIPE, SIG_IGN);
    // Names are UTF-8 whatever the environment says; messages of the system stay in English.
    setlocale(LC_CTYPE, "C.UTF-8");
}

/// Tells what was not written of the answer.
ExitStatus statusOfOutput(Console& console, ExitStatus status) {
    const int error = console.out().error();
    if (error == 0) return status;
    console.complain("standard output", strerror(error));
    return ExitStatus::SomeFailed;
}

ExitStatus runCommand(Command& command, bool quiet) {
    Console console(quiet ? Progress::Meter::Silent : Progress::Meter::Shown);
    ExitStatus status = ExitStatus::SomeFailed;
    try {
        status = command.run(console);
    } catch (const std::bad_alloc&) {
        console.complain("there is not enough memory");
    } catch (const std::exception& problem) {
        console.complain(problem.what());
    }
    console.progress().clear();
    return statusOfOutput(console, status);
}

/// Help and version, which the parser reports as errors too, are answers.
ExitStatus answerParser(const CLI::App& tool, const CLI::ParseError& error) {
    std::ostringstream answer;
    if (tool.exit(error, answer, std::cerr) != 0) return ExitStatus::WrongUsage;
    Console console(Progress::Meter::Silent);
    std::string_view text = answer.view();
    if (text.ends_with('\n')) text.remove_suffix(1);
    console.out().line(text);
    return statusOfOutput(console, ExitStatus::AllDone);
}

std::string complaintAbout(const CLI::App* tool, const CLI::Error& error) {
    return tool->get_name() + ": " + printable(error.what()) + "\nRun with --help for more information.\n";
}

ExitStatus runTool(int count, const char* const* words) {
    CLI::App tool(kPurpose, "fileimporter");
    // One at most, so that a file may be called like a command.
    tool.require_subcommand(0, 1);
    tool.set_version_flag("--version", "fileimporter " FILEIMPORTER_VERSION, "Print the version and exit");
    tool.set_help_flag("-h,--help", "Print this help and exit");
    bool quiet = false;
    tool.add_flag("-q,--quiet", quiet, "No progress on the terminal");
    tool.footer(kStatuses);  // the commands inherit it
    tool.failure_message(complaintAbout);
    const Commands commands = makeCommands(tool);
    tool.footer(std::string(kStatuses) + "\nMore: fileimporter COMMAND --help");
    try {
        tool.parse(parserArguments(count, words));
    } catch (const CLI::ParseError& error) {
        return answerParser(tool, error);
    }
    for (const auto& command : commands) {
        if (command->isChosen()) return runCommand(*command, quiet || command->isQuiet());
    }
    std::cerr << tool.help();
    return ExitStatus::WrongUsage;
}

}  // namespace

}  // namespace fi

int main(int count, char** words) {
    fi::prepareProcess();
    fi::ExitStatus status = fi::ExitStatus::SomeFailed;
    try {
        status = fi::runTool(count, words);
    } catch (const std::exception& problem) {
        std::cerr << "fileimporter: " << problem.what() << '\n';
    }
    if (const int signal = fi::stopSignal(); signal != 0) fi::dieOfSignal(signal);
    return static_cast<int>(status);
}
