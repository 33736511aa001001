// SPDX-License-Identifier: Apache-2.0
#include "Tools/ToolRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <sstream>
#include <stdexcept>

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

std::vector<char*> argumentVector(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
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

ToolRun::ToolRun(const std::vector<std::string>& arguments, const std::string& out) {
    std::vector<std::string> words = {FILEIMPORTER_TOOL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const std::vector<char*> pointers = argumentVector(words);
    const Pipe output;
    const Pipe errors;
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (out.empty()) {
        posix_spawn_file_actions_adddup2(&actions, output.write, STDOUT_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY, 0);
    }
    posix_spawn_file_actions_adddup2(&actions, errors.write, STDERR_FILENO);
    const int failure =
        posix_spawn(&m_process, FILEIMPORTER_TOOL, &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output.write);
    close(errors.write);
    m_out = output.read;
    m_err = errors.read;
    if (failure != 0) throw std::runtime_error("the tool cannot be started");
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
