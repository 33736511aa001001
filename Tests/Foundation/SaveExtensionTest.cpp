// SPDX-License-Identifier: Apache-2.0
// Under which extension a converted file is saved.
#include "Foundation/SaveExtension.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "Foundation/FileTypes.h"
#include "Foundation/HeaderBytes.h"
#include "Foundation/TestText.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

namespace {

using Accepted = CFStringRef[3];

/// The whole buffer, which was full of other bytes before.
PascalBuffer bufferFor(CFURLRef url, const Accepted& accepted) {
    PascalBuffer buffer;
    buffer.fill(0xAA);
    chooseSaveExtension(url, accepted, buffer);
    return buffer;
}

std::string extensionFor(CFURLRef url, const Accepted& accepted) {
    return std::string(pascalView(bufferFor(url, accepted).data()));
}

std::vector<uint8_t> bilevelTiff() {
    return tiffWith({.width = 16, .height = 8, .components = 1, .bitsPerComponent = 1});
}

std::vector<uint8_t> colorTiff() {
    return tiffWith({.width = 16, .height = 8, .components = 3, .bitsPerComponent = 8});
}

/// Codes that no rule knows, and texts of known codes that are other objects.
struct ForeignCodes {
    Ref<const CFString> raw = text("com.example.raw");
    Ref<const CFString> otherJPEG = text("Public.JPEG");
    Ref<const CFString> otherTIFF = text("PUBLIC.TIFF");
};

/// The rules written down once more, step by step.
PascalBuffer byTheLetter(const std::string* fileName, const Accepted& accepted, int depth) {
    PascalBuffer out{};
    PascalBuffer name{};
    CFStringRef fileType = nullptr;
    if (fileName != nullptr) {
        name[0] = static_cast<unsigned char>(fileName->size());
        std::copy(fileName->begin(), fileName->end(), name.begin() + 1);
        fileType = fileTypeOfName(text(*fileName).get());
    }
    const auto equalText = [](CFStringRef code, const char* wanted) {
        std::string have(code != nullptr ? code->view() : "");
        std::transform(have.begin(), have.end(), have.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
        return have == wanted;
    };
    int chosen = -1;
    for (int i = 0; i < 3 && chosen < 0; ++i) {
        if (accepted[i] == fileType && (depth > 2 || fileType != kUTTypeJPEG)) chosen = i;
    }
    for (int i = 0; i < 3 && chosen < 0 && depth <= 2; ++i) {
        if (equalText(accepted[i], "public.jpeg")) chosen = i;
    }
    const CFStringRef code = accepted[chosen < 0 ? 0 : chosen];
    const char* fixed = nullptr;
    if (equalText(code, "public.jpeg")) fixed = ".JPG";
    if (equalText(code, "public.tiff")) fixed = ".TIF";
    if (equalText(code, "public.image")) fixed = ".PCT";
    if (equalText(code, "com.adobe.pdf")) fixed = ".PDF";
    if (fixed != nullptr) {
        out[0] = 4;
        std::copy_n(fixed, 4, out.begin() + 1);
        return out;
    }
    int position = name[0];
    while (position > 0 && name[static_cast<size_t>(position)] != '.')
        --position;
    out[0] = static_cast<unsigned char>((name[0] - position + 1) % 256);
    for (int i = position, to = 1; i <= name[0] && to < 256; ++i, ++to)
        out[static_cast<size_t>(to)] = name[static_cast<size_t>(i)];
    return out;
}

}  // namespace

TEST(SaveExtensionTest, AColorTiffIsSavedAsTiffWhereThatIsAccepted) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("photo.tiff", colorTiff()));
    EXPECT_EQ(extensionFor(url.get(), {kUTTypeJPEG, kUTTypeTIFF, kUTTypePDF}), ".TIF");
}

TEST(SaveExtensionTest, ATypeThatIsNotAcceptedTakesTheFirstOne) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("scan.pict", "no picture"));
    EXPECT_EQ(extensionFor(url.get(), {kUTTypeJPEG, kUTTypeTIFF, kUTTypePDF}), ".JPG");
    EXPECT_EQ(extensionFor(url.get(), {kUTTypePDF, kUTTypeTIFF, kUTTypeJPEG}), ".PDF");
}

TEST(SaveExtensionTest, LineArtUnderAJpegNameIsSavedAsJpeg) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("scan.jpg", bilevelTiff()));
    EXPECT_EQ(extensionFor(url.get(), {kUTTypeJPEG, kUTTypeTIFF, kUTTypePDF}), ".JPG");
    EXPECT_EQ(extensionFor(url.get(), {kUTTypePDF, kUTTypeTIFF, kUTTypeJPEG}), ".JPG");
}

TEST(SaveExtensionTest, LineArtInATiffIsSavedAsTiffWhereThatIsAccepted) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("scan.tif", bilevelTiff()));
    EXPECT_EQ(extensionFor(url.get(), {kUTTypeJPEG, kUTTypeTIFF, kUTTypePDF}), ".TIF");
}

