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
#include <vector>

#include "Arguments.h"
#include "Console.h"
#include "InfoCommand.h"
#include "ListCommand.h"
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
    commands.push_back(std::make_unique<SampleCardCommand>(tool));
    return commands;
}

/// A file opened later must not get the number of a closed standard stream and be written into.
void fillStandardStreams() {
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR);
    if (descriptor > STDERR_FILENO) close(descriptor);
}

void prepareProcess() {
    fillStandardStreams();
    // A reader of standard output that has gone is told by the write.
    signal(SIGPIPE, SIG_IGN);
    // Names are UTF-8 whatever the environment says; messages of the system stay in English.
    setlocale(LC_CTYPE, "C.UTF-8");
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
    if (const int error = console.out().error(); error != 0) {
        console.complain("standard output", strerror(error));
        status = ExitStatus::SomeFailed;
    }
    return status;
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
        return tool.exit(error, std::cout, std::cerr) == 0 ? ExitStatus::AllDone : ExitStatus::WrongUsage;
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
