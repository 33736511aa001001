// SPDX-License-Identifier: Apache-2.0
// Runs the built tool as a person or a script would, and keeps what it says.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace fi::test {

struct ToolResult {
    int status = -1;  ///< of its exit; -1 when a signal ended it
    int signal = 0;
    std::string out;
    std::string err;

    /// The lines of `out`.
    [[nodiscard]] std::vector<std::string> lines() const;
};

/// The tool at work.
class ToolRun {
public:
    static constexpr const char* kClosed = ">&-";

    /// `out` is where its standard output goes: a file's path, kClosed, or empty to keep it. `err` is the
    /// same for standard error, which is not closed.
    explicit ToolRun(const std::vector<std::string>& arguments, const std::string& out = {},
                     const std::string& err = {});
    ~ToolRun();
    ToolRun(const ToolRun&) = delete;
    ToolRun& operator=(const ToolRun&) = delete;

    [[nodiscard]] pid_t process() const { return m_process; }
    /// Closes our end of its standard output, as a reader does that has seen enough.
    void stopReading();
    /// Reads until it ends. A tool that hangs is killed, and the test fails.
    ToolResult finish(std::chrono::seconds longest = std::chrono::seconds(60));

private:
    void readOn(std::chrono::steady_clock::time_point deadline, ToolResult& result);

    pid_t m_process = -1;
    int m_out = -1;
    int m_err = -1;
};

/// Runs it from beginning to end.
ToolResult runTool(const std::vector<std::string>& arguments);

}  // namespace fi::test