TEST(SaveExtensionTest, LineArtOfATypeThatIsNotAcceptedIsSavedAsJpegWhereverThatStands) {
    const TemporaryFolder folder;
    const auto url = urlAt(folder.write("scan.bmp", bilevelTiff()));
    EXPECT_EQ(extensionFor(url.get(), {kUTTypeTIFF, kUTTypePDF, kUTTypeJPEG}), ".JPG");
    EXPECT_EQ(extensionFor(url.get(), {kUTTypeTIFF, kUTTypeJPEG, kUTTypePDF}), ".JPG");
    EXPECT_EQ(extensionFor(url.get(), {kUTTypeTIFF, kUTTypeJPEG, kUTTypeImage}), ".PCT");
}

TEST(SaveExtensionTest, TwoBitsAreLineArtAndThreeAreNot) {
    const TemporaryFolder folder;
    const auto twoBits = urlAt(folder.write("two.png", tiffWith({.components = 1, .bitsPerComponent = 2})));
    const auto fourBits =
        urlAt(folder.write("four.png", tiffWith({.components = 1, .bitsPerComponent = 4})));
    const Accepted accepted = {kUTTypeTIFF, kUTTypePDF, kUTTypeJPEG};
    EXPECT_EQ(extensionFor(twoBits.get(), accepted), ".JPG");
    EXPECT_EQ(extensionFor(fourBits.get(), accepted), ".TIF");
}

TEST(SaveExtensionTest, LineArtWithoutAJpegInTheListTakesTheFirstType) {
    const TemporaryFolder folder;
    const auto jpegName = urlAt(folder.write("scan.jpg", bilevelTiff()));
    const auto otherName = urlAt(folder.write("scan.png", bilevelTiff()));
    const Accepted accepted = {kUTTypePDF, kUTTypeTIFF, kUTTypeTIFF};
    EXPECT_EQ(extensionFor(jpegName.get(), accepted), ".PDF");
    EXPECT_EQ(extensionFor(otherName.get(), accepted), ".PDF");
}

TEST(SaveExtensionTest, FirstOfSeveralSameTypesWins) {
    const TemporaryFolder folder;
    const ForeignCodes codes;
    // The two entries differ in what they are saved as, so the place shows.
    const auto url = urlAt(folder.write("scan.raw", "no picture"));
    EXPECT_EQ(extensionFor(url.get(), {codes.raw.get(), kUTTypeImage, kUTTypeImage}), ".PCT");
    const auto lineArt = urlAt(folder.write("scan.png", bilevelTiff()));
    EXPECT_EQ(extensionFor(lineArt.get(), {kUTTypePDF, codes.otherJPEG.get(), kUTTypeJPEG}), ".JPG");
}

TEST(SaveExtensionTest, OnlyTheVerySameCodeIsTheFilesOwnType) {
    const TemporaryFolder folder;
    const ForeignCodes codes;
    const auto url = urlAt(folder.write("photo.tif", colorTiff()));
    EXPECT_EQ(extensionFor(url.get(), {kUTTypePDF, codes.otherTIFF.get(), kUTTypeJPEG}), ".PDF");
}

TEST(SaveExtensionTest, TheChosenCodeIsRecognisedByItsTextInAnyCase) {
    const TemporaryFolder folder;
    const ForeignCodes codes;
    const auto url = urlAt(folder.write("photo.png", "no picture"));
    EXPECT_EQ(extensionFor(url.get(), {codes.otherTIFF.get(), kUTTypePDF, kUTTypeJPEG}), ".TIF");
    EXPECT_EQ(extensionFor(url.get(), {codes.otherJPEG.get(), kUTTypePDF, kUTTypeTIFF}), ".JPG");
}

TEST(SaveExtensionTest, AnUnknownDepthIsNoLineArt) {
    const TemporaryFolder folder;
    const Accepted accepted = {kUTTypeTIFF, kUTTypePDF, kUTTypeJPEG};
    EXPECT_EQ(extensionFor(urlAt(folder.write("note.png", "no picture")).get(), accepted), ".TIF");
    EXPECT_EQ(extensionFor(urlAt(folder.at("missing.png")).get(), accepted), ".TIF");
}

TEST(SaveExtensionTest, GenericImagesAreSavedAsPictAndPdfAsPdf) {
    const TemporaryFolder folder;
    const Accepted accepted = {kUTTypeJPEG, kUTTypeImage, kUTTypePDF};
    EXPECT_EQ(extensionFor(urlAt(folder.at("photo.png")).get(), accepted), ".PCT");
    EXPECT_EQ(extensionFor(urlAt(folder.at("leaflet.pdf")).get(), accepted), ".PDF");
}

TEST(SaveExtensionTest, PictKeepsTheFilesOwnExtension) {
    const TemporaryFolder folder;
    const Accepted accepted = {kUTTypeJPEG, kUTTypePICT, kUTTypePDF};
    EXPECT_EQ(extensionFor(urlAt(folder.at("a.pic")).get(), accepted), ".pic");
    EXPECT_EQ(extensionFor(urlAt(folder.at("a.PICT")).get(), accepted), ".PICT");
}

