// SPDX-License-Identifier: Apache-2.0
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fi::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "fitest-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    m_path = fs::canonical(pattern).string();
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

std::string TemporaryFolder::at(std::string_view relative) const {
    return m_path + "/" + std::string(relative);
}

std::string TemporaryFolder::write(std::string_view relative, std::string_view bytes) const {
    const std::string path = at(relative);
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + path);
    return path;
}

std::string TemporaryFolder::write(std::string_view relative, std::span<const uint8_t> bytes) const {
    return write(relative, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

std::string TemporaryFolder::makeFolder(std::string_view relative) const {
    fs::create_directories(at(relative));
    return at(relative);
}

std::string TemporaryFolder::link(std::string_view relative, std::string_view target) const {
    const std::string path = at(relative);
    fs::create_directories(fs::path(path).parent_path());
    fs::create_symlink(fs::path(std::string(target)), path);
    return path;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in.good()) << path;
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace fi::test
