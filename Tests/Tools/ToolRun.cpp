// SPDX-License-Identifier: Apache-2.0
#include "Tools/ToolRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace fi::test {

namespace {

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        read = ends[0];
        write = ends[1];
    }
    int read;
    int write;
};

std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Ours; in a build with sanitizers, leaks of the system's own libraries are passed over without a word.
std::vector<std::string> toolEnvironment() {
    constexpr std::string_view kName = "LSAN_OPTIONS=";
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (!std::string_view(*variable).starts_with(kName)) variables.emplace_back(*variable);
    }
    variables.push_back(std::string(kName) + "suppressions=" FILEIMPORTER_LEAKS ":print_suppressions=0");
    return variables;
}

struct Streams {
    int in;
    int out;
    int err;
    bool closesOut;
};

/// Becomes the tool. An effective user becomes the real one too, or the sanitizers would be lame.
[[noreturn]] void becomeTool(char* const* words, char* const* variables, const Streams& streams) {
    const uid_t user = geteuid();
    const bool ready = streams.in >= 0 && streams.out >= 0 && setresuid(user, user, user) == 0 &&
                       dup2(streams.in, STDIN_FILENO) >= 0 && dup2(streams.out, STDOUT_FILENO) >= 0 &&
                       dup2(streams.err, STDERR_FILENO) >= 0 &&
                       (!streams.closesOut || close(STDOUT_FILENO) == 0);
    if (ready) execve(FILEIMPORTER_TOOL, words, variables);
    _exit(127);
}

void closeOnce(int& descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
}

/// Takes what there is; false at the end.
bool take(int descriptor, std::string& text) {
    std::array<char, 65536> block{};
    const ssize_t count = read(descriptor, block.data(), block.size());
    if (count > 0) text.append(block.data(), static_cast<size_t>(count));
    return count > 0;
}

}  // namespace

std::vector<std::string> ToolResult::lines() const {
    std::vector<std::string> found;
    std::istringstream stream(out);
    for (std::string line; std::getline(stream, line);)
        found.push_back(line);
    return found;
}

ToolRun::ToolRun(const std::vector<std::string>& arguments, const std::string& out,
                 const std::string& err) {
    std::vector<std::string> words = {FILEIMPORTER_TOOL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = toolEnvironment();
    const std::vector<char*> pointers = pointersTo(words);
    const std::vector<char*> environment = pointersTo(variables);
    const Pipe output;
    const Pipe errors;
    m_process = fork();
    if (m_process == 0) {
        const int in = open("/dev/null", O_RDONLY | O_CLOEXEC);
        const bool closes = out == kClosed;
        const int to = out.empty() || closes ? output.write : open(out.c_str(), O_WRONLY | O_CLOEXEC);
        const int complaints =
            err.empty() ? errors.write : open(err.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        becomeTool(pointers.data(), environment.data(), {in, to, complaints, closes});
    }
    close(output.write);
    close(errors.write);
    m_out = output.read;
    m_err = errors.read;
    if (m_process < 0) throw std::runtime_error("the tool cannot be started");
}

ToolRun::~ToolRun() {
    closeOnce(m_out);
    closeOnce(m_err);
    if (m_process <= 0) return;
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
}

void ToolRun::stopReading() {
    closeOnce(m_out);
}

void ToolRun::readOn(std::chrono::steady_clock::time_point deadline, ToolResult& result) {
    while (m_out >= 0 || m_err >= 0) {
        std::array<pollfd, 2> ends = {pollfd{m_out, POLLIN, 0}, pollfd{m_err, POLLIN, 0}};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || poll(ends.data(), ends.size(), static_cast<int>(left.count())) == 0) {
            ADD_FAILURE() << "the tool hangs";
            kill(m_process, SIGKILL);
            return;
        }
        if (ends[0].revents != 0 && !take(m_out, result.out)) closeOnce(m_out);
        if (ends[1].revents != 0 && !take(m_err, result.err)) closeOnce(m_err);
    }
}

ToolResult ToolRun::finish(std::chrono::seconds longest) {
    ToolResult result;
    readOn(std::chrono::steady_clock::now() + longest, result);
    int status = 0;
    waitpid(m_process, &status, 0);
    m_process = -1;
    if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    return result;
}

ToolResult runTool(const std::vector<std::string>& arguments) {
    return ToolRun(arguments).finish();
}

}  // namespace fi::test
