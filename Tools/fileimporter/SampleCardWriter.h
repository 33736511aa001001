// SPDX-License-Identifier: Apache-2.0
// Puts the files of the made-up card into a folder.
#pragma once

#include <filesystem>
#include <string>

#include "SampleCard.h"

namespace fi {

class SampleCardWriter {
public:
    explicit SampleCardWriter(std::filesystem::path root) : m_root(std::move(root)) {}

    /// Makes a file, with its folders and dates. Throws std::exception with the reason when that fails.
    /// A file system without links or permissions does without them.
    void write(const SampleFile& file) const;

    /// Takes a file away again, and its folders when nothing else is in them.
    void remove(const SampleFile& file) const;

private:
    void writeJpeg(const SampleFile& file, const std::string& path) const;
    void writeContent(const SampleFile& file, const std::string& path) const;

    std::filesystem::path m_root;
};

}  // namespace fi
