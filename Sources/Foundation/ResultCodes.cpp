// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/ResultCodes.h"

#include <iterator>

namespace fi {

namespace {

struct CodeText {
    OSErr code;
    const char* text;
};

constexpr CodeText kTexts[] = {
    {kNoErr, "done"},
    {kGenericErr, "it could not be done"},
    {kNotFoundErr, "there is no such file"},
    {kFileBusyErr, "the file could not be removed or copied"},
    {kParamErr, "an argument is out of range"},
    {kMemFullErr, "the data could not be read into memory"},
    {kFolderErr, "a folder could not be created"},
    {kUnsupportedDepthErr, "the image has a depth that is not handled"},
    {kNoImageBufferErr, "an image buffer could not be made"},
    {kNoOutputErr, "no record was supplied for the result"},
    {kUnreadableImageErr, "its data is not an image that can be read"},
    {kLookupErr, "the file could not be looked up"},
};

}  // namespace

const char* resultCodeText(OSErr code) {
    for (const CodeText& entry : kTexts) {
        if (entry.code == code) return entry.text;
    }
    return "an unknown error";
}

}  // namespace fi
