// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/ExifPhotos.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace fi::test {

void setModified(const std::string& path, time_t seconds, long nanoseconds) {
    const timespec times[] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

}  // namespace fi::test
