// SPDX-License-Identifier: Apache-2.0
// What the tests of the photo walk share: short ways to make arguments and to read results, and stand-ins
// for the parts of the system that a test rules over.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "FileImporter/CFileSearchDC.h"
#include "FileImporter/FileSearchDC.h"
#include "PlatformKit/Base/Faults.h"
#include "PlatformKit/Pdf/PdfQuery.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

using Paths = std::vector<std::string>;

[[nodiscard]] Ref<const CFString> text(std::string_view bytes);
[[nodiscard]] Ref<const CFURL> fileURL(std::string_view path);

/// A name with a number in it.
[[nodiscard]] std::string numbered(std::string_view before, size_t number, std::string_view after = {});

/// The texts in an array.
[[nodiscard]] Paths paths(const CFArray& array);
/// The list of a search, entry by entry.
[[nodiscard]] Paths paths(const FileSearchDC& search);
[[nodiscard]] Paths paths(const CFileSearchDC& search);

/// What a new search finds in `folder`, `depth` levels deep.
[[nodiscard]] Paths walked(const std::string& folder, int32_t depth = 256);
/// The same, without the folder's path before each result.
[[nodiscard]] Paths walkedBelow(const TemporaryFolder& folder, int32_t depth = 256);

/// A query for PDF files in place of the installed one.
class InstalledPdfQuery {
public:
    explicit InstalledPdfQuery(PdfQuery query) : m_before(setPdfQuery(query)) {}
    ~InstalledPdfQuery() { setPdfQuery(m_before); }
    InstalledPdfQuery(const InstalledPdfQuery&) = delete;
    InstalledPdfQuery& operator=(const InstalledPdfQuery&) = delete;

private:
    PdfQuery m_before;
};

/// References to the files at these paths cannot be made. One at a time.
class BrokenReferences {
public:
    explicit BrokenReferences(Paths paths);
    ~BrokenReferences();
    BrokenReferences(const BrokenReferences&) = delete;
    BrokenReferences& operator=(const BrokenReferences&) = delete;

    /// The paths for which a reference was wanted so far.
    [[nodiscard]] const Paths& asked() const { return m_asked; }

private:
    static bool happens(Fault fault, std::string_view detail);

    Paths m_paths;
    mutable Paths m_asked;  ///< grows while a test holds a const object
};

/// A table of mounts in place of the system's.
class MountTableOf {
public:
    explicit MountTableOf(const Paths& mountPoints);
    ~MountTableOf();
    MountTableOf(const MountTableOf&) = delete;
    MountTableOf& operator=(const MountTableOf&) = delete;

private:
    TemporaryFolder m_folder;
    std::string m_file;
};

/// Gives a file or folder Finder information with these flags. False where the file system keeps no
/// attributes of users.
[[nodiscard]] bool setFinderFlags(const std::string& path, unsigned flags);

}  // namespace fi::test
