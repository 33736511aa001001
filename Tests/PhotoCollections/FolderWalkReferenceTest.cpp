// SPDX-License-Identifier: Apache-2.0
// The walk beside a slow one that is written step by step like the rules: no memory of finished folders,
// no shortcuts, every question asked in its order.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>

#include "PhotoCollections/Walking.h"

namespace fi::test {

namespace {

namespace fs = std::filesystem;

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool isPdfOfOurs(const char* path) {
    return fs::path(path).filename().string().find('y') != std::string::npos;
}

class SlowWalk {
public:
    SlowWalk(int depth, std::set<std::string> volumes, std::set<std::string> broken)
        : m_depth(depth), m_volumes(std::move(volumes)), m_broken(std::move(broken)) {}

    void walk(const std::string& folder, int depth, Paths& found) const {
        if (m_depth <= depth) return;
        for (const std::string& name : namesIn(folder)) {
            const std::string full = std::string(folder).append("/").append(name);
            if (m_volumes.contains(full)) continue;
            std::error_code error;
            const std::string resolved = fs::canonical(full, error).string();
            if (error || !fs::exists(resolved)) continue;
            if (fs::is_directory(resolved)) {
                if (isPackage(resolved)) continue;
                if (isEntered(name)) walk(resolved, depth + 1, found);
                continue;
            }
            if (m_broken.contains(resolved)) return;
            if (isInvisible(resolved)) continue;
            if (std::find(found.begin(), found.end(), resolved) != found.end()) continue;
            if (isListed(resolved)) found.push_back(resolved);
        }
    }

private:
    static Paths namesIn(const std::string& folder) {
        Paths names;
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(folder, error))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
            return std::pair(lower(a), a) < std::pair(lower(b), b);
        });
        return names;
    }

    static bool isPackage(const std::string& folder) {
        return fs::path(folder).extension() == ".app" || fs::exists(folder + "/Contents/PkgInfo");
    }

    static bool isEntered(const std::string& name) {
        static const std::set<std::string> kExcluded = {
            "TRASH",   "RESOURCE.FRK", "___MOVE&RENAME", "THEVOLUMESETTINGSFOLDER",
            "___MOV~", "THEVOL~",      ".TRASHES"};
        return !kExcluded.contains(upper(name));
    }

    static bool isInvisible(const std::string& file) {
        if (!fs::path(file).filename().string().starts_with("._")) return false;
        std::ifstream in(file, std::ios::binary);
        char head[4] = {};
        in.read(head, sizeof head);
        return in.gcount() == 4 && std::string_view(head, 4) == std::string_view("\x00\x05\x16\x07", 4);
    }

    static bool isListed(const std::string& file) {
        static const std::set<std::string> kExtensions = {"JPG", "TIF", "PCT", "PIC"};
        const std::string name = fs::path(file).filename().string();
        const size_t dot = name.rfind('.');
        if (dot == std::string::npos || dot == 0) return false;
        const std::string extension = upper(name.substr(dot + 1));
        if (extension.size() != 3) return false;
        return extension == "PDF" ? isPdfOfOurs(file.c_str()) : kExtensions.contains(extension);
    }

    int m_depth;
    std::set<std::string> m_volumes;
    std::set<std::string> m_broken;
};

/// A small tree with links in all directions.
class RandomTree {
public:
    explicit RandomTree(unsigned seed) : m_engine(seed) {
        m_folders.push_back(m_root.makeFolder("top"));
        const size_t items = 5 + pick(14);
        for (size_t i = 0; i < items; ++i)
            addItem();
    }

