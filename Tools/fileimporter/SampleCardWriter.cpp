// SPDX-License-Identifier: Apache-2.0
#include "SampleCardWriter.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "FileImporter/FileTypeCodes.h"
#include "PictureFacts.h"
#include "PlatformKit/ImageDestination.h"
#include "PlatformKit/URL.h"
#include "SampleExif.h"
#include "Text.h"

namespace fi {

namespace fs = std::filesystem;

namespace {

constexpr double kQuality = 0.85;
constexpr std::string_view kCompanion("\x00\x05\x16\x07\x00\x02\x00\x00", 8);
constexpr const char* kText = "This is a text. Its name says that it is a photo.\n";
constexpr const char* kJunk = "This stands here for a file that is no photo.\n";
constexpr const char* kPrintOrder =
    "[HDR]\r\n"
    "GEN REV = 01.10\r\n"
    "GEN CRT = \"Sample Camera\" -01.00\r\n"
    "GEN DTM = 2004:05:01:23:30:00\r\n"
    "\r\n"
    "[JOB]\r\n"
    "PRT PID = 001\r\n"
    "PRT TYP = STD\r\n"
    "PRT QTY = 002\r\n"
    "IMG FMT = EXIF2 -J\r\n"
    "<IMG SRC = \"../DCIM/100FIMPA/FIMP0003.JPG\">\r\n"
    "\r\n"
    "[JOB]\r\n"
    "PRT PID = 002\r\n"
    "PRT TYP = STD\r\n"
    "PRT QTY = 001\r\n"
    "IMG FMT = EXIF2 -J\r\n"
    "<IMG SRC = \"../DCIM/101FIMPA/FIMP0007.JPG\">\r\n";

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error(printable(path) + ": " + reason);
}

std::string readAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeAll(const std::string& path, std::string_view bytes) {
    errno = 0;
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) fail(path, errno != 0 ? strerror(errno) : "it cannot be written");
}

SampleShot shotOf(const SampleFile& file) {
    return {file.picture.orientation, file.date, kTestPictureWidth, kTestPictureHeight};
}

Ref<const CGImage> pictureOf(const SampleFile& file) {
    auto picture = drawTestPicture(file.picture);
    if (!picture) throw std::bad_alloc();
    return picture;
}

/// A card's files bear the date of the shot.
void setDate(const std::string& path, const DateTimeRec& date) {
    struct tm parts {};
    parts.tm_year = date.year - 1900;
    parts.tm_mon = date.month - 1;
    parts.tm_mday = date.day;
    parts.tm_hour = date.hour;
    parts.tm_min = date.minute;
    parts.tm_sec = date.second;
    parts.tm_isdst = -1;
    const timespec time{mktime(&parts), 0};
    const timespec times[2] = {time, time};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
}

}  // namespace

void SampleCardWriter::write(const SampleFile& file) const {
    const std::string path = (m_root / file.path).string();
    fs::create_directories(fs::path(path).parent_path());
    writeContent(file, path);
    if (file.kind == SampleKind::DeadLink) return;
    setDate(path, file.date);
    if (file.kind == SampleKind::Unreadable) chmod(path.c_str(), 0);
}

void SampleCardWriter::writeContent(const SampleFile& file, const std::string& path) const {
    switch (file.kind) {
        case SampleKind::Jpeg:
        case SampleKind::CutJpeg:
        case SampleKind::Unreadable:
            return writeJpeg(file, path);
        case SampleKind::Tiff:
            return writeAll(path, tiffFile(*pictureOf(file), shotOf(file)));
        case SampleKind::NoPicture:
            return writeAll(path, kText);
        case SampleKind::Empty:
            return writeAll(path, "");
        case SampleKind::Companion:
            return writeAll(path, kCompanion);
        case SampleKind::PrintOrder:
            return writeAll(path, kPrintOrder);
        case SampleKind::Junk:
            return writeAll(path, kJunk);
        case SampleKind::Folder:
            fs::create_directories(path);
            return;
        case SampleKind::DeadLink:
            std::error_code noLinks;
            fs::create_symlink("_ABC0000.JPG", path, noLinks);
            return;
    }
}

void SampleCardWriter::writeJpeg(const SampleFile& file, const std::string& path) const {
    ImageWriteOptions options;
    options.quality = kQuality;
    ImageFailure failure;
    if (!writeImage(*pictureOf(file), CFURL::createFromPath(path).get(), kUTTypeJPEG, options, &failure))
        fail(path, photoError(failure).text);
    std::string bytes = withExif(readAll(path), shotOf(file));
    if (file.kind == SampleKind::CutJpeg) bytes.resize(bytes.size() * 3 / 5);
    writeAll(path, bytes);
}

void SampleCardWriter::remove(const SampleFile& file) const {
    std::error_code ignored;
    fs::path path = file.path;
    fs::remove(m_root / path, ignored);
    while (path.has_parent_path()) {
        path = path.parent_path();
        if (!fs::remove(m_root / path, ignored)) return;
    }
}

}  // namespace fi
