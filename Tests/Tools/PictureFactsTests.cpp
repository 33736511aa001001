// SPDX-License-Identifier: Apache-2.0
// What the tool makes of a picture's failure.
#include "PictureFacts.h"

#include <gtest/gtest.h>

namespace fi::test {
namespace {

OSErr codeOf(ImageError error) {
    ImageFailure failure;
    failure.code = error;
    return photoError(failure).code;
}

TEST(PictureFacts, AFailureHasTheCodeOfItsKind) {
    EXPECT_EQ(codeOf(ImageError::None), 0);
    for (const ImageError error : {ImageError::NotAnImage, ImageError::NoSuchImage, ImageError::Damaged,
                                   ImageError::Unsupported, ImageError::LimitExceeded})
        EXPECT_EQ(codeOf(error), 1100) << static_cast<int>(error);
    for (const ImageError error : {ImageError::CannotOpen, ImageError::NoMemory})
        EXPECT_EQ(codeOf(error), -108) << static_cast<int>(error);
    EXPECT_EQ(codeOf(ImageError::WriteFailed), -1);
}

TEST(PictureFacts, AFailureOfAKindThatIsNotKnownIsAReadThatFailed) {
    EXPECT_EQ(codeOf(static_cast<ImageError>(200)), -108);
}

TEST(PictureFacts, AFailureIsToldAsAClause) {
    ImageFailure failure;
    failure.code = ImageError::Damaged;
    EXPECT_EQ(photoError(failure).text, resultCodeText(1100));
    failure.text = CFString::create("The file ends too early.");
    EXPECT_EQ(photoError(failure).text, "the file ends too early");
    failure.text = CFString::create("JPEG data is missing.");
    EXPECT_EQ(photoError(failure).text, "JPEG data is missing");
}

}  // namespace
}  // namespace fi::test