TEST(SaveExtensionTest, UnknownCodesKeepTheExtensionFromTheLastDot) {
    const ForeignCodes codes;
    const Accepted accepted = {codes.raw.get(), kUTTypeTIFF, kUTTypePDF};
    EXPECT_EQ(extensionFor(urlAt("/nowhere/a.b.RaW").get(), accepted), ".RaW");
    EXPECT_EQ(extensionFor(urlAt("/nowhere/.raw").get(), accepted), ".raw");
    EXPECT_EQ(extensionFor(urlAt("/nowhere/a.").get(), accepted), ".");
    EXPECT_EQ(extensionFor(urlAt("/nowhere/caf\xe9.r\xe9w").get(), accepted), ".r\xe9w") << "not UTF-8";
    EXPECT_EQ(extensionFor(urlAt("/x.y/\u00e9t\u00e9.\u00e9").get(), accepted), ".\u00e9");
}

TEST(SaveExtensionTest, ANameWithoutADotComesWithItsLengthByte) {
    const ForeignCodes codes;
    const Accepted accepted = {codes.raw.get(), kUTTypeTIFF, kUTTypePDF};
    EXPECT_EQ(extensionFor(urlAt("/nowhere/photo").get(), accepted), "\x05photo");
    const std::string longest(254, 'n');
    EXPECT_EQ(extensionFor(urlAt("/nowhere/" + longest).get(), accepted), "\xfe" + longest);
}

TEST(SaveExtensionTest, AnEmptyNameGivesOneZeroCharacter) {
    const ForeignCodes codes;
    const Accepted accepted = {codes.raw.get(), kUTTypeTIFF, kUTTypePDF};
    EXPECT_EQ(extensionFor(urlWithoutPath().get(), accepted), std::string(1, '\0'));
    EXPECT_EQ(extensionFor(nullptr, accepted), std::string(1, '\0'));
}

TEST(SaveExtensionTest, ANameOf255BytesWithoutADotGivesLengthZero) {
    const ForeignCodes codes;
    const PascalBuffer buffer = bufferFor(urlAt("/nowhere/" + std::string(255, 'n')).get(),
                                          {codes.raw.get(), kUTTypeTIFF, kUTTypePDF});
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(buffer[1], 255);
    EXPECT_EQ(buffer[2], 'n');
    EXPECT_EQ(buffer[255], 'n');
}

TEST(SaveExtensionTest, ANameOf255BytesThatBeginsWithADotIsKeptWhole) {
    const ForeignCodes codes;
    const std::string name = "." + std::string(254, 'n');
    EXPECT_EQ(extensionFor(urlAt("/nowhere/" + name).get(), {codes.raw.get(), kUTTypeTIFF, kUTTypePDF}),
              name);
}

TEST(SaveExtensionTest, TheRestOfTheBufferIsCleared) {
    for (const char* path : {"/nowhere/a.jpg", "/nowhere/a.pict", "/nowhere/a"}) {
        const PascalBuffer buffer = bufferFor(urlAt(path).get(), {kUTTypePICT, kUTTypeJPEG, kUTTypePDF});
        EXPECT_TRUE(std::all_of(buffer.begin() + 1 + buffer[0], buffer.end(), [](int c) { return c == 0; }))
            << path;
    }
}

TEST(SaveExtensionTest, ChoicesAgreeWithTheRulesTakenByTheLetter) {
    const TemporaryFolder folder;
    const ForeignCodes codes;
    const CFStringRef known[] = {
        kUTTypeJPEG,  kUTTypeTIFF,     kUTTypePICT,           kUTTypePDF,
        kUTTypeImage, codes.raw.get(), codes.otherJPEG.get(), codes.otherTIFF.get()};
    struct Content {
        std::vector<uint8_t> bytes;
        int depth;
    };
    const Content contents[] = {
        {bilevelTiff(), 1}, {colorTiff(), 24}, {{'n', 'o'}, 32}, {jpegWith({.components = 1}), 8}};
    const std::vector<std::string> names = {"a.jpg", "b.JPEG", "c.tif", "d.pic", "e.pdf",
                                            "f.png", "g",      "h.i.",  ".jpg"};
    std::mt19937 random(2018);
    for (const Content& content : contents) {
        for (const std::string& name : names) {
            const auto url = urlAt(folder.write(name, content.bytes));
            for (int round = 0; round < 60; ++round) {
                const Accepted accepted = {known[random() % std::size(known)],
                                           known[random() % std::size(known)],
                                           known[random() % std::size(known)]};
                ASSERT_EQ(bufferFor(url.get(), accepted), byTheLetter(&name, accepted, content.depth))
                    << name << " of depth " << content.depth << ": " << accepted[0]->view() << ", "
                    << accepted[1]->view() << ", " << accepted[2]->view();
            }
        }
    }
}

}  // namespace fi::test
