// SPDX-License-Identifier: Apache-2.0
// Where file systems are mounted.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

namespace fi {

class MountTable {
public:
    /// The table now in force; empty when it cannot be read.
    [[nodiscard]] static MountTable read();
    /// From a file in the format of /proc/self/mountinfo.
    [[nodiscard]] static MountTable readFrom(const char* file);

    /// True for the very path of a mount point; links are not followed.
    [[nodiscard]] bool isMountPoint(const std::string& path) const { return m_points.contains(path); }

private:
    std::unordered_set<std::string> m_points;
};

/// The file that read() reads; tests put another in its place. Null brings the system's back.
void setMountTableFile(const char* file);

}  // namespace fi