    [[nodiscard]] const std::string& start() const { return m_folders.front(); }
    [[nodiscard]] size_t pick(size_t choices) { return m_engine() % choices; }
    [[nodiscard]] Paths someFiles() { return some(m_files, 9); }
    [[nodiscard]] Paths someEntries() {
        Paths entries = some(m_files, 12);
        const Paths folders = some(m_folders, 12);
        entries.insert(entries.end(), folders.begin(), folders.end());
        return entries;
    }

private:
    void addItem() {
        static const Paths kFolders = {"100AB", "a", "B", "b", "Trash", "trash2", "x.app", ".Trashes", "k"};
        static const Paths kFiles = {"1.jpg", "2.JPG", "c.tif",  "C.tif", "5.jpeg", "n.pdf",
                                     "y.pdf", "t.txt", ".h.pct", "noext", "b.pic"};
        const std::string folder = m_folders[pick(m_folders.size())];
        switch (pick(6)) {
            case 0:
            case 1:
                addFolder(folder + "/" + kFolders[pick(kFolders.size())]);
                break;
            case 2:
                addLink(folder);
                break;
            case 3:
                addFile(folder + "/._" + kFiles[pick(kFiles.size())],
                        pick(2) == 0 ? std::string_view("\x00\x05\x16\x07", 4) : std::string_view("else"));
                break;
            default:
                addFile(folder + "/" + kFiles[pick(kFiles.size())], "");
        }
    }

    void addFolder(const std::string& path) {
        std::error_code error;
        if (fs::create_directory(path, error)) m_folders.push_back(path);
        if (pick(12) == 0) {
            fs::create_directory(path + "/Contents", error);
            addFile(path + "/Contents/PkgInfo", "");
        }
    }

    void addFile(const std::string& path, std::string_view bytes) {
        std::error_code error;
        if (fs::exists(fs::symlink_status(path, error))) return;
        std::ofstream out(path, std::ios::binary);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (out.flush()) m_files.push_back(path);
    }

    void addLink(const std::string& folder) {
        static const Paths kLinks = {"0.jpg", "link", "m.jpg", "Trash", "z", "zz.jpg", "v.app"};
        const std::string path = folder + "/" + kLinks[pick(kLinks.size())];
        std::string target = "nowhere";
        const size_t kind = pick(8);
        if (kind < 3) target = m_folders[pick(m_folders.size())];
        if (kind >= 3 && kind < 6 && !m_files.empty()) target = m_files[pick(m_files.size())];
        if (kind == 6) target = path;
        std::error_code error;
        fs::create_symlink(target, path, error);
    }

    Paths some(const Paths& all, size_t oneIn) {
        Paths chosen;
        for (size_t i = 1; i < all.size(); ++i) {
            if (pick(oneIn) == 0) chosen.push_back(all[i]);
        }
        return chosen;
    }

    TemporaryFolder m_root;
    std::mt19937 m_engine;
    Paths m_folders;
    Paths m_files;
};

std::set<std::string> setOf(const Paths& paths) {
    return {paths.begin(), paths.end()};
}

TEST(FolderWalkTest, RandomTreesAreListedAsTheRulesSayStepByStep) {
    const InstalledPdfQuery query(&isPdfOfOurs);
    size_t filesFound = 0;
    for (unsigned seed = 0; seed < 120; ++seed) {
        RandomTree tree(seed);
        const Paths volumes = tree.pick(3) == 0 ? tree.someEntries() : Paths();
        const Paths broken = tree.pick(3) == 0 ? tree.someFiles() : Paths();
        const MountTableOf mounts(volumes);
        const BrokenReferences references(broken);
        for (const int depth : {1, 2, 3, 5}) {
            Paths expected;
            SlowWalk(depth, setOf(volumes), setOf(broken)).walk(tree.start(), 0, expected);
            ASSERT_EQ(walked(tree.start(), depth), expected) << "seed " << seed << ", depth " << depth;
            filesFound += expected.size();
        }
    }
    EXPECT_GT(filesFound, 500U) << "the trees have become too poor to show anything";
}

TEST(FolderWalkTest, RandomTreesAreAppendedToAListAsTheRulesSayStepByStep) {
    const InstalledPdfQuery query(&isPdfOfOurs);
    for (unsigned seed = 1000; seed < 1050; ++seed) {
        RandomTree tree(seed);
        Paths expected;
        const auto search = make<FileSearchDC>();
        search->open(fileURL(tree.start()).get());
        for (const int depth : {1, 4, 2, 5}) {
            SlowWalk(depth, {}, {}).walk(tree.start(), 0, expected);
            search->searchStart(depth);
            ASSERT_EQ(paths(*search), expected) << "seed " << seed << ", depth " << depth;
        }
    }
}

}  // namespace

}  // namespace fi::test
